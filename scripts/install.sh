# Installing below a prefix, and removing exactly that again.

# What was installed is listed beside it: the files, and behind them the folders that were made for them.
list_below() { echo "$1/share/ribkit/installed"; }

install_below() {
    local prefix
    prefix=$(absolute "${1-/usr/local}")
    need "the libraries and the command" "${install_packages[@]}"
    build release $(without_tests) -- ribkit ribkit_static ribkit_platform ribkit_platform_static \
        ribkit_catalogue_shared ribkit_catalogue_static ribkit_command manuals
    scratch=$(mktemp -d)
    stage build/release "$prefix" "$scratch"
    as_owner_of "$prefix" install_files "$scratch" "$prefix"
    printf '%s\n' "command    $prefix/bin/ribkit" "headers    $prefix/include/ribkit" "libraries  $prefix/lib" \
        "manual     $prefix/share/man: man ribkit-lab, man rib_codec.h"
    by_default "$prefix" || echo "programs   find them with: export PKG_CONFIG_PATH=$prefix/lib/pkgconfig LD_LIBRARY_PATH=$prefix/lib"
}

uninstall_below() {
    local prefix
    prefix=$(absolute "${1-/usr/local}")
    [[ -f $(list_below "$prefix") ]] || refuse "nothing was installed below $prefix: there is no $(list_below "$prefix")"
    as_owner_of "$prefix" remove_files "$prefix"
    echo "run: removed from $prefix" >&2
}

absolute() { (cd "$from" && realpath -m -- "$1"); }

# Where programs are looked for without being told.
by_default() { [[ $1 == /usr || $1 == /usr/local ]]; }

# as_owner_of PREFIX FUNCTION ARGUMENT...: as an administrator where PREFIX asks for one.
as_owner_of() {
    local place=$1
    shift
    while [[ ! -e $place ]]; do
        place=$(dirname "$place")
    done
    if [[ -d $place && -w $place ]]; then
        "$@"
    elif [[ -d $place ]] && ((EUID != 0)) && command -v sudo >/dev/null; then
        sudo bash -euc '. scripts/install.sh; "$@"' run "$@"
    else
        refuse "nothing can be written below $place"
    fi
}

# stage BUILD PREFIX FOLDER: installs as if FOLDER were the root, with the list of the files beside them.
stage() {
    local build=$1 prefix=$2 staged=$3 list
    list=$(list_below "$prefix")
    DESTDIR=$staged cmake --install "$build" --prefix "$prefix" >/dev/null
    mkdir -p "$staged${list%/*}"
    : >"$staged$list"
    find "$staged" ! -type d -printf '/%P\n' >"$staged$list"
}

# install_files STAGED PREFIX: what an earlier installation has left there goes first.
install_files() {
    local staged=$1 prefix=$2 list folder made=()
    list=$(list_below "$prefix")
    if [[ -f $list ]]; then
        mapfile -t made < <(grep '/$' "$list")
        remove_files "$prefix"
    fi
    find "$staged" -mindepth 1 -depth -type d -printf '/%P\n' | while read -r folder; do
        [[ -d $folder && " ${made[*]} " != *" $folder/ "* ]] || echo "$folder/"
    done >>"$staged$list"
    mkdir -p "$prefix"
    cp -Rd "$staged$prefix/." "$prefix/"
    ! by_default "$prefix" || /sbin/ldconfig
}

# remove_files PREFIX: a folder that has got something of somebody else's stays.
remove_files() {
    local prefix=$1 lines line
    mapfile -t lines <"$(list_below "$prefix")"
    for line in "${lines[@]}"; do
        case $line in
            */) [[ ! -d $line ]] || rmdir --ignore-fail-on-non-empty "$line" ;;
            *) rm -f "$line" ;;
        esac
    done
    ! by_default "$prefix" || /sbin/ldconfig
}
