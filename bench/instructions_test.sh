#!/usr/bin/env bash
# Counts the instructions of each case, and compares them with those that are kept: more than 3 % up is red, more than 3 %
# down wants to be written down. Only code of our own counts: what the C library does depends on the machine. Figures of
# another compiler, or of other options, are not compared.
# usage: instructions_test.sh PROGRAM KEPT; with RIBKIT_KEEP=1 it writes KEPT
set -euo pipefail
program=$(realpath "$1") kept=$(realpath "$2")
command -v valgrind >/dev/null || { echo "there is no valgrind: apt-get install valgrind"; exit 1; }
compiled_by=$(<"$(dirname "$program")/compiled_by")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A profile has lines "ob=FILE" and, below, lines of costs: position and count. What stands behind "calls=" is the cost of
# what was called, which has lines of its own.
own_instructions() {
    awk -v program="$program" '
        /^desc: Trigger: Client Request: / { name = substr($0, 32) }
        /^ob=/ { own = substr($0, 4) == program }
        /^calls=/ { skip = 1; next }
        /^[+*0-9-]/ { if (skip) skip = 0; else if (own) sum += $2 }
        END { if (name != "") printf "%s: %.0f\n", name, sum }' "$1"
}

cd "$work"
valgrind --tool=callgrind --collect-atstart=no --compress-pos=no --compress-strings=no --callgrind-out-file="$work/out" "$program" >shown 2>log ||
    { cat log; exit 1; }
for profile in $(ls out.* | sort -t. -k2n); do
    own_instructions "$profile"
done >now
(($(wc -l <now) > 20)) || { echo "only $(wc -l <now) cases were counted"; cat log; exit 1; }

if [[ ${RIBKIT_KEEP-} ]]; then
    { echo "# Instructions of 100 calls each, as ./run instructions --keep writes them."
      echo "compiled by: $compiled_by"
      cat now; } >"$kept"
    exit
fi
if [[ $(sed -n 's/^compiled by: //p' "$kept") != "$compiled_by" ]]; then
    echo "not compared: kept are figures of $(sed -n 's/^compiled by: //p' "$kept"), and this is built by $compiled_by"
    exit
fi
awk -F': ' '
    /^#/ || /^compiled by/ { next }
    FNR == NR { kept[$1] = $2; next }
    { seen[$1] = 1 }
    !($1 in kept) { print $1 ": not kept yet; ./run instructions --keep writes it down"; bad = 1; next }
    $2 > kept[$1] * 1.03 { printf "%s: %d instructions, %.1f %% more than the %d kept\n", $1, $2, ($2 / kept[$1] - 1) * 100, kept[$1]; bad = 1 }
    $2 < kept[$1] * 0.97 { printf "%s: %d instructions, %.1f %% less than the %d kept; ./run instructions --keep writes it down\n", $1, $2, (1 - $2 / kept[$1]) * 100, kept[$1]; bad = 1 }
    END {
        for (name in kept) if (!(name in seen)) {
            if (name ~ / avx2$/) print name ": not compared, this processor has no AVX2"
            else { print name ": is kept, and not counted any more"; bad = 1 }
        }
        exit bad
    }' "$kept" now
