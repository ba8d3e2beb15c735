# Work that takes its time: a signal ends it at once, all of it, and meanwhile somebody says how far it is.

# What is to be removed at the end.
scratch=

# begin COMMAND...: starts it in the background, as a job with a process group of its own, which is then in `begun`.
begin() {
    set -m
    "$@" </dev/null &
    begun=$!
    set +m
}

# Ends all that was begun: at its request if it is quick, by force otherwise. The shell's own list of jobs has what was
# begun the moment before a signal.
end_work() {
    local group try
    for group in $(jobs -p); do
        kill -TERM -- "-$group" 2>/dev/null || continue
        for try in {1..10}; do
            kill -0 -- "-$group" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL -- "-$group" 2>/dev/null || true
        wait "$group" 2>/dev/null || true
    done
    [[ ! $scratch ]] || rm -rf --one-file-system "$scratch"
}

# A signal ends the script as it ends any program, after its work.
stop_by() {
    trap - "$1" EXIT
    end_work
    kill "-$1" $$
    exit 1 # only the first process of a machine is still here: it has no default for signals
}
trap end_work EXIT
trap 'stop_by INT' INT
trap 'stop_by TERM' TERM
trap 'stop_by HUP' HUP

# finish COMMAND...: runs it to its end, or to a signal.
finish() {
    begin "$@"
    wait "$begun"
}

# attend WHAT LOG COMMAND...: the same for a long one, which writes into LOG; on a terminal a line says how far it is, and
# elsewhere one a minute does.
attend() {
    local what=$1 log=$2 reporter status=0
    shift 2
    begin report "$what" "$log"
    reporter=$begun
    finish "$@" >"$log" 2>&1 || status=$?
    kill -TERM -- "-$reporter" 2>/dev/null || true
    wait "$reporter" 2>/dev/null || true
    ! on_terminal || printf '\r\033[K' >&2
    return "$status"
}

on_terminal() { [[ -t 2 && ${TERM-dumb} != dumb ]]; }

report() {
    local what=$1 log=$2 start=$SECONDS
    if on_terminal; then
        while sleep 1; do
            printf '\rrun: %s: %s%d:%02d \033[K' "$what" "$(far_in "$log")" \
                $(((SECONDS - start) / 60)) $(((SECONDS - start) % 60)) >&2
        done
    fi
    while sleep 60; do
        echo "run: $what: $(far_in "$log")after $(((SECONDS - start) / 60)) min" >&2
    done
}

# far_in LOG: "120 of 234, " where ninja's last line says [120/234], or ctest's 120/234 Test; else nothing.
far_in() {
    sed -nE 's:^\[?[[:space:]]*([0-9]+)/([0-9]+)(\] | Test ).*:\1 of \2, :p' "$1" 2>/dev/null | tail -n 1 | tr -d '\n'
}
