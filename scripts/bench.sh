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
    [[ " ${names[*]} " != *" mem "* ]] || finish instructions build/release/rib/route_instructions
}

# instructions PROGRAM: of one conversion, or one route, as callgrind counts them: the figure that repeats. The program lists
# its cases, one a line, some with an earlier case that they are compared with, and what the ratio may be at most.
instructions() {
    local program=$1 name peer bound
    local -A each=()
    printf '\n%-58s %12s %12s %8s\n' "instructions" "each" "peer" "ratio"
    while read -r name peer bound; do
        each[$name]=$(instructions_each "$program" "$name")
        instructions_row "$name" "${each[$name]}" ${peer:+"${each[$peer]}" "$bound"}
    done < <("$program")
}

# What the watched function of the case costs, for each of what it says it has done.
instructions_each() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect=ribkit_bench_counted "$1" "$2" 2>&1 |
        awk '/^[0-9]+$/ { n = $1 } /Collected :/ { printf "%.4f\n", $NF / n }'
}

# instructions_row NAME EACH [PEER BOUND]: as the rows of the benchmarks that measure time.
instructions_row() {
    awk -v name="$1" -v each="$2" -v peer="${3-}" -v bound="${4-}" 'BEGIN {
        printf "%-58s %12.1f", name, each
        if (peer != "") {
            ratio = each / peer
            printf " %12.1f %8.3f  %s %.4g", peer, ratio, (ratio > bound ? "above its bound of" : "at most"), bound
        }
        print ""
    }'
}

# count_instructions [--keep]: of the cases of bench/counted.cpp, compared with bench/instructions.txt, or written there.
count_instructions() {
    [[ ${1-} == "" || $1 == --keep ]] || refuse "instructions takes --keep or nothing, not '$1'"
    need "counting instructions" "${test_packages[@]}"
    build release -DRIBKIT_TESTS=ON -- counted_cases
    RIBKIT_KEEP=${1:+1} finish bench/instructions_test.sh build/release/bench/counted_cases bench/instructions.txt
    sed -n '/^[^#]/p' bench/instructions.txt
}
