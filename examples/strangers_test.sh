#!/bin/sh
# Builds the examples as a stranger does, against what pkg-config and CMake find: with the shared libraries, with the static
# ones alone, and with CMake's find_package. usage: strangers_test.sh EXAMPLES SCRATCH
set -eu
examples=$1 scratch=$2

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

# static_flags PACKAGE: what links our static libraries, by their files' names, and nothing shared of ours.
static_flags() { pkg-config --static --cflags --libs "$1" | sed 's/-lribkit\([a-z-]*\)/-l:libribkit\1.a/g'; }

# shellcheck disable=SC2046
${CC:-cc} -std=c11 -Wall -Werror "$examples/send_route.c" $(pkg-config --cflags --libs ribkit-platform) -o "$scratch/send_route"
sends "$scratch/send_route"
# shellcheck disable=SC2046
${CC:-cc} -std=c11 -Wall -Werror "$examples/decode.c" $(pkg-config --cflags --libs ribkit-catalogue) -o "$scratch/decode"
decodes "$scratch/decode"

cmake -G Ninja -S "$examples/cmake" -B "$scratch/cmake" >"$scratch/cmake.log"
cmake --build "$scratch/cmake" >>"$scratch/cmake.log"
sends "$scratch/cmake/send_route"
shows "$scratch/cmake/show_table"
writes "$scratch/cmake/write_route"
decodes "$scratch/cmake/decode"

unset LD_LIBRARY_PATH
# shellcheck disable=SC2046
${CC:-cc} -std=c11 "$examples/send_route.c" $(static_flags ribkit-platform) -o "$scratch/send_route_static"
sends "$scratch/send_route_static"
# shellcheck disable=SC2046
${CC:-cc} -std=c11 "$examples/decode.c" $(static_flags ribkit-catalogue) -o "$scratch/decode_static"
decodes "$scratch/decode_static"
# shellcheck disable=SC2046
${CXX:-c++} -std=c++17 "$examples/show_table.cpp" $(static_flags ribkit-platform) -o "$scratch/show_table_static"
shows "$scratch/show_table_static"
# shellcheck disable=SC2046
${CXX:-c++} -std=c++20 -Wall -Wextra -Werror "$examples/write_route.cpp" $(static_flags ribkit-platform) \
    -o "$scratch/write_route_static"
writes "$scratch/write_route_static"
! readelf -d "$scratch"/*_static | grep -F '[libribkit'
