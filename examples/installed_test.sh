#!/bin/sh
# Installs ribkit into an empty prefix and builds the examples against it, as a stranger would: with pkg-config, the shared
# libraries and the static ones, and with CMake's find_package. usage: installed_test.sh SOURCE BUILD SCRATCH
set -eu
source=$1 build=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >"$scratch/install.log"

sends() { "$@" | tee "$scratch/output" && grep -q '^the RIB took 1 route of VSAN 1: ok$' "$scratch/output"; }
decodes() { # a multicast route to fc 01/02/03 with one interface, then a report of two keys
    printf '\001\002\003\000\377\377\377\000\000\000\000\001\000\000\000\001\001\000\000\001' |
        "$@" rib_fcmrt >"$scratch/output"
    grep -qx 'action 0x1 (add)' "$scratch/output"
    grep -qx '  intf 0x1000001' "$scratch/output"
    printf '\000\000\000\001\000\000\000\002\000\000\000\000\000\000\000\000\000\000\000\000\000\000\000\024\000\001\002\003' |
        "$@" rib_verf_info >"$scratch/output"
    grep -qx 'key 0, a verf_fcm' "$scratch/output"
    grep -qx '  vsan 0x14' "$scratch/output"
}
shows() { "$@" | tee "$scratch/output" && grep -q '^    fc1/1  Domain  0x07(7)$' "$scratch/output"; }
writes() { "$@" | tee "$scratch/output" && grep -q '^0x090000, metric 2250: 0x01000009 to domain 9$' "$scratch/output"; }

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name ribkit.pc)")
flags=$(pkg-config --cflags --libs ribkit-platform)
libraries=$(pkg-config --variable=libdir ribkit)
# shellcheck disable=SC2086
${CC:-cc} -std=c11 -Wall -Werror "$source/examples/send_route.c" $flags -o "$scratch/send_route"
sends env LD_LIBRARY_PATH="$libraries" "$scratch/send_route"
# shellcheck disable=SC2046
${CC:-cc} -std=c11 -Wall -Werror "$source/examples/decode.c" $(pkg-config --cflags --libs ribkit-catalogue) -o "$scratch/decode"
decodes env LD_LIBRARY_PATH="$libraries" "$scratch/decode"

cmake -G Ninja -S "$source/examples/cmake" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$scratch/prefix" >"$scratch/cmake.log"
cmake --build "$scratch/cmake" >>"$scratch/cmake.log"
sends "$scratch/cmake/send_route"
shows "$scratch/cmake/show_table"
writes "$scratch/cmake/write_route"
decodes "$scratch/cmake/decode"

# With the shared libraries gone, the static ones are what is linked, and is all that is needed.
rm "$libraries"/*.so*
flags=$(pkg-config --static --cflags --libs ribkit-platform)
# shellcheck disable=SC2086
${CC:-cc} -std=c11 "$source/examples/send_route.c" $flags -o "$scratch/send_route_static"
sends "$scratch/send_route_static"
# shellcheck disable=SC2046
${CC:-cc} -std=c11 "$source/examples/decode.c" $(pkg-config --static --cflags --libs ribkit-catalogue) -o "$scratch/decode_static"
decodes "$scratch/decode_static"
# shellcheck disable=SC2086
${CXX:-c++} -std=c++17 "$source/examples/show_table.cpp" $flags -o "$scratch/show_table_static"
shows "$scratch/show_table_static"
# shellcheck disable=SC2086
${CXX:-c++} -std=c++20 -Wall -Wextra -Werror "$source/examples/write_route.cpp" $flags -o "$scratch/write_route_static"
writes "$scratch/write_route_static"
