# What Debian calls what each command needs, and how it gets here.
build_packages=(g++ cmake ninja-build)
lab_packages=("${build_packages[@]}" libcli11-dev libtomlplusplus-dev)
install_packages=("${lab_packages[@]}" pkg-config libnats-dev)
nats_packages=("${install_packages[@]}" nats-server)
test_packages=("${nats_packages[@]}" nlohmann-json3-dev googletest libgtest-dev abigail-tools valgrind openssl clang libclang-rt-14-dev mandoc groff-base g++-powerpc-linux-gnu qemu-user)
bench_packages=("${nats_packages[@]}" nlohmann-json3-dev libcapnp-dev capnproto libflatbuffers-dev flatbuffers-compiler
    libprotobuf-dev protobuf-compiler libtirpc-dev libboost-dev libroaring-dev valgrind)

# need WHY PACKAGE...: installs the packages that are missing.
need() {
    local why=$1 missing=() package
    shift
    command -v dpkg-query >/dev/null || { echo "run: no Debian packages here; $why needs what Debian calls: $*" >&2; return 0; }
    for package; do
        [[ $(dpkg-query -W -f '${Status}' "$package" 2>/dev/null) == *" installed" ]] || missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    echo "run: installing ${missing[*]}: $why needs them" >&2
    if ((EUID != 0)); then # in the foreground, where a password may be asked for
        command -v sudo >/dev/null || { echo "run: ask an administrator for: apt-get install ${missing[*]}" >&2; exit 1; }
        apt_install sudo "${missing[@]}"
        return
    fi
    mkdir -p build
    attend "installing packages" build/packages.log apt_install env "${missing[@]}" ||
        { cat build/packages.log >&2; exit 1; }
}

# apt_install ENV PACKAGE...: from the lists as they are, and from new ones where those will not do.
apt_install() {
    local as=("$1" DEBIAN_FRONTEND=noninteractive)
    shift
    local install=("${as[@]}" apt-get -qq -y -o DPkg::Lock::Timeout=600 --no-install-recommends install "$@")
    "${install[@]}" >/dev/null 2>&1 || { "${as[@]}" apt-get -qq update && "${install[@]}" >/dev/null; }
}
