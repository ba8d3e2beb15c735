#!/bin/sh
# The converters for AVX2 are byte shuffles, and their object offers the linker no function that other code might pick up:
# every one that it shares names avx2. usage: avx2_object_test.sh OBJECT
set -eu
objdump -d "$1" | grep -q vpshufb || { echo "no byte shuffle in $1"; exit 1; }
shared=$(nm -C "$1" | awk '$2 == "W"' | grep -v avx2 || true)
[ -z "$shared" ] || { echo "shared functions that do not name avx2:"; echo "$shared"; exit 1; }
