# Care of the sources: these need git.

sources() { git ls-files -- '*.cpp' '*.h' '*.c'; }

format() {
    need "formatting" clang-format
    sources | xargs clang-format -i
}

tidy() {
    local file files=()
    for file; do
        files+=("$(cd "$from" && realpath -e -- "$file" 2>/dev/null)") || refuse "tidy: there is no file '$file'"
    done
    need "the linter" clang-tidy "${test_packages[@]}"
    [[ -f build/release/compile_commands.json ]] || build release -DRIBKIT_TESTS=ON --
    ((${#files[@]})) || mapfile -t files < <(git ls-files -- '*.cpp')
    finish lint "${files[@]}"
}

# What the compiler has precompiled is of no use to another one.
lint() {
    mkdir -p build/tidy
    sed 's/ -Winvalid-pch -include [^ ]*cmake_pch\.hxx//' build/release/compile_commands.json > build/tidy/compile_commands.json
    printf '%s\n' "$@" | xargs -P 2 -n 1 clang-tidy --quiet -p build/tidy 2>/dev/null
}

golden() {
    need "the test suite" "${test_packages[@]}"
    build release -DRIBKIT_TESTS=ON --
    RIBKIT_REFRESH_GOLDEN=1 attend "testing release" build/release/golden.log ctest --preset release || true
    git status --short
}
