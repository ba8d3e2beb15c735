# debian/changelog from CHANGELOG.md: an entry for each version, newest first, with what changed in Debian's form.
# usage: awk -v version=VERSION -v date=RFC2822 -v maintainer=WHO -f changelog.awk CHANGELOG.md
# VERSION and DATE are those of the newest one; a released version's heading has a day: "## 0.1.0, 2026-12-01".

function trailer() {
    item()
    if (entry)
        printf "\n -- %s  %s\n", maintainer, when
}

# What has been read of an item, wrapped.
function item(n, i, words, line) {
    n = split(text, words, " ")
    line = "  *"
    for (i = 1; i <= n; i++) {
        if (length(line) + 1 + length(words[i]) > 79) {
            print line
            line = "   "
        }
        line = line " " words[i]
    }
    if (n)
        print line
    text = ""
}

# The words of a link, without its address; code as it reads.
function plain(line, link) {
    while (match(line, /\[[^]]*\]\([^)]*\)/)) {
        link = substr(line, RSTART + 1, RLENGTH - 1)
        line = substr(line, 1, RSTART - 1) substr(link, 1, index(link, "](") - 1) substr(line, RSTART + RLENGTH)
    }
    gsub(/`/, "", line)
    return line
}

function rfc2822(day, command, result) {
    command = "LC_ALL=C TZ=UTC date -R -d " day
    command | getline result
    close(command)
    return result
}

/^## [0-9]/ {
    trailer()
    sub(/,$/, "", $2)
    printf "%sribkit (%s) bookworm; urgency=medium\n\n", entry ? "\n" : "", entry ? $2 : version
    when = entry ? rfc2822($3) : date
    entry++
    next
}
!entry { next }
/^- / { item(); text = plain(substr($0, 3)); next }
NF && text { text = text " " plain($0) }
!NF { item() }
END { trailer() }
