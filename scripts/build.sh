# Configuring and compiling.

# build PRESET [CMAKE-OPTION...] -- [TARGET...]: quiet unless it fails.
build() {
    local preset=$1 log=build/$1/build.log options=()
    shift
    while [[ $1 != -- ]]; do
        options+=("$1")
        shift
    done
    shift
    mkdir -p "build/$preset"
    echo "run: building $preset, log $log" >&2
    attend "building $preset" "$log" configure_and_compile "$preset" "$@" && return
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$log" >&2
    echo "run: $preset does not build; all of the log: $log" >&2
    exit 1
}

# Runs with build's `options`.
configure_and_compile() {
    local preset=$1
    shift
    toolchain_is_there "$preset" || options+=(--fresh)
    configured "$preset" || cmake --preset "$preset" "${options[@]}" || return
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

# A folder that was configured with a toolchain file which has gone since cannot be configured again.
toolchain_is_there() {
    local toolchain
    toolchain=$(sed -n 's/^include("\(.*\)")$/\1/p' "build/$1"/CMakeFiles/*/CMakeSystem.cmake 2>/dev/null) || true
    [[ ! $toolchain || -f $toolchain ]]
}

# Nothing has changed since that the build itself does not notice: the options, the presets, the packages that are there.
configured() {
    local made=build/$1/build.ninja
    ((!${#options[@]})) && [[ -f $made && ! CMakePresets.json -nt $made && ! /var/lib/dpkg/status -nt $made ]]
}

# Options for a command that needs no test, where nobody has asked for tests here before.
without_tests() {
    [[ -f build/release/CMakeCache.txt ]] || echo -DRIBKIT_TESTS=OFF
}
