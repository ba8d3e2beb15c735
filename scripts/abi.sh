# The interface of the shared libraries, compared with that of the last release, which abi/ keeps.

# abi [--keep]: what is different; with --keep it is written down as what programs may rely on.
abi() {
    [[ ${1-} == "" || $1 == --keep ]] || refuse "abi takes --keep or nothing, not '$1'"
    need "comparing interfaces" "${install_packages[@]}" abigail-tools
    build release $(without_tests) -- ribkit ribkit_platform ribkit_catalogue_shared
    local libraries=(build/release/libribkit.so build/release/platform/libribkit-platform.so
        build/release/catalogue/libribkit-catalogue.so)
    if [[ ${1-} ]]; then
        RIBKIT_KEEP=1 finish scripts/interface_test.sh . "${libraries[@]}"
        git status --short abi
    else
        finish scripts/interface_test.sh . "${libraries[@]}"
    fi
}
