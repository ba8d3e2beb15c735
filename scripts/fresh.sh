# A machine that has nothing yet: a new minimal Debian, to which this tree is copied without git's files and builds.

# test_fresh [all]: only root can make such a machine. Its tar is kept; it itself goes when the tests end.
test_fresh() {
    local what=release machine
    command=fresh at_most 1 "$@"
    [[ ! ${1-} || $1 == all ]] || refuse "test fresh takes 'all' or nothing, not '$1'"
    ((EUID == 0)) || refuse "test fresh makes a machine with its own root folder, which needs root"
    [[ ! ${1-} ]] || what=
    need "a new Debian" debootstrap mount
    mkdir -p build/fresh
    [[ -f $(debian_tar) ]] || make_debian
    scratch=$(mktemp -d "$PWD/build/fresh/machine.XXXX")
    chmod 755 "$scratch"
    tar -xf "$(debian_tar)" -C "$scratch"
    prepare_machine "$scratch"
    finish in_machine "$scratch" bash -euc 'cd /root/ribkit
        ./run lab
        ./run install
        ribkit text rib_uuid 12
        ./run uninstall
        exec ./run test '"$what"
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

# What the machine needs to reach Debian's mirrors as this one does, and the tree.
prepare_machine() {
    cp /etc/resolv.conf /etc/hosts "$1/etc/"
    apt-config dump | grep -iE '^Acquire::(https?|ftp|Check)[^ ]* "' >"$1/etc/apt/apt.conf.d/as-outside" || true
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
