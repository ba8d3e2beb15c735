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
for signal in INT TERM HUP; do
    set -m # or INT would be ignored in the background
    bash work.sh "$tree" 2>/dev/null &
    set +m
    read -r _ <ready
    kill "-$signal" $!
    status=0
    wait $! || status=$?
    [[ $status == $((128 + $(kill -l "$signal"))) ]] || fail "$signal ends ./run with $status"
    for pid in $(cat pids); do
        gone "$pid" || fail "$signal left $pid"
    done
    [[ ! -e removed ]] || fail "$signal left the scratch folder"
done
