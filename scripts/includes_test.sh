#!/usr/bin/env bash
# The folders are what docs/architecture.md says they are: a source includes what the table lets its folder know, a row
# knows only rows above it, and the drawing is the table's shortest one: an arrow for each pair that no longer way joins,
# and an include behind every arrow. usage: includes_test.sh SOURCES
set -euo pipefail
cd "$1"
document=docs/architecture.md
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0
refuse() { echo "$*"; failed=1; }

# What only proves: it may look at everything, and no row may know it. In the rows' folders its files tell by their names.
proof='^(bench|codec/witness|examples|footprint|fuzz|testing)/|_(test|bench|bench_missing|soak|fixture|peer|rig|twin)\.(c|cpp|h):'

# folder of each row, in order; "folder known" of each entry; "from to" of each arrow
awk -F'|' -v rows="$scratch/rows" -v known="$scratch/known" '
    function name(text) { gsub(/[` ]/, "", text); sub(/\/$/, "", text); return text }
    /^\| `/ { folder = name($2); print folder > rows
        n = split($4, entries, ","); for (i = 1; i <= n; i++) if (entries[i] ~ /`/) print folder, name(entries[i]) > known }
    /^## A message/ { exit }' "$document"
sed -n 's/^ *\([a-z/]*\) --> \([a-z/& ]*\)$/\1 \2/p' "$document" | tr -d '&' |
    awk '{ for (i = 2; i <= NF; i++) print $1, $i }' >"$scratch/drawn"
[[ -s $scratch/rows && -s $scratch/known && -s $scratch/drawn ]] || { echo "no table or no drawing in $document"; exit 1; }

# room_of PATH: the longest row that it is in, or the folder that nobody has described.
declare -A row
while read -r folder; do row[$folder]=$folder; done <"$scratch/rows"
room_of() {
    local at=${1%/*}
    [[ $1 == */* ]] || at=include
    while [[ $at == */* && -z ${row[$at]-} ]]; do at=${at%/*}; done
    echo "$at"
}

# "folder included source" of all product sources
grep -rn --include='*.h' --include='*.cpp' --include='*.c' '^ *#include "' --exclude-dir=build . | sed 's|^\./||' |
    grep -vE "$proof" |
    sed -n 's/^\([^:]*\):[0-9]*: *#include "\([^"]*\)".*/\1 \2/p' >"$scratch/includes"
declare -A rooms
while read -r source included; do
    : "${rooms[${source%/*}/]:=$(room_of "$source")}"
    [[ $included == */* ]] && key=${included%/*}/ || key=include/
    : "${rooms[$key]:=$(room_of "$key")}"
    echo "${rooms[${source%/*}/]} ${rooms[$key]} $source"
done <"$scratch/includes" | awk '$1 != $2' >"$scratch/made"
[[ $(wc -l <"$scratch/made") -gt 100 ]] || refuse "hardly an include in $1"

awk -v rows="$scratch/rows" -v known="$scratch/known" -v drawn="$scratch/drawn" '
    function refuse(what) { print what; failed = 1 }
    # whether a way of drawn arrows leads there, but for the arrow without_from without_to
    function reaches(from, to, without,   i) {
        for (i = 1; i <= arrows; i++)
            if (start[i] == from && i != without && (end[i] == to || reaches(end[i], to, without))) return 1
        return 0
    }
    FILENAME == rows { place[$1] = FNR; next }
    FILENAME == known { knows[$1, $2]; from[++entries] = $1; to[entries] = $2
        if (!($2 in place) || place[$2] >= place[$1]) refuse("the row of " $1 "/ knows " $2 "/, which is no row above it")
        next }
    FILENAME == drawn { start[++arrows] = $1; end[arrows] = $2
        if (!(($1, $2) in knows)) refuse("the arrow from " $1 " to " $2 " is not in the table")
        next }
    { made[$1, $2] }
    !(($1, $2) in knows) { refuse($3 ": the table does not let " $1 "/ know " $2 "/") }
    END {
        if (failed) exit 1
        for (i = 1; i <= entries; i++)
            if (!reaches(from[i], to[i], 0)) refuse("no arrow leads from " from[i] " to " to[i])
        for (i = 1; i <= arrows; i++) {
            if (reaches(start[i], end[i], i)) refuse("the arrow from " start[i] " to " end[i] " says what longer ways say")
            if (!((start[i], end[i]) in made)) refuse("no include is behind the arrow from " start[i] " to " end[i])
        }
        exit failed
    }' "$scratch/rows" "$scratch/known" "$scratch/drawn" "$scratch/made" || failed=1
exit "$failed"
