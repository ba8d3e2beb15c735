# Machines that have nothing yet: a new minimal Debian, and in it what is tried: this tree without git's files and builds,
# or the packages that are made of it.

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

# make_machine WHO: in `scratch`. Only root can make such a machine. Its tar is kept; it itself goes when the tests end.
make_machine() {
    ((EUID == 0)) || refuse "$1 makes a machine with its own root folder, which needs root"
    need "a new Debian" debootstrap mount
    mkdir -p build/fresh
    [[ -f $(debian_tar) ]] || make_debian
    scratch=$(mktemp -d "$PWD/build/fresh/machine.XXXX")
    chmod 755 "$scratch"
    tar -xf "$(debian_tar)" -C "$scratch"
    reach_mirrors "$scratch"
}

debian_tar() { echo "$PWD/build/fresh/bookworm-$(dpkg --print-architecture).tar"; }

# Written whole or not at all.
make_debian() {
    local log=build/fresh/debootstrap.log
    scratch=$(mktemp -d "$PWD/build/fresh/debian.XXXX")
    chmod 755 "$scratch"
    echo "run: making a minimal Debian 12, log $log" >&2
    attend "making a minimal Debian" "$log" \
        unshare --mount --propagation private debootstrap --variant=minbase bookworm "$scratch" ||
        { tail -n 20 "$log" >&2; exit 1; }
    rm -f "$scratch"/var/cache/apt/archives/*.deb
    tar -cf "$(debian_tar).new" -C "$scratch" .
    mv "$(debian_tar).new" "$(debian_tar)"
    rm -rf "$scratch"
}

# What the machine needs to reach Debian's mirrors as this one does.
reach_mirrors() {
    cp /etc/resolv.conf /etc/hosts "$1/etc/"
    apt-config dump | grep -iE '^Acquire::(https?|ftp|Check)[^ ]* "' >"$1/etc/apt/apt.conf.d/as-outside" || true
}

copy_tree() {
    mkdir "$1/root/ribkit"
    tar --exclude=./.git --exclude=./build -cf - . | tar -xf - -C "$1/root/ribkit"
}

# in_machine ROOT COMMAND...: its mounts and its processes end with it, whichever way it ends.
in_machine() {
    local root=$1
    shift
    unshare --mount --propagation private --pid --fork --kill-child bash -euc '
        mount -t proc proc "$1/proc"
        mount --rbind /dev "$1/dev"
        cd /
        exec chroot "$@"' machine "$root" \
        env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin TERM="${TERM-dumb}" \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} "$@"
}

# test_packages [EARLIER]: packages of what is committed, on such a machine; over those of EARLIER, if there are any.
test_packages() {
    local made=$PWD/build/package earlier=
    command=packages at_most 1 "$@"
    [[ ! ${1-} ]] || earlier=$(absolute "$1")
    [[ ! $earlier || -f $(find "$earlier" -name 'ribkit_*.deb' -print -quit) ]] || refuse "there are no packages in $earlier"
    ((EUID == 0)) || refuse "test packages makes a machine with its own root folder, which needs root"
    rm -rf "$made"
    make_packages "$made" --tarball
    make_machine "test packages"
    copy_tree "$scratch"
    mkdir "$scratch/root/packages"
    cp "$made"/*.deb "$made"/*-linux.tar.xz "$scratch/root/packages/"
    [[ ! $earlier ]] || cp -R "$earlier" "$scratch/root/earlier"
    finish in_machine "$scratch" /root/ribkit/scripts/packages_machine_test.sh /root/packages ${earlier:+/root/earlier}
}
