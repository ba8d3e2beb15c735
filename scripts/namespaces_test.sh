#!/usr/bin/env bash
# A source file opens its folder's namespace, or one within it, and no other of ours. usage: namespaces_test.sh SOURCES
set -euo pipefail
cd "$1"

# namespace_of FOLDER: the name of the room that it is in, but for messages, which are named for where they travel, and
# for their witnesses.
namespace_of() {
    case $1 in
        codec/messages) echo wire ;;
        codec/witness) echo witness ;;
        *) echo "${1%%/*}" ;;
    esac
}

sources=$(find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -printf '%P\n')
[[ $sources == *codec/* ]] || { echo "no sources in $1"; exit 1; }
strangers=0
for source in $sources; do
    name=$(namespace_of "$(dirname "$source")")
    if grep -HnE '^ *(inline )?namespace ribkit\b' "$source" | grep -vE ":namespace ribkit::$name(::\w+)? \{$"; then
        echo "$source belongs in ribkit::$name"
        strangers=1
    fi
done
exit "$strangers"
