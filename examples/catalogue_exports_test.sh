#!/bin/sh
# The catalogue's library exports what its map names, and needs the switch's library and the C library only.
# usage: catalogue_exports_test.sh LIBRARY MAP
set -eu
nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort >exported_catalogue.txt
sed -n 's/^ *\([a-z_]*\);$/\1/p' "$2" | LC_ALL=C sort | diff - exported_catalogue.txt
readelf -d "$1" | awk '/NEEDED/ { print $NF }' | grep -vE '^\[(libribkit\.so|libc\.so|ld-linux|ld\.so|libgcc_s)' && exit 1
exit 0
