# What finds seldom: everything that draws numbers, with new ones, for as long as one likes.

soak_programs=(rib_test fib_test lab_test killed_test mutated_files_test)
soak_tests='(^|/)(state_random|fib_random|modules_random|chaos|killed_processes|mutated_files|mutated_texts)\.'

# soak HOURS: fuzzers, random tests, chaos and mutants in turn, each at least once. Executions add up over runs in
# build/soak/totals, and build/soak/report.txt says what was done, in this run and in all, and what was found.
soak() {
    [[ ${1-} =~ ^[0-9]*\.?[0-9]+$ && ! $1 =~ ^0*\.?0*$ ]] || refuse "soak takes a number of hours, not '${1-}'"
    local end round=0 failed=0 third
    end=$(awk -v now="$SECONDS" -v hours="$1" 'BEGIN { printf "%d", now + hours * 3600 }')
    need "the test suite" "${test_packages[@]}" python3
    build release -DRIBKIT_TESTS=ON -- "${soak_programs[@]}"
    build asan -- fuzzers
    mkdir -p build/soak
    : >build/soak/run
    until ((round && SECONDS >= end)); do
        round=$((round + 1))
        third=$(((end - SECONDS) / 3))
        soak_fuzzers "$third" || failed=1
        soak_random_tests || failed=1
        soak_mutants "$third" || failed=1
    done
    soak_report "$round" "$failed" | tee build/soak/report.txt
    ((failed == 0))
}

# soak_add WHAT COUNT: to what was done in this run, and in all, those of ./run fuzz included.
soak_add() {
    local file
    mkdir -p build/soak
    for file in build/soak/{run,totals}; do
        touch "$file"
        awk -v what="$1" -v count="$2" '
            $1 == what { $2 += count; found = 1 }
            { print $1, sprintf("%.0f", $2) }
            END { if (!found) print what, count }' "$file" >"$file.new"
        mv "$file.new" "$file"
    done
}

# soak_done WHAT: how many in all runs.
soak_done() { awk -v what="$1" '$1 == what { count = $2 } END { print count + 0 }' build/soak/totals; }

# soak_fuzzers SECONDS: each target for up to five minutes. The corpus of the run before goes on.
soak_fuzzers() {
    local left=$1 target each
    local targets=($(<build/asan/fuzz/targets)) status=0
    each=$((left / ${#targets[@]} + 1))
    each=$((each < 1 ? 1 : each > 300 ? 300 : each))
    mkdir -p build/asan/finds
    [[ -d build/soak/corpus ]] || cp -r fuzz/corpus build/soak/corpus
    rm -rf build/asan/corpus
    ln -sfn ../soak/corpus build/asan/corpus
    for target in "${targets[@]}"; do
        fuzz_target "$target" "$each" || status=1
    done
    rm -f build/asan/corpus
    return "$status"
}

soak_random_tests() {
    local seed=$((RANDOM * 32768 + RANDOM)) log=build/soak/random.log status=0
    echo "run: random tests with seed $seed, log $log" >&2
    RIBKIT_SEED=$seed attend "random tests" "$log" ctest --preset release --timeout 7200 -R "$soak_tests" || status=1
    soak_add random_tests "$(sed -nE 's/.*tests passed, .* out of ([0-9]+).*/\1/p' "$log" | grep . || echo 0)"
    ((status)) || return 0
    cp "$log" "build/soak/failed-$seed.log"
    echo "again: RIBKIT_SEED=$seed ctest --preset release -R '$soak_tests'" >&2
    return 1
}

# soak_mutants SECONDS: the next ones of each folder, up to 20. After enough rounds all were tried, and it begins again.
soak_mutants() {
    local folder from status=0 count=$(($1 / ${#core_folders[@]} / 10)) # which take some 10 s each
    count=$((count < 1 ? 1 : count > 20 ? 20 : count))
    for folder in "${core_folders[@]}"; do
        from=$(soak_done "mutants_$folder")
        mutate_folder "$folder" --count "$count" --from "$from" || {
            cp "build/mutate/$folder.log" "build/soak/survived-$folder-$from.log"
            status=1
        }
        soak_add "mutants_$folder" "$count"
    done
    return "$status"
}

# soak_report ROUNDS FAILED
soak_report() {
    echo "soaked: $1 rounds, $( (($2)) && echo "something was found" || echo "nothing was found")"
    awk 'BEGIN { printf "%-20s %15s %15s\n", "", "this run", "all runs" }
        FNR == NR { run[$1] = $2; next }
        { printf "%-20s %15.0f %15.0f\n", $1, run[$1], $2 }' build/soak/run build/soak/totals
    find build/asan/finds build/soak -type f \( -path '*/finds/*' -o -name 'failed-*' -o -name 'survived-*' \) 2>/dev/null |
        sed 's/^/found: /'
}
