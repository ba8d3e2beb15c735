# The pages of the C headers, as Markdown that man.awk reads: one for each docstring, with the functions that have it and
# those that only say "Network to host: see" the first, and one for each header, with its constants and types.
# usage: awk -f headers.awk library=LIBRARY HEADER... library=LIBRARY HEADER...
function base_name(path) { sub(/^.*\//, "", path); return path }

FNR == 1 {
    header = base_name(FILENAME)
    headers[++n_headers] = header
    library_of[header] = library
    depth = in_comment = in_code = 0
    comment = shared = section = ""
}

# Guards, and what only compilers look at.
/^#if/ { depth++; next }
/^#endif/ { depth--; next }
depth > 1 || /^#include/ || /^extern "C"/ { next }
/^#define [A-Z_]+_H$/ { next }

# A comment, without what frames it.
!in_comment && !in_code && /^\/\*/ {
    in_comment = 1
    is_docstring = /^\/\*\*/
    comment = ""
    raw = ""
}
in_comment {
    raw = raw $0 "\n"
    ended = /\*\/$/
    line = $0
    sub(/^ ?\/?\*+( |$)/, "", line)
    sub(/ ?\*+\/$/, "", line)
    if (!(ended && line ~ /^ *$/)) comment = comment line "\n"
    if (ended) in_comment = 0
    shared = 0
    next
}
/^$/ {
    if (in_code) { declared[header] = declared[header] "\n"; if (!open) in_code = 0 }
    if (comment != "" && comment ~ /^@file/) about[header] = substr(comment, 7)
    else if (comment != "" && comment ~ /^--- /) section = ""
    else if (comment != "") section = comment
    comment = ""
    shared = 0
    next
}
# A function: to its semicolon.
!in_code && (prototype != "" || /^[a-zA-Z_].*[ *][a-zA-Z_0-9]+\(/) && !/^(typedef|#)/ {
    line = $0
    sub(/ RIB_PRINTF\([^)]*\)/, "", line)
    prototype = prototype (prototype == "" ? "" : "\n") line
    if (line ~ /;$/) {
        take_function(prototype)
        prototype = ""
    }
    next
}
# Constants and types, as they stand there.
{
    if (comment ~ /^@file/) { about[header] = substr(comment, 7); comment = "" }
    if (comment != "") declared[header] = declared[header] raw
    comment = ""
    declared[header] = declared[header] $0 "\n"
    in_code = 1
    if (/\{$/) open = 1
    if (/^\}/) open = 0
}

function take_function(text,    name, first) {
    name = text
    sub(/\(.*$/, "", name)
    sub(/^.*[ *]/, "", name)
    if (comment ~ /^Network to host: see [a-z_0-9]+\./) {
        first = substr(comment, 22)
        sub(/\..*$/, "", first)
        shared = page_of[first]
        sub(/^[^.]*\. */, "`" name "` converts from network to host form. ", comment)
        counterpart[shared] = counterpart[shared] "\n" described(comment)
    } else if (comment != "") {
        shared = ++n_pages
        doc[shared] = comment
        home[shared] = header
        around[shared] = section
    } else if (!shared) {
        print FILENAME ":" FNR ": " name " has no docstring" > "/dev/stderr"
        failed = 1
        exit
    }
    comment = ""
    page_of[name] = shared
    names[shared] = names[shared] (names[shared] == "" ? "" : ", ") name
    prototypes[shared] = prototypes[shared] text "\n"
}

# Up to the first tag, sentence or clause.
function summary_of(text) {
    if (text ~ /^[ \n]*@/) sub(/^(.|\n)*@return /, "returns ", text)
    sub(/^[ \n]+/, "", text)
    sub(/@(param|return) (.|\n)*$/, "", text)
    gsub(/\n/, " ", text)
    if (match(text, /[.;:] |[.;:]$|: *$/)) text = substr(text, 1, RSTART - 1)
    sub(/ +$/, "", text)
    return text
}

# Text with lists and drawn tables: what is indented stands as it is.
function paragraphs(text,    lines, n, i, out, drawn, in_list) {
    n = split(text, lines, "\n")
    for (i = 1; i <= n; i++) {
        if (lines[i] ~ /^ ?- /) in_list = 1
        else if (lines[i] ~ /^[^ ]/ || (lines[i] == "" && lines[i + 1] !~ /^ ?(- |  )/)) in_list = 0
        if (!drawn && !in_list && lines[i] ~ /^  /) {
            out = out "\n```text\n"
            drawn = 1
        } else if (drawn && lines[i] !~ /^ / && !(lines[i] == "" && lines[i + 1] ~ /^  /)) {
            out = out "```\n"
            drawn = 0
        }
        out = out lines[i] "\n"
    }
    return out (drawn ? "```\n" : "")
}

# What stands behind "@param" and "@return", wherever on a line.
function tags(text,    at, what, name, parameters, returned) {
    while (match(text, /@(param|return) /)) {
        at = RSTART + RLENGTH
        what = substr(text, RSTART, RLENGTH)
        text = substr(text, at)
        match(text, /@(param|return) /)
        at = RSTART ? RSTART - 1 : length(text)
        name = substr(text, 1, at)
        text = substr(text, at + 1)
        if (what == "@param ") {
            match(name, /[^a-zA-Z_0-9]/)
            parameters = parameters "- `" substr(name, 1, RSTART - 1) "`: " unindented(substr(name, RSTART + 1)) "\n"
        } else {
            returned = returned "\n" unindented(name)
        }
    }
    return (parameters == "" ? "" : "\n## Parameters\n\n" parameters) \
        (returned == "" ? "" : "\n## Return value\n" returned)
}

function unindented(text) {
    gsub(/\n +- /, "\n- ", text)
    gsub(/\n  +/, "\n", text)
    sub(/[ \n]+$/, "", text)
    return text
}

function described(text) {
    sub(/@(param|return) (.|\n)*$/, "", text)
    return text
}

# Other functions that the text names.
function see_also(page, text,    word, seen, out) {
    while (match(text, /[a-z_]+_[a-zA-Z_0-9]+/)) {
        word = substr(text, RSTART, RLENGTH)
        text = substr(text, RSTART + RLENGTH)
        if (word in page_of && page_of[word] != page && !(word in seen)) out = out ", `" word "`(3)"
        seen[word] = 1
    }
    return out
}

function linking(header) {
    return "`" library_of[header] "` (`cc program.c $(pkg-config --cflags --libs " library_of[header] ")`)"
}

function write_function_page(p,    h, text) {
    h = home[p]
    print "# " names[p] "(3): " summary_of(doc[p])
    print "\n## Library\n\n" linking(h)
    print "\n## Synopsis\n\n```c\n#include <" h ">\n\n" prototypes[p] "```"
    text = described(doc[p]) counterpart[p]
    if (text !~ /^[ \n]*$/) print "\n## Description\n\n" paragraphs(text)
    print tags(doc[p])
    if (around[p] != "") print "\n## Context\n\n" paragraphs(around[p])
    print "\n## Notes\n\n" paragraphs(about[h])
    print "\n## See also\n\n`" h "`(3)" see_also(p, doc[p] around[p]) "\n"
}

function write_header_page(h,    p) {
    print "# " h "(3): " summary_of(about[h])
    print "\n## Library\n\n" linking(h)
    print "\n## Synopsis\n\n```c\n#include <" h ">\n```"
    print "\n## Description\n\n" paragraphs(about[h])
    if (h in functions) print "\n## Functions\n\n" functions[h]
    if (h in declared) print "\n## Constants and types\n\n```c\n" declared[h] "```\n"
    print "\n## See also\n\n`ribkit`(1)\n"
}

END {
    if (failed) exit 1
    for (p = 1; p <= n_pages; p++) {
        functions[home[p]] = functions[home[p]] "- `" names[p] "`: " summary_of(doc[p]) "\n"
        write_function_page(p)
    }
    for (h = 1; h <= n_headers; h++) write_header_page(headers[h])
}
