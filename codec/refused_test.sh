#!/bin/sh
# Wrong uses of layouts, views and writers do not compile, and the compiler names the reason.
# usage: refused_test.sh COMPILER SOURCE SCRATCH
set -eu
compiler=$1 source=$2 output=$3/refused.log
compiles() { "$compiler" -std=c++20 -fsyntax-only -DCASE="$1" -I "$source" -I "$source/include" "$source/codec/refused.cpp" >"$output" 2>&1; }

compiles 0 || { cat "$output"; echo "the right uses do not compile"; exit 1; }
sed -n 's/^#\(el\)*if CASE == \([0-9]*\) .*: \(.*\)$/\2 \3/p' "$source/codec/refused.cpp" >"$output.cases"
tested=0
while read -r number reason; do
    ! compiles "$number" || { echo "case $number compiles"; exit 1; }
    grep -qE "$reason" "$output" || { cat "$output"; echo "case $number is refused for another reason than \"$reason\""; exit 1; }
    tested=$((tested + 1))
done <"$output.cases"
[ "$tested" -eq "$(grep -c 'CASE ==' "$source/codec/refused.cpp")" ] || { echo "only $tested cases were found"; exit 1; }
