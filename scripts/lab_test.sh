#!/usr/bin/env bash
# ./run lab takes what ribkit lab takes, and runs the sample where no FABRIC is named.
. "$(dirname "$0")/expect.inc"
cd "$scratch_folder"
sed 's/^name = "small"/name = "another"/' "$tree/examples/fabrics/small.toml" >another.toml

expect_run 0 "*small: 5 switches*" lab
expect_run 0 "*small: 5 switches*sent RIB*" lab --trace
expect_run 0 "*small: 5 switches*" lab --tables none
expect_run 0 "*another: 5 switches*" lab another.toml --tables none
expect_run 0 "*another: 5 switches*" lab --tables none another.toml
[[ $("$run" lab - <another.toml 2>&1) == *"another: 5 switches"* ]] || fail "standard input is not read"
RIBKIT_FABRIC=another.toml expect_run 0 "*another: 5 switches*" lab
expect_run 2 "*nosuch.toml*" lab nosuch.toml
