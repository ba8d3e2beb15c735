#!/usr/bin/env bash
# Progress is read from what ninja and ctest write, failures are named, and a signal ends work with all its processes.
. "$(dirname "$0")/expect.inc"
cd "$scratch_folder"

(
    . "$tree/scripts/work.sh"
    . "$tree/scripts/test.sh"
    printf '%s\n' 'configured' >log
    [[ ! $(far_in log) ]] || fail "far too early: $(far_in log)"
    printf '%s\n' '[7/234] Building CXX object x.cpp.o' '[8/234] Linking' 'warning: [9/9]' >log
    [[ $(far_in log) == "8 of 234, " ]] || fail "ninja: $(far_in log)"
    printf '%s\n' '       Start  9: row' '  9/2005 Test    #9: row ...   Passed' ' 10/2005 Test   #10: col ...***Failed' >log
    [[ $(far_in log) == "10 of 2005, " ]] || fail "ctest: $(far_in log)"
    printf '%s\n' '	 1 - not.yet (Failed)' 'The following tests FAILED:' '	 10 - table.col (Failed)' '	 11 - b (Timeout)' \
        'Errors while running CTest' >log
    [[ $(failed_in log) == $'table.col (Failed)\nb (Timeout)' ]] || fail "failed: $(failed_in log)"
)

# Work that ignores the signal, with a child of its own, and a server that is quick to end.
cat >work.sh <<'END'
. "$1/scripts/work.sh"
scratch=$PWD/removed
mkdir "$scratch"
stubborn() { trap '' TERM; sleep 1000 & echo "$BASHPID $!" >pids; echo ready >ready; wait; }
attend "waiting" log stubborn
END
# The same when the signal comes while the script begins something.
cat >early.sh <<'END'
. "$1/scripts/work.sh"
scratch=$PWD/removed
mkdir "$scratch"
stubborn() { trap '' TERM; echo "$BASHPID" >pids; echo ready >ready; exec sleep 1000; }
signal=$2
set() { builtin set "$@"; [[ $1 != +m ]] || { read -r _ <ready; kill "-$signal" $$; }; }
begin stubborn
wait
END
# gone PID: within a time that is long enough for any machine; what nobody has waited for yet is gone, too.
gone() {
    local try
    for try in {1..100}; do
        [[ -d /proc/$1 && $(cat "/proc/$1/stat" 2>/dev/null) != *") Z "* ]] || return 0
        sleep 0.1
    done
    return 1
}

mkfifo ready
# expect_all_ended PID SIGNAL: the script is ended by the signal, and with it what it began.
expect_all_ended() {
    local status=0 pid
    wait "$1" || status=$?
    [[ $status == $((128 + $(kill -l "$2"))) ]] || fail "$2 ends ./run with $status"
    for pid in $(cat pids); do
        gone "$pid" || fail "$2 left $pid"
    done
    [[ ! -e removed ]] || fail "$2 left the scratch folder"
}

for signal in INT TERM HUP; do
    set -m # or INT would be ignored in the background
    bash work.sh "$tree" 2>/dev/null &
    set +m
    read -r _ <ready
    kill "-$signal" $!
    expect_all_ended $! "$signal"
    set -m
    bash early.sh "$tree" "$signal" 2>/dev/null &
    set +m
    expect_all_ended $! "$signal"
done
