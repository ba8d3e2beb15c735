# Manual pages from Markdown: of the commands (`ribkit manual`), of the headers (headers.awk) and of documents. A line
# "# NAME, NAME(SECTION): SUMMARY" begins a page; the names behind the first are files that lead to it.
# usage: awk -v folder=FOLDER -v date=DATE -v version=VERSION [-v page="NAME(SECTION)" -v see=PAGES] -f man.awk FILE...
# With page, the title of the document is its summary, and it ends with the pages to see.
BEGIN {
    title[1] = "ribkit commands"
    title[3] = "ribkit library"
    title[5] = "ribkit files"
}

function put(line) { print line > file }

# What roff would take for its own.
function escaped(text, is_code,    i, c, out) {
    for (i = 1; i <= length(text); i++) {
        c = substr(text, i, 1)
        if (c == "\\") c = "\\(rs"
        else if (c == "~") c = "\\(ti"
        else if (c == "^") c = "\\(ha"
        else if (c == "'" && is_code) c = "\\(aq"
        else if (c == "`" && is_code) c = "\\(ga"
        else if (c == "-" && is_code) c = "\\-"
        out = out c
    }
    return out
}

# `code` and **strong** are bold, a [link](to) is its words, and the address where that is elsewhere.
function styled(text,    out, at, stop, label, link) {
    while (match(text, /`[^`]*`|\*\*[^*]*\*\*|\[[^]]*\]\([^)]*\)/)) {
        at = RSTART
        stop = RLENGTH
        out = out escaped(substr(text, 1, at - 1))
        label = substr(text, at, stop)
        text = substr(text, at + stop)
        if (label ~ /^`/) {
            out = out "\\fB" escaped(substr(label, 2, stop - 2), 1) "\\fR"
        } else if (label ~ /^\*/) {
            out = out "\\fB" escaped(substr(label, 3, stop - 4)) "\\fR"
        } else {
            link = label
            sub(/^.*\]\(/, "", link)
            sub(/\)$/, "", link)
            sub(/\]\(.*$/, "", label)
            out = out styled(substr(label, 2)) (link ~ /^https?:/ ? " <" link ">" : "")
        }
    }
    return out escaped(text)
}

# Lines of at most 78 characters; none of them begins like a request.
function fill(text) { fill_styled(styled(text)) }

