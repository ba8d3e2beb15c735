#!/bin/sh
# Installs ribkit into an empty prefix and builds the examples against it, as a stranger would: with pkg-config, and with
# CMake's find_package. usage: installed_test.sh SOURCE BUILD SCRATCH
set -eu
source=$1 build=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >"$scratch/install.log"

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name ribkit.pc)")
flags=$(pkg-config --cflags --libs ribkit-platform)
libraries=$(pkg-config --variable=libdir ribkit)
# shellcheck disable=SC2086
${CC:-cc} -std=c11 -Wall -Werror "$source/examples/send_route.c" $flags -lpthread "-Wl,-rpath,$libraries" \
    -o "$scratch/send_route"
"$scratch/send_route" | tee "$scratch/output"
grep -q '^the RIB took 1 route of VSAN 1: ok$' "$scratch/output"

cmake -S "$source/examples/cmake" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$scratch/prefix" >"$scratch/cmake.log"
cmake --build "$scratch/cmake" >>"$scratch/cmake.log"
"$scratch/cmake/send_route" | grep -q '^the RIB took 1 route of VSAN 1: ok$'
"$scratch/cmake/show_table" | tee "$scratch/output"
grep -q '^    fc1/1  Domain  0x07(7)$' "$scratch/output"
