# Machines that have nothing yet: a new minimal Debian with a root folder of its own, entered alone or with systemd running.

# make_machine WHO: in `scratch`. Only root can make such a machine. Its tar is kept; it itself goes when the tests end.
make_machine() {
    ((EUID == 0)) || refuse "$1 makes a machine with its own root folder, which needs root"
    need "a new Debian" debootstrap mount procps
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

# in_booted_machine ROOT COMMAND...: the same where systemd is the first process, and the network is loopback alone.
in_booted_machine() {
    unshare --mount --propagation private bash -euc "$(declare -f boot end_machine first_process may_be_read)"'; boot "$@"' machine "$@"
}

# boot ROOT COMMAND...: a shell's whole work; all that systemd starts is in a control group, which goes with it.
boot() {
    root=$1
    shift
    mount -t cgroup2 cgroup2 "$root/mnt"
    group=$(mktemp -d "$root/mnt/ribkit-machine.XXXX")
    trap end_machine EXIT
    trap 'exit 1' INT TERM HUP
    (
        echo "$BASHPID" >"$group/cgroup.procs"
        exec unshare --mount --pid --fork --kill-child --uts --ipc --net --cgroup \
            bash -euc "$(declare -f first_process may_be_read)"'; first_process "$@"' machine "$root"
    ) </dev/null &
    outer=$!
    until first=$(pgrep -P "$outer" -x systemd); do
        kill -0 "$outer"
        sleep 0.1
    done
    machine=(nsenter --target "$first" --all --root --wd env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb)
    until state=$("${machine[@]}" timeout 120 systemctl is-system-running --wait 2>/dev/null) || [[ $state == degraded ]]; do
        kill -0 "$outer"
        sleep 0.1
    done
    if [[ $state != running ]]; then
        "${machine[@]}" systemctl --failed --no-pager >&2
        exit 1
    fi
    "${machine[@]}" "$@" & # a signal does not wait for it
    wait "$!"
}

end_machine() {
    kill -KILL "$outer" 2>/dev/null || true
    wait "$outer" 2>/dev/null || true
    until find "$group" -depth -type d -exec rmdir {} + 2>/dev/null; do
        sleep 0.1
    done
}

# What systemd finds when it starts; of the kernel it may change nothing but its own control groups.
first_process() {
    local root=$1 device
    mount --bind "$root" "$root"
    mount -t proc proc "$root/proc"
    may_be_read "$root/proc/sys"
    mount -t sysfs -o ro sysfs "$root/sys"
    mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup"
    mount -t tmpfs -o mode=755 dev "$root/dev"
    for device in null zero full random urandom tty; do
        touch "$root/dev/$device"
        mount --bind "/dev/$device" "$root/dev/$device"
    done
    mkdir "$root/dev/pts" "$root/dev/shm"
    mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts "$root/dev/pts"
    mount -t tmpfs -o mode=1777 shm "$root/dev/shm"
    ln -s pts/ptmx "$root/dev/ptmx"
    ln -s /proc/self/fd "$root/dev/fd"
    cd "$root"
    pivot_root . mnt
    exec env -i container=other PATH=/usr/sbin:/usr/bin:/sbin:/bin sh -c 'umount -l /mnt; exec /lib/systemd/systemd'
}

# may_be_read FOLDER: and not written.
may_be_read() {
    mount --bind "$1" "$1"
    mount -o remount,bind,ro "$1"
}