function fill_styled(text,    words, n, i, line) {
    n = split(text, words, " ")
    for (i = 1; i <= n; i++) {
        if (length(words[i]) > 60) gsub(/\[/, "\\:[", words[i]) # where a long one may be broken
        if (line != "" && length(line) + 1 + length(words[i]) > 78) {
            put(guarded(line))
            line = ""
        }
        line = line (line == "" ? "" : " ") words[i]
    }
    if (line != "") put(guarded(line))
}

function guarded(line) { return (line ~ /^[.']/ ? "\\&" : "") line }

# The place behind the tag of "`NAME` VALUE: text"; 0 where the text has none.
function end_of_tag(text,    i, c, inside) {
    if (text !~ /^`/) return 0
    for (i = 1; i < length(text) && i < 70; i++) {
        c = substr(text, i, 1)
        if (c == "`") inside = !inside
        else if (c == ":" && !inside && substr(text, i + 1, 1) == " ") return i
    }
    return 0
}

function tagged(tag, text) {
    put(".TP")
    put(guarded(styled(tag)))
    fill(text)
}

# What has been gathered, when its last line is known.
function flush(    at) {
    if (kind == "item" && (at = end_of_tag(held)) > 0) {
        tagged(substr(held, 1, at - 1), substr(held, at + 2))
    } else if (kind == "item") {
        put(".IP \\(bu 2")
        fill(held)
    } else if (kind == "text") {
        if (!fresh) put(".PP")
        fill(held)
    } else if (kind == "table") {
        write_table()
    }
    if (kind != "") fresh = 0
    kind = held = ""
}

function cells(row, to,    n, i) {
    sub(/^\| */, "", row)
    sub(/ *\| *$/, "", row)
    n = split(row, to, / *\| */)
    return n
}

# Short cells make their column as wide as they are, long ones are filled.
function write_row(cell, count, is_head,    j, text, line) {
    for (j = 1; j <= count; j++) {
        text = is_head && cell[j] != "" ? "**" cell[j] "**" : cell[j]
        if (length(text) <= (j <= 2 ? 34 : 16)) {
            line = line styled(text)
        } else {
            put(line "T{")
            fill(text)
            line = "T}"
        }
        line = line (j < count ? "\t" : "")
    }
    put(line)
}

# Two columns are a list of what stands in the first, more are a table.
function write_table(    i, count, cell, format) {
    count = cells(rows[1], cell)
    if (count == 2) {
        for (i = 3; i <= n_rows; i++) {
            cells(rows[i], cell)
            tagged(cell[1], cell[2])
        }
        return
    }
    put(".TS")
    put("allbox;")
    for (i = 1; i <= count; i++) format = format (i == 1 ? "" : " ") (i > 2 || i == count ? "lx" : "l")
    put(format ".")
    for (i = 1; i <= n_rows; i++) {
        if (i == 2) continue # the line below the heads
        cells(rows[i], cell)
        write_row(cell, count, i == 1)
    }
    put(".TE")
}

function begin_page(line,    names, i, n, section, summary) {
    if (file != "") close(file)
    match(line, /\([0-9]\): /)
    section = substr(line, RSTART + 1, 1)
    summary = substr(line, RSTART + 5)
    n = split(substr(line, 3, RSTART - 3), names, ", ")
    for (i = 2; i <= n; i++) {
        file = folder "/man" section "/" names[i] "." section
        put(".so man" section "/" names[1] "." section)
        close(file)
    }
    file = folder "/man" section "/" names[1] "." section
    put("'\\\" t")
    put(".TH " toupper(names[1]) " " section " " date " \"" version "\" \"" title[section] "\"")
    put(".nh")
    put(".ad l")
    put(".SH NAME")
    sub(/\.$/, "", summary)
    if (summary !~ /^[A-Z][A-Z]/) summary = tolower(substr(summary, 1, 1)) substr(summary, 2) # but for FIB, VSAN
    fill_styled(substr(line, 3, RSTART - 3) " \\- " styled(summary))
    is_new = 1
}

function begin_code() {
    flush()
    if (in_synopsis) {
        put(".nf")
    } else {
        if (!fresh) put(".PP")
        put(".RS 4")
        put(".EX")
    }
    in_code = 1
}

function end_code() {
    put(in_synopsis ? ".fi" : ".EE")
    if (!in_synopsis) put(".RE")
    in_code = fresh = 0
}

/^```/ { if (in_code) end_code(); else begin_code(); next }
in_code {
    if (/^$/ && in_synopsis) put(".sp")
    else if (in_synopsis) put(guarded("\\fB" escaped($0, 1) "\\fR"))
    else put(guarded(escaped($0, 1)))
    next
}
/^<!--.*-->$/ { next }
/^# / {
    flush()
    begin_page(page == "" ? $0 : "# " page ": " substr($0, 3))
    next
}
/^## / {
    flush()
    in_synopsis = $0 == "## Synopsis"
    put(".SH " escaped(toupper(substr($0, 4))))
    is_new = 0
    fresh = 1
    next
}
/^### / {
    flush()
    put(".SS " styled(substr($0, 5)))
    fresh = 1
    next
}
/^$/ { flush(); next }
{
    if (is_new) { # a document begins without a heading
        put(".SH DESCRIPTION")
        is_new = 0
        fresh = 1
    }
}
/^\|/ {
    if (kind != "table") {
        flush()
        kind = "table"
        n_rows = 0
    }
    rows[++n_rows] = $0
    next
}
/^ ?- / {
    flush()
    kind = "item"
    sub(/^ ?- /, "")
    held = $0
    next
}
{
    if (kind == "") kind = "text"
    sub(/^ +/, "")
    held = held (held == "" ? "" : " ") $0
}
END {
    flush()
    if (see == "") exit
    put(".SH SEE ALSO")
    fill(see)
}
