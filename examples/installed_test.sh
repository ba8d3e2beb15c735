#!/bin/sh
# Installs ribkit into an empty prefix and builds the examples against it. usage: installed_test.sh SOURCE BUILD SCRATCH
set -eu
source=$1 build=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >"$scratch/install.log"

PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name ribkit.pc)")
CMAKE_PREFIX_PATH=$scratch/prefix
LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH")
export PKG_CONFIG_PATH CMAKE_PREFIX_PATH LD_LIBRARY_PATH
exec "$source/examples/strangers_test.sh" "$source/examples" "$scratch"
