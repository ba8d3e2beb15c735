# The benchmarks.

# Their names are those of their programs, NAME_bench, which each folder declares for itself.
bench_names() { sed -nE 's/^ *add_executable\(([a-z]+)_bench .*/\1/p' ./*/CMakeLists.txt | sort; }

bench() {
    local all name names=("$@") server_url
    mapfile -t all < <(bench_names)
    for name; do
        [[ " ${all[*]} " == *" $name "* ]] || refuse "there is no benchmark '$name': ${all[*]}"
    done
    (($#)) || names=("${all[@]}")
    need "the benchmarks" "${bench_packages[@]}"
    build release -DRIBKIT_BENCH=ON -- benchmarks
    start_server
    for name in "${names[@]}"; do
        finish build/release/*/"${name}_bench" "$server_url"
    done
    [[ " ${names[*]} " != *" codec "* ]] || finish instructions build/release/bench/codec_instructions
    [[ " ${names[*]} " != *" mem "* ]] || finish instructions build/release/tools/route_instructions
}

# instructions PROGRAM: of one conversion, or one route, as callgrind counts them: the figure that repeats.
instructions() {
    local program=$1 name
    printf '\n%-58s %12s\n' "instructions" "each"
    for name in $("$program"); do
        valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect=ribkit_bench_counted \
            "$program" "$name" 2>&1 |
            awk -v name="$name" '/^[0-9]+$/ { n = $1 } /Collected :/ { printf "%-58s %12.1f\n", name, $NF / n }'
    done
}
