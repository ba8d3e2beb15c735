#!/bin/sh
# The shared library exports exactly the names of the list, needs the C library only, and leaves nothing undefined but the
# platform's services. usage: exports_test.sh LIBRARY LIST
set -eu
nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | grep -v '^ribkit' | LC_ALL=C sort >exported.txt
LC_ALL=C sort "$2" | diff - exported.txt
readelf -d "$1" | awk '/NEEDED/ { print $NF }' | grep -vE '^\[(libc\.so|ld-linux|ld\.so|libgcc_s)' && exit 1
nm -D --undefined-only "$1" | awk '$1 == "U" { print $2 }' | grep -v '@' |
    grep -vE '^(qip_(send|recv|drop|rr_token_get|payload_get|payload_size)|yelk_(hist_qip_event|hist_event_subtype_check|hist_event|chk_int|dbg_modname)|yapout|if_index_get_type|sprintf_if_index)$' && exit 1
exit 0
