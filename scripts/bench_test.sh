#!/usr/bin/env bash
# Rows of instructions say their bound, and whether they are above it.
. "$(dirname "$0")/expect.inc"
cd "$scratch_folder"
. "$tree/scripts/bench.sh"

# A program with three cases, and what callgrind counts of them.
cat >program <<'END'
#!/bin/sh
printf '%s\n' few 'many few 1.3' 'most few 1.3'
END
chmod +x program
instructions_each() {
    case $2 in few) echo 100 ;; many) echo 130 ;; most) echo 130.4 ;; esac
}
instructions ./program >rows
[[ $(sed -n 3p rows) =~ ^few\ +100\.0$ ]] || fail "without a bound: $(<rows)"
[[ $(sed -n 4p rows) =~ ^many\ +130\.0\ +100\.0\ +1\.300\ \ at\ most\ 1\.3$ ]] || fail "at its bound: $(<rows)"
[[ $(sed -n 5p rows) =~ ^most\ +130\.4\ +100\.0\ +1\.304\ \ above\ its\ bound\ of\ 1\.3$ ]] || fail "above: $(<rows)"
