#!/usr/bin/env bash
# What is installed is hardened: looked for in the files as they were linked.
# usage: hardening_test.sh [--without-checks] FILE... [--data FILE...]
# Without optimisation there are no checked copies; what is data but for a few lines has neither these nor guards.
set -euo pipefail
failed=0

# expect FILE WHAT PATTERN TEXT: the text of the file has a line of the pattern.
expect() {
    grep -qE "$3" <<<"$4" || { echo "$1: $2 is missing"; failed=1; }
}

# refuse FILE WHAT PATTERN TEXT
refuse() {
    ! grep -qE "$3" <<<"$4" || { echo "$1: $2"; failed=1; }
}

look_at() {
    local file=$1 name=${1##*/} header segments dynamic wanted
    header=$(readelf -hW "$file")
    segments=$(readelf -lW "$file")
    dynamic=$(readelf -dW "$file")
    wanted=$(readelf --dyn-syms -W "$file" | awk '$7 == "UND" { print $8 }')
    expect "$name" "loading at any place (-fPIE, -fPIC)" 'Type: +DYN' "$header"
    expect "$name" "memory that is only read once it is filled in (-z relro)" '^ +GNU_RELRO ' "$segments"
    expect "$name" "filling it in before anything runs (-z now)" '\((BIND_NOW|FLAGS|FLAGS_1)\).*NOW' "$dynamic"
    expect "$name" "a stack of data only (-z noexecstack)" '^ +GNU_STACK .* RW +0x' "$segments"
    refuse "$name" "code that the loader changes" '\(TEXTREL\)' "$dynamic"
    refuse "$name" "memory that can be written and run" '^ +LOAD .* RWE ' "$segments"
    [[ ! $(readelf -x .interp "$file" 2>/dev/null) ]] || expect "$name" "being a program for any place (-pie)" 'Flags:.* PIE' "$dynamic"
    [[ ! $guarded ]] || expect "$name" "a guard below arrays on the stack (-fstack-protector-strong)" '^__stack_chk_fail' "$wanted"
    [[ ! $checked ]] || expect "$name" "checked copies and prints (-D_FORTIFY_SOURCE)" '_chk@' "$wanted"
}

checked=yes guarded=yes
for file; do
    case $file in
        --without-checks) checked= ;;
        --data) checked= guarded= ;;
        *) look_at "$file" ;;
    esac
done
exit "$failed"
