#!/usr/bin/env bash
# On a machine of its own, as root. Prepared, while there is a network: what packages and tests need is installed. Tried,
# once systemd runs: packages are installed over earlier ones while a RIB runs, tried, and removed without a trace; then the
# tarball is tried. usage: packages_machine_test.sh prepare|try PACKAGES [EARLIER]
set -euo pipefail
step=$1 packages=$2 earlier=${3-}
cd "$(dirname "$0")/.."
AUTOPKGTEST_TMP=$(mktemp -d)
chmod 755 "$AUTOPKGTEST_TMP"
export AUTOPKGTEST_TMP DEBIAN_FRONTEND=noninteractive
shopt -s nullglob
version=$(dpkg-deb -f "$packages"/libribkit0_*.deb Version)
bus=unix:/run/ribkit

fail() {
    echo "$*" >&2
    exit 1
}
apt() { apt-get -qq -y -o Dpkg::Use-Pty=0 --no-install-recommends "$@"; }
ours() { find "$1" -name '*.deb' ! -name '*-dbgsym_*'; }

# So that nothing else comes and goes when packages do.
prepare() {
    apt update
    # shellcheck disable=SC2046
    apt install xz-utils $(sed -n 's/^Depends: //p' debian/tests/control | tr -s ', ' '\n' | grep -v ribkit | sort -u) >/dev/null
    # shellcheck disable=SC2046
    apt --simulate install $(ours "$packages") | awk '/^Inst / && $2 !~ /^(lib)?ribkit/ { print $2 }' |
        xargs apt-get -qq -y -o Dpkg::Use-Pty=0 --no-install-recommends install >/dev/null
}

# make_earlier FOLDER: this build under a number in front of its own.
make_earlier() {
    local deb
    mkdir -p "$1"
    for deb in $(ours "$packages"); do
        rm -rf "$AUTOPKGTEST_TMP/deb"
        dpkg-deb -R "$deb" "$AUTOPKGTEST_TMP/deb"
        sed -i "s/$version/${version%%~*}~0.earlier/g" "$AUTOPKGTEST_TMP/deb/DEBIAN/control"
        find "$AUTOPKGTEST_TMP/deb" -name '*.service' -exec touch -d @0 {} +
        dpkg-deb -b "$AUTOPKGTEST_TMP/deb" "$1" >/dev/null
    done
}

# Every file with its owner and mode, and what is in it; not what dpkg, apt, man-db and systemd note of their own work.
everything() {
    local elsewhere=(-path /proc -o -path /sys -o -path /dev -o -path /run/systemd -o -path /run/log -o -path /tmp -o -path /root
        -o -path /var/log -o -path /var/cache -o -path /var/lib/apt -o -path '/var/lib/dpkg/*-old' -o -path /var/lib/dpkg/status
        -o -path '/var/lib/dpkg/lock*' -o -path /var/lib/dpkg/triggers -o -path /etc/ld.so.cache)
    find / /run -xdev \( "${elsewhere[@]}" \) -prune -o -printf '%M %u %g %p %l\n' | LC_ALL=C sort
    find / /run -xdev \( "${elsewhere[@]}" \) -prune -o -type f -print0 | xargs -0 sha256sum | LC_ALL=C sort
}

# client_has_all TIMES: a RIB has got all of the client's routes so often.
client_has_all() {
    timeout 120 bash -c 'until (($(grep -c "the RIB has all" "$0") >= $1)); do sleep 0.2; done' "$AUTOPKGTEST_TMP/client.txt" "$1" ||
        fail "the client does not bring its routes: $(cat "$AUTOPKGTEST_TMP/client.txt")"
}
routes() { ribkit routes --bus "$bus"; }
process() { systemctl show --property MainPID --value "$1"; }

