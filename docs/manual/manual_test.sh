#!/usr/bin/env bash
# Every exported function has a page that shows it as its header declares it and says what it does; every link leads
# somewhere; both of the programs that show manual pages take all of them without a word.
# usage: manual_test.sh SOURCE BUILD MANUAL
set -euo pipefail
source=$1 build=$2 manual=$3
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

nm -D --defined-only "$build"/{.,platform,catalogue}/libribkit*.so |
    awk '$2 ~ /^[TWi]$/ { sub(/@.*/, "", $3); print $3 }' >"$scratch/exported"
# Each declaration a line.
for header in "$source"/include/*.h; do echo "#include \"$header\""; done |
    "${CC:-cc}" -E -P -x c -I "$source/include" - | tr '\n' ' ' |
    sed -E -e 's/__attribute__ *\(\([^;]*\)\)//g' -e 's/[;{}]/\n/g' >"$scratch/declarations"
awk -f "$here/compare.awk" "$scratch/declarations" "$scratch/exported" "$manual"/man*/*

for tool in mandoc groff; do
    command -v "$tool" >/dev/null || { echo "not linted: $tool is missing (Debian: mandoc, groff-base)"; exit 77; }
done
mapfile -t pages < <(grep -L '^\.so ' "$manual"/man*/*)
{
    mandoc -T lint "${pages[@]}" || true
    groff -man -t -Tutf8 -ww -z "${pages[@]}" 2>&1 || true
} >"$scratch/said"
[[ ! -s $scratch/said ]] || { head -20 "$scratch/said" >&2; exit 1; }
