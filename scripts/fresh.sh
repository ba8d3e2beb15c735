# What is tried on a machine that has nothing yet: this tree without git's files and builds, or the packages that are made of
# it.

# test_fresh [all]
test_fresh() {
    local what=release
    command=fresh at_most 1 "$@"
    [[ ! ${1-} || $1 == all ]] || refuse "test fresh takes 'all' or nothing, not '$1'"
    [[ ! ${1-} ]] || what=
    make_machine "test fresh"
    copy_tree "$scratch"
    finish in_machine "$scratch" bash -euc 'cd /root/ribkit
        ./run lab
        ./run install
        ribkit text rib_uuid 12
        ./run uninstall
        exec ./run test '"$what"
}

# test_packages [--made DIR] [EARLIER]: packages of what is committed, or those in DIR, on such a machine; over those of
# EARLIER, if there are any.
test_packages() {
    local made='' earlier='' folder script=/root/ribkit/scripts/packages_machine_test.sh
    if [[ ${1-} == --made ]]; then
        made=${2-.}
        shift "$(($# < 2 ? 1 : 2))"
    fi
    command=packages at_most 1 "$@"
    for folder in "$made" "${1-}"; do
        [[ ! $folder || $(find "$(absolute "$folder")" -maxdepth 1 -name 'ribkit_*.deb' 2>/dev/null) ]] || refuse "there are no packages in $folder"
    done
    made=${made:+$(absolute "$made")}
    [[ ! ${1-} ]] || earlier=$(absolute "$1")
    ((EUID == 0)) || refuse "test packages makes a machine with its own root folder, which needs root"
    if [[ ! $made ]]; then
        made=$PWD/build/package
        rm -rf "$made"
        make_packages "$made" --tarball
    fi
    make_machine "test packages"
    copy_tree "$scratch"
    mkdir "$scratch/root/packages"
    cp "$made"/*.deb "$made"/*-linux.tar.xz "$scratch/root/packages/"
    [[ ! $earlier ]] || cp -R "$earlier" "$scratch/root/earlier"
    finish in_machine "$scratch" "$script" prepare /root/packages
    finish in_booted_machine "$scratch" "$script" try /root/packages ${earlier:+/root/earlier}
}
