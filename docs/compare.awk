# Is ACTUAL what a document shows? A line "..." stands for any number of lines; times of day are as good as each other; in a
# line with one of the words that VARIES lists, so are all numbers. usage: awk -v varies='WORD...' -f compare.awk SHOWN ACTUAL
BEGIN { varying = split(varies, words, /[ ,]+/) }

function plain(line,    i) {
    gsub(/[0-2][0-9]:[0-5][0-9]:[0-5][0-9]/, "TIME", line)
    for (i = 1; i <= varying; i++) {
        if ((" " line " ") ~ ("[^a-z]" words[i] "[^a-z]")) {
            gsub(/[0-9]+([.][0-9]+)?/, "N", line)
            gsub(/ +/, " ", line)
            break
        }
    }
    sub(/[ \t\r]+$/, "", line)
    return line
}

NR == FNR { shown[++n_shown] = plain($0); next }
{ actual[++n_actual] = plain($0) }

# Where the lines from `first` to `last` of what is shown stand, at `from` or behind; 0 if nowhere.
function find(first, last, from,    at, i) {
    for (at = from; at + last - first <= n_actual; at++) {
        for (i = first; i <= last && shown[i] == actual[at + i - first]; i++);
        if (i > last) return at
    }
    return 0
}

# The same where `bound` says whether there is a gap in front; without one behind, the lines are the last.
function place(first, last, from, bound,    at, end) {
    end = n_actual - (last - first)
    at = find(first, last, !bound && last == n_shown && end > from ? end : from)
    return bound && at != from ? 0 : at
}

function say(text) {
    print text > "/dev/stderr"
    wrong = 1
    exit 1
}

END {
    if (wrong) exit 1
    while (n_shown && shown[n_shown] == "") n_shown--
    while (n_actual && actual[n_actual] == "") n_actual--
    from = 1
    bound = 1
    for (first = 1; first <= n_shown; first = last + 2) {
        for (last = first; last <= n_shown && shown[last] != "..."; last++);
        last--
        if (last >= first) {
            at = place(first, last, from, bound)
            if (!at) say("these lines are shown and not printed, or not there:\n" joined(shown, first, last))
            from = at + last - first + 1
        }
        bound = 0
    }
    if (shown[n_shown] != "..." && from <= n_actual) say("this is printed and not shown:\n" joined(actual, from, n_actual))
}

function joined(lines, first, last,    text) {
    for (; first <= last; first++) text = text lines[first] "\n"
    return text
}
