# What finds seldom: everything that draws numbers, with new ones, for as long as one likes.

soak_tests='(^|/)(state_random|fib_random|modules_random|chaos|killed_processes|mutated_files|mutated_texts)\.'

# soak HOURS: fuzzers, random tests, chaos and mutants in turn. Executions add up over runs in build/soak/totals, and
# build/soak/report.txt says what was done and what was found.
soak() {
    [[ ${1-} =~ ^[0-9]*\.?[0-9]+$ && ! $1 =~ ^0*\.?0*$ ]] || refuse "soak takes a number of hours, not '${1-}'"
    local end round=0 failed=0
    end=$(awk -v now="$SECONDS" -v hours="$1" 'BEGIN { printf "%d", now + hours * 3600 }')
    need "the test suite" "${test_packages[@]}"
    build release -DRIBKIT_TESTS=ON --
    build asan -- fuzzers
    mkdir -p build/soak
    while ((SECONDS < end)); do
        round=$((round + 1))
        soak_fuzzers $((end - SECONDS)) || failed=1
        ((SECONDS < end)) || break
        soak_random_tests || failed=1
        ((SECONDS < end)) || break
        soak_mutants || failed=1
    done
    soak_report "$round" "$failed" | tee build/soak/report.txt
    ((failed == 0))
}

# soak_add WHAT COUNT: to what was done in this run and all before, those of ./run fuzz included.
soak_add() {
    mkdir -p build/soak
    touch build/soak/totals
    awk -v what="$1" -v count="$2" '
        $1 == what { $2 += count; found = 1 }
        { print }
        END { if (!found) print what, count }' build/soak/totals >build/soak/totals.new
    mv build/soak/totals.new build/soak/totals
}

# soak_fuzzers SECONDS: each target for a few minutes, as far as there is time. The corpus of the run before goes on.
soak_fuzzers() {
    local left=$1 target each
    local targets=($(<build/asan/fuzz/targets)) status=0
    each=$((left / ${#targets[@]} < 300 ? left / ${#targets[@]} + 1 : 300))
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
    local seed=$((RANDOM * 32768 + RANDOM)) log=build/soak/random.log
    echo "run: random tests with seed $seed, log $log" >&2
    RIBKIT_SEED=$seed attend "random tests" "$log" ctest --preset release --timeout 7200 -R "$soak_tests" || {
        cp "$log" "build/soak/failed-$seed.log"
        echo "again: RIBKIT_SEED=$seed ctest --preset release -R '$soak_tests'" >&2
        return 1
    }
    soak_add random_tests "$(sed -nE 's/.*tests passed, .* out of ([0-9]+).*/\1/p' "$log")"
}

soak_mutants() {
    local seed=$((RANDOM * 32768 + RANDOM)) folder status=0
    for folder in "${core_folders[@]}"; do
        mutate_folder "$folder" --seed "$seed" --count 20 || {
            cp "build/mutate/$folder.log" "build/soak/survived-$folder-$seed.log"
            status=1
        }
        soak_add "mutants_$folder" 20
    done
    return "$status"
}

# soak_report ROUNDS FAILED
soak_report() {
    echo "soaked: $1 rounds, $( (($2)) && echo "something was found" || echo "nothing was found")"
    echo "of this run and those before it:"
    sed 's/^/  /' build/soak/totals
    find build/asan/finds build/soak -type f \( -path '*/finds/*' -o -name 'failed-*' -o -name 'survived-*' \) 2>/dev/null |
        sed 's/^/found: /'
}
