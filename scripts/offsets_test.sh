#!/usr/bin/env bash
# Messages are read and written by the names of their layouts: nobody loads or stores a number at an offset of a message,
# or packs a struct that looks like one. Witnesses, tests and the bench's hand-written peer do, since they are there to
# differ. usage: offsets_test.sh SOURCES
set -euo pipefail
cd "$1"
[[ -f codec/view.h ]] || { echo "no sources in $1"; exit 1; }

# Where numbers meet bytes, and formats that are no messages.
apart='^(codec/(bytes|isa_scalar|isa_shuffles|size|view|writer)\.h' # what layouts are made of
apart+='|decode/numbers\.h'                            # layouts that are known at run time
apart+='|mem/(bitmap/bitmap|buddy/buddy_twin|image_check)\.cpp'     # bitmaps, saved images
apart+='|platform/(nats/nats_arrivals|nats/nats_transport|unix/unix_packet)\.cpp' # what travels in front of a message
apart+='|cli/rib/route_request\.h'                     # the words of a command line
apart+='|fuzz/attacks\.cpp'                            # damage, at any offset
apart+='|bench/loop_peer\.(cpp|h)|codec/witness/.*|.*_test\.cpp|testing/.*):'

found=0
refuse() { # WHAT PATTERN
    local lines
    lines=$(grep -rnE --include='*.cpp' --include='*.h' "$2" --exclude-dir=build . | sed 's|^\./||' | grep -vE "$apart" || true)
    [[ -z $lines ]] || { printf '%s:\n%s\n' "$1" "$lines"; found=1; }
}
refuse "a number is loaded or stored by hand" '\b(be16|be32|load16|load32|store16|store32)\b|__builtin_bswap|\b(hton|ntoh)[ls]\('
refuse "a message has a literal offset" '\b(bytes|data\(\)|entry|envelope|message|msg|payload|record|update|answer|query)\)? \+ [0-9]+\b'
refuse "a struct is laid out like a message" '^(static )?struct \w+_(words|wire) \{|pragma pack|\[\[gnu::packed|__packed__'
exit "$found"
