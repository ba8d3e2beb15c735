# Debian packages, and a tarball for other hosts: made from what is committed, elsewhere, without a network.

packaging_packages=(dpkg-dev debhelper lintian git xz-utils)

# make_packages [DIR] [--tarball] [--twice]
make_packages() {
    local argument folder='' tarball='' twice='' commit version epoch second
    for argument; do
        case $argument in
            --tarball) tarball=yes ;;
            --twice) twice=yes ;;
            -*) refuse "package takes a folder, --tarball and --twice, not '$argument'" ;;
            *) [[ ! $folder ]] || refuse "package takes one folder, so '$argument' is too much"; folder=$argument ;;
        esac
    done
    folder=$(absolute "${folder:-$PWD/build/package}")
    # What is committed while this builds is not packaged.
    commit=$(git rev-parse -q --verify HEAD 2>/dev/null) || refuse "packages are made from what git has committed, and git knows nothing here"
    need "packaging" "${packaging_packages[@]}"
    need "what is packaged" $(unmet_build_dependencies)
    [[ ! $(git status --porcelain --untracked-files=no) ]] || echo "run: what is not committed is not packaged" >&2
    version=$(version_of "$commit")
    epoch=$(git log -1 --format=%ct "$commit")
    mkdir -p "$folder" build
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/ribkit-package.XXXXXX")
    # A cache would show nothing, or its own way to name a file.
    [[ ! $twice ]] || unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
    make_one first
    if [[ $twice ]]; then
        second=second/in-a/deeper-folder
        TZ=Asia/Kathmandu LC_ALL=C.UTF-8 umask_of=0027 make_one "$second"
        compare_packages "$scratch/first/made" "$scratch/$second/made" || exit 1
    fi
    check_packages "$scratch/first/made"
    rm -f "$folder"/libribkit*_*.deb "$folder"/ribkit*_*.{deb,dsc,changes,buildinfo,tar.xz} "$folder"/ribkit-*-linux.tar.xz # earlier ones
    cp "$scratch"/first/made/* "$folder/"
    rm -rf "$scratch"
    echo "$folder:"
    (cd "$folder" && ls -L *"$version"* | xargs du -bL | awk '{ printf "%10d  %s\n", $1, $2 }')
}

# What debian/control asks for and is not here; versions are Debian 12's.
unmet_build_dependencies() {
    dpkg-checkbuilddeps debian/control 2>&1 | sed -n 's/.*Unmet build dependencies: //p' | sed 's/ *([^)]*)//g'
}

# version_of COMMIT: as CHANGELOG.md says it; what is not yet released comes before the release, and later commits after
# earlier ones.
version_of() {
    local heading
    heading=$(git show "$1:CHANGELOG.md" | sed -n 's/^## //p' | head -n 1)
    echo -n "${heading%%,*}"
    [[ $heading != *"not yet released" ]] || echo -n "~$(git rev-list --count "$1").$(git rev-parse --short=8 "$1")"
}

# make_one NAME: packages, and the tarball where it is wanted, below NAME; what is to be kept in NAME/made.
make_one() {
    local place=$scratch/$1
    mkdir -p "$place/made"
    run_packaging "the packages" "$place" make_debs
    [[ ! $tarball ]] || run_packaging "the tarball" "$place" make_tarball
}

# run_packaging WHAT PLACE FUNCTION: with a log in build.
run_packaging() {
    local log=build/$3.log
    echo "run: building $1, log $log" >&2
    attend "building $1" "$log" "$3" "$2" && return
    tail -n 40 "$log" >&2
    echo "run: no packages: all of the log: $log" >&2
    exit 1
}

# The committed files in the folder SOURCE, with the changelog that belongs to them; their modes are nobody's umask.
unpack_source() {
    local source=$1
    mkdir -p "$source"
    git archive "$commit" | tar -x -C "$source" || return
    LC_ALL=C awk -v version="$version" -v date="$(LC_ALL=C date -u -R -d "@$epoch")" \
        -v maintainer="$(sed -n 's/^Maintainer: //p' "$source/debian/control")" \
        -f "$source/scripts/changelog.awk" "$source/CHANGELOG.md" >"$source/debian/changelog" && chmod -R u=rwX,go=rX "$source"
}

# Both run under attend, where no failure ends them by itself.
make_debs() {
    local source=$1/debs/ribkit-$version offline=()
    umask "${umask_of-0022}"
    unpack_source "$source" || return
    ((EUID != 0)) || offline=(unshare --net)
    cd "$source" || return
    SOURCE_DATE_EPOCH=$epoch "${offline[@]}" dpkg-buildpackage --build=full --no-sign || return
    find .. -maxdepth 1 -type f -exec cp -t "$1/made" {} +
}

# Finds itself wherever it is unpacked; needs a C library as new as that of here.
make_tarball() {
    local source=$1/tarball/ribkit-$version name build_type=Release
    [[ " ${DEB_BUILD_OPTIONS-} " != *" noopt "* ]] || build_type=Debug
    name=ribkit-$version-$(uname -m)-linux
    umask "${umask_of-0022}"
    unpack_source "$source" || return
    cd "$source" || return
    export SOURCE_DATE_EPOCH=$epoch
    CFLAGS=-ffile-prefix-map=$PWD=. CXXFLAGS=-ffile-prefix-map=$PWD=. cmake -G Ninja -B build/tarball \
        -DCMAKE_BUILD_TYPE=$build_type -DCMAKE_INSTALL_LIBDIR=lib -DRIBKIT_SELF_CONTAINED=ON -DRIBKIT_TESTS=OFF &&
        cmake --build build/tarball &&
        cmake --install build/tarball --prefix "$1/tarball/$name" --strip &&
        add_documents "$1/tarball/$name/share/doc/ribkit" || return
    tar --sort=name --mtime="@$epoch" --owner=0 --group=0 --numeric-owner --mode=u+rw,go=rX -C .. -c "$name" |
        xz -9 -T1 >"$1/made/$name.tar.xz"
}

# With the notices of what is compiled in.
add_documents() {
    local library
    mkdir -p "$1" && cp -R README.md CHANGELOG.md SECURITY.md docs examples debian/copyright "$1/" || return
    rm -rf "$1"/docs/manual "$1"/docs/CMakeLists.txt "$1"/docs/*.sh "$1"/docs/*.awk "$1"/examples/CMakeLists.txt "$1"/examples/*.sh
    for library in libtomlplusplus-dev libcli11-dev; do
        cp -L "/usr/share/doc/$library/copyright" "$1/copyright.$library" || return
    done
}

# What lintian says beyond what debian/*.lintian-overrides explain ends it.
check_packages() {
    local log=build/lintian.log quick=()
    [[ " ${DEB_BUILD_OPTIONS-} " != *" noopt "* ]] || quick=(--suppress-tags hardening-no-fortify-functions)
    attend "checking the packages" "$log" lintian --no-cfg --allow-root --display-info --pedantic "${quick[@]}" \
        --fail-on error,warning,info,pedantic "$1"/*.changes && [[ ! -s $log ]] && return
    cat "$log" >&2
    echo "run: lintian is not content" >&2
    exit 1
}

# compare_packages ONE OTHER: names what differs; .buildinfo and .changes tell where and when a build was made.
compare_packages() {
    local file name different=0
    for file in "$1"/*; do
        name=${file##*/}
        [[ $name != *.buildinfo && $name != *.changes ]] || continue
        cmp -s "$file" "$2/$name" && continue
        echo "run: $name is not the same bytes when it is built again:" >&2
        differences "$file" "$2/$name" >&2
        different=1
    done
    ((different)) || echo "run: built twice, in other folders and with other umask, locale and time zone: the same bytes" >&2
    return "$different"
}

# The files inside of two packages that differ.
differences() {
    local inside=$scratch/inside side=one file
    rm -rf "$inside"
    for file; do
        mkdir -p "$inside/$side"
        case $file in
            *.deb) dpkg-deb -R "$file" "$inside/$side" ;;
            *.tar.xz) tar -xf "$file" -C "$inside/$side" ;;
            *) cp "$file" "$inside/$side/file" ;;
        esac
        side=other
    done
    (cd "$inside" && { diff -rq --no-dereference one other || true; })
    (cd "$inside" && diff <(cd one && find . -printf '%M %p\n' | sort) <(cd other && find . -printf '%M %p\n' | sort)) || true
}
