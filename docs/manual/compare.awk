# Compares the pages with what the libraries export and what the compiler reads in the headers.
# usage: awk -f compare.awk DECLARATIONS EXPORTED PAGE...
function squeezed(text) { gsub(/[ \t\n]/, "", text); return text }
function wrong(what) { print what > "/dev/stderr"; failures++ }

FILENAME == ARGV[1] {
    if (/\(/) {
        name = $0
        sub(/\(.*/, "", name)
        sub(/^.*[ *]/, "", name)
        declared[name] = squeezed($0 ";")
    }
    next
}
FILENAME == ARGV[2] { if (!($0 in exported)) n_exported++; exported[$0] = 1; next }
FNR == 1 {
    page = FILENAME
    sub(/^.*\//, "", page)
    has[page] = 1
    n_pages++
    if (/^\.so /) { leads_to[page] = substr($2, 6); next }
}
/^\.SH / { part = $2; next }
part == "NAME" && /\\- [a-z][A-Z]/ { wrong(page ": an abbreviation has lost its capital: " $0) }
{
    gsub(/\\f[BR]/, "")
    gsub(/\\-/, "-")
    if (part == "SYNOPSIS") synopsis[page] = synopsis[page] squeezed($0)
    if (part ~ /^(DESCRIPTION|RETURN)$/ && /^[A-Za-z0-9"]/) described[page] = 1
    if (part == "SEE") linked[page] = linked[page] " " $0
}

END {
    for (name in exported) {
        page = name ".3"
        if (!(page in has)) { wrong(name " has no page"); continue }
        if (page in leads_to) page = leads_to[page]
        if (!(name in declared)) wrong("no header declares " name)
        else if (!index(synopsis[page], declared[name])) wrong(page ": the synopsis has no " declared[name])
        if (!(page in described)) wrong(page ": says nothing of the function")
    }
    if (n_exported < 400) wrong("only " n_exported " functions are exported")
    for (page in leads_to) if (!(leads_to[page] in has)) wrong(page ": there is no " leads_to[page])
    for (page in linked) {
        n = split(linked[page], links, /[ ,]+/)
        for (i = 1; i <= n; i++) {
            name = links[i]
            if (name ~ /\([0-9]\)$/ && gsub(/[()]/, ".", name) && !(substr(name, 1, length(name) - 1) in has)) {
                wrong(page ": there is no " links[i])
            }
        }
    }
    print n_exported " functions, " n_pages " pages, " failures + 0 " wrong"
    exit failures > 0
}
