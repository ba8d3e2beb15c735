#!/usr/bin/env bash
# What debian/ says agrees with what is there: every installed file is in one package, the changelog is CHANGELOG.md's,
# what is needed to build is asked for, and the units start what the command understands, locked up as they should be.
# usage: debian_test.sh SOURCES BUILD SCRATCH
set -euo pipefail
sources=$1 build=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cd "$sources"
failures=0
fail() {
    echo "$*" >&2
    failures=$((failures + 1))
}

# package_of FILE: in `of` and `count` the package that has it or its folder, as a pattern of its own says, and how many do.
mapfile -t patterns < <(grep -H '' debian/*.install | sed -n 's:^debian/\(.*\)\.install\:\(usr/[^ ]*\)$:\1 \2:p')
declare -A used=()
package_of() {
    local line pattern
    of='' count=0
    for line in "${patterns[@]}"; do
        pattern=${line#* }
        # shellcheck disable=SC2053
        if [[ $1 == $pattern || $1 == $pattern/* ]]; then
            of+="${line%% *} " count=$((count + 1)) used[$line]=yes
        fi
    done
}

check_files() {
    local file line of count
    DESTDIR=$scratch/staged cmake --install "$build" --prefix /usr >"$scratch/install.log"
    while read -r file; do
        package_of "$file"
        ((count == 1)) || fail "$file is in ${of:-no package}"
    done < <(cd "$scratch/staged" && find usr ! -type d | sed 's:^usr/lib/:usr/lib/any/:')
    for line in "${patterns[@]}"; do
        [[ ${used[$line]-} ]] || fail "debian/${line/ /.install: } is nothing that is installed"
    done
}

check_changelog() {
    local version
    version=$(sed -n 's/^## \([0-9.]*\),.*/\1/p' CHANGELOG.md | head -n 1)
    grep -q "^project(ribkit VERSION $version " CMakeLists.txt || fail "CHANGELOG.md's $version is not CMakeLists.txt's"
    awk -v version="$version" -v date="Thu, 01 Jan 1970 00:00:00 +0000" \
        -v maintainer="$(sed -n 's/^Maintainer: //p' debian/control)" -f scripts/changelog.awk CHANGELOG.md >"$scratch/changelog"
    [[ $(grep -c '^  \* ' "$scratch/changelog") == $(sed '1,/^## /d' CHANGELOG.md | grep -c '^- ') ]] || fail "items of CHANGELOG.md are lost"
    ! command -v dpkg-parsechangelog >/dev/null || dpkg-parsechangelog --all -l "$scratch/changelog" >/dev/null 2>"$scratch/said" &&
        [[ ! -s $scratch/said ]] || fail "the changelog is none: $(cat "$scratch/said")"
}

check_needs() {
    local package
    . scripts/packages.sh
    for package in "${install_packages[@]}"; do
        [[ $package == g++ ]] || grep -qE "^ $package( \(.*\))?,$" debian/control || fail "debian/control does not ask for $package"
    done
}

# check_unit UNIT COMMAND: its options are COMMAND's; what may be called, written and reached is as the RIB's.
locked_up() { sed -n '/^NoNewPrivileges/,/^\[Install\]/p' "$1"; }
check_unit() {
    local unit=debian/ribkit.$1 command=$2 option
    grep -q "^ExecStart=/usr/bin/ribkit $command " "$unit" || fail "$unit does not start ribkit $command"
    for option in $(sed -n 's/^ExecStart=//p' "$unit" | grep -oE -- '--[a-z-]+'); do
        "$build/cli/ribkit" "$command" --help | grep -qE "^ *$option[ =]" || fail "$unit: there is no ribkit $command $option"
    done
    [[ $(locked_up "$unit") == "$(locked_up debian/ribkit.ribkit-rib.service)" ]] || fail "$unit is locked up otherwise than the RIB's"
}

# What systemd says of all units, with the command that is built.
check_with_systemd() {
    local unit file
    command -v systemd-analyze >/dev/null || return 0
    mkdir "$scratch/units"
    for unit in debian/*.service; do
        file=${unit#debian/ribkit.}
        sed -e "s:/usr/bin/ribkit:$build/cli/ribkit:" -e '/^Documentation/d' "$unit" >"$scratch/units/${file/@/@1}"
    done
    systemd-analyze verify --man=no "$scratch"/units/* 2>"$scratch/said" && ! grep -F "ribkit" "$scratch/said" ||
        fail "the units: $(cat "$scratch/said")"
    for unit in "$scratch"/units/ribkit-{rib,module@1}.service; do
        systemd-analyze security --offline=yes --threshold=20 "$unit" >"$scratch/said" 2>&1 ||
            fail "$unit is too open: $(tail -n 3 "$scratch/said")"
    done
}

check_files
check_changelog
check_needs
check_unit ribkit-rib.service rib
check_unit ribkit-module@.service module
check_with_systemd
((failures == 0))
