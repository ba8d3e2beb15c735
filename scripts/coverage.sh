# What of the code no test runs.

# coverage [FOLDER...]: lines and branches of each folder, or of those named, with the tests that look at them. The core
# has to have every branch taken but those that scripts/uncovered.txt names with a reason; the rest has a bound.
coverage() {
    local folder folders=("$@") log=build/coverage/tests.log failed=0
    for folder in "${folders[@]}"; do
        [[ -f $folder/CMakeLists.txt ]] || refuse "coverage: there is no folder '$folder'"
    done
    need "coverage" "${test_packages[@]}" python3
    build coverage -DRIBKIT_TESTS=ON -- ${folders[@]:+$(tests_beside "${folders[@]}")}
    find build/coverage -name '*.gcda' -delete
    echo "run: running the tests, log $log" >&2
    attend "testing coverage" "$log" run_for_coverage "${folders[@]}" || { failed=1; tail -n 40 "$log" >&2; }
    finish scripts/coverage.py build/coverage scripts/uncovered.txt "${folders[@]}" || failed=1
    return "$failed"
}

# tests_beside FOLDER...: the test programs that their CMakeLists.txt build.
tests_beside() {
    local folder
    for folder; do
        sed -nE 's/^ *ribkit_tests\(([a-z_]+).*/\1/p' "$folder/CMakeLists.txt"
    done
}

# Of all folders what ctest runs; of some their test programs, each as a whole.
run_for_coverage() {
    local folder test failed=0
    (($#)) || { ctest --preset coverage; return; }
    for folder; do
        for test in $(tests_beside "$folder"); do
            "build/coverage/$folder/$test" || failed=1
        done
    done
    return "$failed"
}
