#!/usr/bin/env bash
# A source file begins with what lives in it and why, as a comment. usage: chapters_test.sh SOURCES
set -euo pipefail
cd "$1"
[[ -f codec/layout.h ]] || { echo "no sources in $1"; exit 1; }
silent=0
while IFS= read -r source; do
    read -r line <"$source" || true
    [[ $line == "// "[a-zA-Z]* || $line == "/*"* ]] || { echo "$source begins without a chapter comment: $line"; silent=1; }
done < <(find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) -printf '%P\n')
exit "$silent"
