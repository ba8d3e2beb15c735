# Fuzzing, attacks, and chaos.

# fuzz SECONDS: what is found ends as a file in build/asan/finds, and the run fails.
fuzz() {
    [[ ${1-} =~ ^[1-9][0-9]{0,7}$ ]] || refuse "fuzz takes a number of seconds, not '${1-}'"
    need "fuzzing" "${test_packages[@]}"
    build asan -- fuzzers
    local target finds=build/asan/finds summary="" failed=0
    rm -rf build/asan/corpus "$finds"
    mkdir -p "$finds"
    cp -r fuzz/corpus build/asan/corpus
    for target in $(<build/asan/fuzz/targets); do
        fuzz_target "$target" "$1" || failed=1
        summary+="$target $(inputs_of "$target") inputs, "
    done
    echo "$summary$(find "$finds" -type f | wc -l) finds"
    ((failed == 0))
}

# inputs_of TARGET: how many it was given.
inputs_of() { sed -n 's/^stat::number_of_executed_units: *//p' "build/asan/$1.log" | grep . || echo 0; }

fuzz_target() {
    local target=$1 log=build/asan/$1.log find status=0
    echo "run: fuzzing $target for $2 s, log $log" >&2
    attend "fuzzing $target" "$log" "build/asan/fuzz/${target}_fuzz" -max_total_time="$2" -max_len=4096 -timeout=10 \
        -artifact_prefix="build/asan/finds/$target-" -print_final_stats=1 "build/asan/corpus/$target" || status=1
    soak_add "fuzz_$target" "$(inputs_of "$target")"
    ((status)) || return 0
    tail -n 40 "$log" >&2
    for find in build/asan/finds/"$target"-*; do
        echo "again: build/asan/fuzz/${target}_fuzz $find" >&2
    done
    return 1
}

# attack: what ./run test does for a moment, at length: every allocation fails in turn, and the hostile programs go on.
attack() {
    need "the test suite" "${test_packages[@]}"
    build release -DRIBKIT_TESTS=ON --
    local log=build/release/attack.log
    echo "run: attacking, log $log" >&2
    RIBKIT_ALL=1 attend "attacking" "$log" ctest --preset release --timeout 7200 -R '(^|/)(failing|mutated|hostile)_' ||
        { grep -vE '^ +Start |^ *[0-9]+/[0-9]+ Test .* Passed ' "$log" >&2; return 1; }
    grep 'tests passed' "$log"
}

# chaos SEED...: what ./run test does for a moment, at length, with each seed.
chaos() {
    local seed seeds=("$@") log=build/release/chaos.log
    (($#)) || seeds=(1)
    for seed in "${seeds[@]}"; do
        [[ $seed =~ ^[0-9]{1,9}$ ]] || refuse "chaos takes seeds, which are numbers, not '$seed'"
    done
    need "the test suite" "${test_packages[@]}"
    build release -DRIBKIT_TESTS=ON -- lab_test killed_test
    for seed in "${seeds[@]}"; do
        echo "run: chaos with seed $seed, log $log" >&2
        RIBKIT_ALL=1 RIBKIT_SEED=$seed attend "chaos" "$log" ctest --preset release --timeout 3600 -R '(^|/)(chaos|killed_processes)\.' ||
            { grep -vE '^ +Start |^ *[0-9]+/[0-9]+ Test .* Passed ' "$log" >&2; return 1; }
        grep 'tests passed' "$log"
    done
}