# The earlier packages' units and a client, before the later ones come and after; of a fabric where nothing happens.
upgrade_while_a_rib_runs() {
    local rib module client fabric=$AUTOPKGTEST_TMP/fabric.toml
    # shellcheck disable=SC2046
    apt install $(ours "$1") >/dev/null
    dpkg -s ribkit | grep "^Version: .*"
    [[ ! $(systemctl list-units --plain --no-legend 'ribkit*') ]] || fail "something has started by itself"
    sed '/^\[\[event/,$d' /usr/share/doc/ribkit/examples/fabrics/small.toml >"$fabric"
    systemctl start ribkit-rib ribkit-module@1
    rib=$(process ribkit-rib) module=$(process ribkit-module@1)
    ribkit client --stay --vsan 1 --bus "$bus" "$fabric" >"$AUTOPKGTEST_TMP/client.txt" &
    client=$!
    client_has_all 1
    routes >"$AUTOPKGTEST_TMP/before.txt"
    # shellcheck disable=SC2046
    apt install $(ours "$packages") >/dev/null
    dpkg -s ribkit | grep -x "Version: $version" || fail "there is no newer version now"
    [[ "$(process ribkit-rib) $(process ribkit-module@1)" == "$rib $module" ]] || fail "the upgrade has not left alone what runs"
    [[ $(systemctl show --property NeedDaemonReload --value ribkit-rib) == no ]] || fail "systemd does not know the later unit"
    [[ $(readlink "/proc/$rib/exe") == *" (deleted)" ]] || fail "the RIB that runs is not the earlier one"
    routes >"$AUTOPKGTEST_TMP/after.txt"
    diff "$AUTOPKGTEST_TMP"/before.txt "$AUTOPKGTEST_TMP"/after.txt || fail "the RIB that runs has lost routes"
    systemctl restart ribkit-rib ribkit-module@1
    [[ $(readlink "/proc/$(process ribkit-rib)/exe") == /usr/bin/ribkit ]] || fail "the RIB that runs is not the later one"
    client_has_all 2
    routes >"$AUTOPKGTEST_TMP/again.txt"
    diff "$AUTOPKGTEST_TMP"/before.txt "$AUTOPKGTEST_TMP"/again.txt || fail "the client has not brought its routes again"
    kill -TERM "$client" || fail "the client has not survived"
    wait "$client" || fail "the client ends with $?: $(cat "$AUTOPKGTEST_TMP/client.txt")"
    [[ $(wc -l <"$AUTOPKGTEST_TMP/before.txt") -gt 20 ]] || fail "there were no routes"
    systemctl stop ribkit-rib ribkit-module@1
    [[ ! $(systemctl list-units --plain --no-legend --state failed) ]] || fail "not all ended well: $(systemctl --failed)"
    echo "upgraded: the earlier RIB went on answering, the later one has the routes, the client is the same"
}

# While it runs, and is to run at the next start.
remove_without_a_trace() {
    systemctl --quiet enable ribkit-rib
    systemctl start ribkit-rib ribkit-module@1 ribkit-module@2
    ours "$packages" | xargs -n 1 sh -c 'dpkg-deb -f "$0" Package' | xargs apt-get -qq -y -o Dpkg::Use-Pty=0 purge >/dev/null
    [[ ! $(systemctl list-units --all --plain --no-legend 'ribkit*') ]] || fail "systemd has: $(systemctl list-units --all 'ribkit*')"
    ! grep -H ribkit /proc/[0-9]*/comm || fail "that runs on"
    everything >"$AUTOPKGTEST_TMP/left"
    diff "$AUTOPKGTEST_TMP/bare" "$AUTOPKGTEST_TMP/left" || fail "something is left, or has gone with it"
    echo "removed: nothing is left"
}

# Where nothing of ours is installed, below a name that nobody foresaw.
try_tarball() {
    local place="$AUTOPKGTEST_TMP/any where" root
    mkdir -p "$place"
    tar -xf "$1" -C "$place"
    mv "$place"/ribkit-* "$place/here"
    root=$place/here
    [[ ! $(ldd "$root"/bin/* "$root"/lib/*.so | grep -E 'not found|libstdc|libnats|toml') ]] || fail "the tarball needs more than a C library"
    (cd / && env -i "$root/bin/ribkit" lab "$root/share/doc/ribkit/examples/fabrics/small.toml" | tail -n 2)
    ln -s "$root" "$AUTOPKGTEST_TMP/unpacked" # pkg-config and the shell split names with spaces
    root=$AUTOPKGTEST_TMP/unpacked
    mkdir "$AUTOPKGTEST_TMP/strangers"
    PKG_CONFIG_PATH=$root/lib/pkgconfig CMAKE_PREFIX_PATH=$root LD_LIBRARY_PATH=$root/lib \
        examples/strangers_test.sh "$root/share/doc/ribkit/examples" "$AUTOPKGTEST_TMP/strangers" >/dev/null
    echo "the tarball runs and is linked, glibc $(objdump -T "$root"/bin/ribkit "$root"/lib/*.so |
        grep -oE 'GLIBC_[0-9.]+' | sort -V | tail -n 1) is enough"
}

try() {
    local what
    [[ $earlier ]] || make_earlier "${earlier:=/root/earlier}"
    everything >"$AUTOPKGTEST_TMP/bare"
    upgrade_while_a_rib_runs "$earlier"
    for what in $(sed -n 's/^Tests: //p' debian/tests/control); do
        debian/tests/"$what"
        echo "debian/tests/$what: passed"
    done
    remove_without_a_trace
    set -- "$packages"/*-linux.tar.xz
    (($# == 1)) || fail "there is no tarball to try"
    try_tarball "$1"
}

"$step"
