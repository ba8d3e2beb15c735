# The test suite.

test_presets=(release asan tsan ppc32 fuzz)
# What seldom finds what those have not found: part of 'test all', and when asked for.
more_presets=(clang arm64 s390x i686 riscv64)
short_fuzzing=5

# Adds up what ctest says of every preset, and ends with one line for all; in front of it the names of what failed, whose
# output is shown whole. Fuzzing, for a moment only, comes last.
run_tests() {
    local presets=("$@") preset passed=0 failures=() thorough=
    if [[ ${1-} == fresh ]]; then
        test_fresh "${@:2}"
        return
    fi
    if [[ ${1-} == packages ]]; then
        test_packages "${@:2}"
        return
    fi
    if [[ ${1-} == all ]]; then
        (($# == 1)) || refuse "test all is everything, so '$2' is too much"
        thorough=yes presets=("${test_presets[@]}" "${more_presets[@]}")
        shift
    fi
    for preset; do
        [[ " ${test_presets[*]} ${more_presets[*]} debug " == *" $preset "* ]] ||
            refuse "there is no preset '$preset' to test: ${test_presets[*]}, ${more_presets[*]}, debug; or fresh, packages"
    done
    ((${#presets[@]})) || presets=("${test_presets[@]}")
    need "the test suite" "${test_packages[@]}" $(compilers_for "${presets[@]}")
    for preset in "${presets[@]}"; do
        if [[ $preset == fuzz ]]; then test_by_fuzzing; else test_preset "$preset"; fi
    done
    ((!${#failures[@]})) || printf 'failed: %s\n' "${failures[@]}"
    echo "$passed passed, ${#failures[@]} failed"
    ((!${#failures[@]}))
}

# compilers_for PRESET...: the packages of the cross compilers that the suite does not need every time.
compilers_for() {
    local preset
    for preset; do
        case $preset in
            arm64) echo g++-aarch64-linux-gnu ;;
            s390x | i686 | riscv64) echo "g++-$preset-linux-gnu" ;;
        esac
    done
}

test_preset() {
    local preset=$1 log=build/$1/tests.log all bad names
    build "$preset" -DRIBKIT_TESTS=ON --
    echo "run: testing $preset, log $log" >&2
    attend "testing $preset" "$log" tests_of "$preset" ||
        grep -vE '^ +Start |^ *[0-9]+/[0-9]+ Test .* Passed ' "$log" >&2
    read -r bad all < <(sed -nE 's/.*tests passed, ([0-9]+) tests? failed out of ([0-9]+).*/\1 \2/p' "$log") || true
    [[ ${all-} ]] || { echo "run: $preset ran no test" >&2; exit 1; }
    echo "run: $preset: $((all - bad)) passed, $bad failed" >&2
    mapfile -t names < <(failed_in "$log")
    failures+=("${names[@]/#/$preset }")
    passed=$((passed + all - bad))
}

# What takes hours is done with one compiler.
tests_of() {
    if [[ $thorough && $1 == release ]]; then
        RIBKIT_ALL=1 ctest --preset "$1" --timeout 7200
    else
        ctest --preset "$1"
    fi
}

# failed_in LOG: the names at the end of what ctest says, and how each failed.
failed_in() {
    sed -nE '/^The following tests FAILED:/,$s/^[[:space:]]+[0-9]+ - (.*[^[:space:]])[[:space:]]*$/\1/p' "$1"
}

# Each target is a test, which a find fails.
test_by_fuzzing() {
    local target finds
    fuzz "$short_fuzzing" >&2 || true
    for target in $(<build/asan/fuzz/targets); do
        finds=$(find build/asan/finds -name "$target-*" | wc -l)
        if ((finds == 0)); then passed=$((passed + 1)); else failures+=("fuzz $target ($finds finds)"); fi
    done
}
