# Takes a document's fenced blocks apart: into FOLDER/LINE.LANGUAGE, and what the comments right in front of it say (their
# "key: value") into FOLDER/LINE.marks. usage: awk -v folder=FOLDER -f blocks.awk DOCUMENT
function begin_block(    mark) {
    language = $0
    gsub(/^ *```|[ \t]+$/, "", language)
    if (language == "") language = "none"
    start = FNR
    file = folder "/" start "." language
    printf "" > file
    printf "%s", marks > (folder "/" start ".marks")
    inside = 1
}

/^ *```/ {
    if (inside) {
        close(file)
        inside = 0
        marks = ""
    } else {
        begin_block()
    }
    next
}

inside { print > file; next }

/^<!-- [a-z ]+: .* -->$/ {
    marks = marks substr($0, 6, length($0) - 9) "\n"
    next
}

{ marks = "" }

END {
    if (inside) {
        print FILENAME ":" start ": this block does not end" > "/dev/stderr"
        exit 1
    }
}
