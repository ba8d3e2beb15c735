#!/usr/bin/env bash
# What programs that were linked against the last release rely on is still there: abi/ keeps the description of each shared
# library. New functions may come; nothing may go or change. usage: interface_test.sh SOURCES LIBRARY...
set -euo pipefail
sources=$(realpath "$1")
shift
for tool in abidw abidiff; do
    command -v "$tool" >/dev/null || { echo "there is no $tool: apt-get install abigail-tools"; exit 1; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# describe HEADERS LIBRARY FILE
describe() { "$sources/scripts/interface.inc" "$1" "$2" >"$3"; }

# differs KEPT NOW: says what, and succeeds, where a program that was linked before would notice.
differs() { ! abidiff --no-added-syms "$1" "$2"; }

for library; do
    name=$(basename "$library" .so)
    kept=$sources/abi/$name.abi
    describe "$sources/include" "$library" "$work/$name.abi"
    if [[ ${RIBKIT_KEEP-} ]]; then
        mkdir -p "$sources/abi"
        cp "$work/$name.abi" "$kept"
    elif differs "$kept" "$work/$name.abi"; then
        echo "$name is not what abi/$name.abi says that programs rely on. If it is meant to be so: CHANGELOG.md says which"
        echo "numbers change with it, and ./run abi --keep writes it down."
        failed=1
    fi
done
[[ ! ${RIBKIT_KEEP-} ]] || exit 0

# A change is noticed and named.
cp -r "$sources/include" "$work/changed"
sed -i 's/^uint32_t rib_wrap_qip_send(/uint64_t rib_wrap_qip_send(/' "$work/changed/rib_wrap.h"
describe "$work/changed" "$1" "$work/changed.abi"
said=$(differs "$sources/abi/libribkit.abi" "$work/changed.abi") || { echo "another return type is not noticed"; failed=1; }
[[ $said == *rib_wrap_qip_send* ]] || { echo "another return type is not named: $said"; failed=1; }
exit "$failed"
