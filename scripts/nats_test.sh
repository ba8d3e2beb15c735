#!/usr/bin/env bash
# ./run nats lets clients, modules and a RIB meet at a server, and whatever ends it ends all of them.
. "$(dirname "$0")/expect.inc"
PATH=$PATH:/usr/sbin command -v nats-server >/dev/null || exit 77
out=$scratch_folder/out

# Nobody is left of the run whose output is in $out.
expect_none_left() {
    local url
    url=$(grep -o 'nats://[0-9.:]*' "$out" | head -n 1)
    [[ $url ]] || fail "it names no server"
    ! pgrep -f -- "--bus $url" >/dev/null || fail "$1 leaves processes behind"
}

"$run" nats </dev/null >"$out" 2>&1 || fail "it ends with $?"
for name in left right; do
    grep -q "^module [12], $name, answers at nats://" "$out" || fail "module $name does not say that it is there"
done
[[ $(grep -c '^rib  *20 ' "$out") == 16 ]] || fail "the modules do not have 8 routes of VSAN 20 each"
expect_none_left "its end"

"$run" nats </dev/null >"$out" 2>&1 &
stopped=$!
until grep -q 'meet at nats://' "$out"; do
    kill -0 "$stopped" || fail "it has ended"
    sleep 0.1
done
kill -TERM "$stopped"
wait "$stopped" && fail "a signal ends it as if all were well"
expect_none_left "SIGTERM"
