#!/usr/bin/env bash
# What a document shows is what happens: its blocks are run, compared and compiled in a scratch copy, one by one.
# docs/testing.md says how a block is written. usage: documents_test.sh DOCUMENT SOURCE BUILD SCRATCH
set -euo pipefail
document=$1 source=$2 build=$3 scratch=$4
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$scratch"
mkdir -p "$scratch/blocks" "$scratch/tree" "$scratch/bin"
cp -r "$source/examples" "$scratch/tree"
ln -s "$build/cli/ribkit" "$scratch/bin/ribkit"
export PATH=$scratch/bin:$PATH:/usr/sbin
# There ./run lab runs the command that is built already.
printf '#!/bin/sh\n[ "$1" = lab ] && shift && RIBKIT_FABRIC=examples/fabrics/small.toml exec ribkit lab "$@"\nexit 2\n' \
    >"$scratch/tree/run"
chmod +x "$scratch/tree/run"
cd "$scratch/tree"
temporary=$(mktemp -d)
end() {
    [[ ! -f $scratch/stays ]] || xargs kill <"$scratch/stays" 2>/dev/null || true
    rm -rf "$temporary"
}
trap end EXIT

# fail WHAT: with the place in the document.
fail() {
    echo "${document#"$source"/}:$line: $1" >&2
    failures=$((failures + 1))
}

# The installed files, made when a block asks for them.
prefix=$scratch/prefix
need_prefix() {
    [[ -d $prefix ]] || cmake --install "$build" --prefix "$prefix" >/dev/null
    export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
}

# mark KEY: what the comments in front of the block say of KEY.
mark() { sed -n "s/^$1: //p" "$marks"; }

# A block's commands, ended with all that they started unless that stays; PREFIX and what is in /tmp are this test's own.
commands() {
    ! grep -q PREFIX "$1" || need_prefix
    {
        if [[ $(mark stays) ]]; then
            echo "trap 'jobs -p >>\"$scratch/stays\"' EXIT"
        else
            echo 'trap "kill \$(jobs -p) 2>/dev/null || true" EXIT'
        fi
        sed -e "s:/tmp/:$temporary/:g" -e "s:\bPREFIX\b:$prefix:g" "$1"
    } >"$scratch/commands"
    timeout 120 bash -eo pipefail "$scratch/commands" </dev/null
}

run_sh() {
    local output=$scratch/output
    [[ ! $(mark stays) ]] || output=$scratch/stays.$line # what stays goes on to write
    commands "$1" >"$output" 2>&1 || fail "ends with $?: $(cat "$output")"
}

# Each "$ COMMAND" and what it prints, on standard error too, up to the next.
run_console() {
    local shown=$scratch/shown command status text
    grep -q '^\$ ' "$1" || fail "shows no command"
    awk -v stem="$scratch/step" '/^\$ / { n++; print substr($0, 3) > (stem n ".sh"); printf "" > (stem n ".shown"); next }
        n { print > (stem n ".shown") }' "$1"
    for command in "$scratch"/step*.sh; do
        status=0
        commands "$command" >"$scratch/output" 2>&1 || status=$?
        shown=${command%.sh}.shown
        if [[ -s $shown ]]; then
            awk -v varies="$(mark varies)" -f "$here/compare.awk" "$shown" "$scratch/output" 2>"$scratch/difference" ||
                fail "$(cat "$command"): $(cat "$scratch/difference")"
        elif ((status != 0)); then
            fail "$(cat "$command"): ends with $status: $(cat "$scratch/output")"
        fi
    done
    rm -f "$scratch"/step*
}

# A fabric file, or tables that the sample gets in addition; kept under the name that its mark gives it.
run_toml() {
    local file
    file=$(mark file)
    { grep -q '^local' "$1" || cat examples/fabrics/small.toml; cat "$1"; } >"${file:=fabric.toml}"
    ribkit lab "$file" >"$scratch/output" 2>&1 || fail "is no fabric file: $(cat "$scratch/output")"
}

# Statements as they stand in a function, with all headers, or a whole program.
compile() {
    local compiler=$1 suffix=$2 file=$scratch/snippet$2 header
    need_prefix
    if grep -q 'main(' "$3"; then
        cp "$3" "$file"
    else
        {
            for header in stdio.h stdlib.h string.h errno.h $(cd "$prefix/include/ribkit" && ls -- *.h); do
                echo "#include <$header>"
            done
            echo 'int main(void) {'
            cat "$3"
            echo 'return 0; }'
        } >"$file"
    fi
    # shellcheck disable=SC2046
    $compiler -Wall -Werror "$file" $(pkg-config --cflags --libs ribkit-platform) -o "$scratch/snippet" \
        >"$scratch/output" 2>&1 || fail "does not compile: $(cat "$scratch/output")"
}
run_c() { compile "${CC:-cc} -std=c11" .c "$1"; }
run_cpp() { compile "${CXX:-c++} -std=c++20" .cpp "$1"; }

# What a project's CMakeLists.txt says of its target, called program.
run_cmake() {
    local project=$scratch/project
    need_prefix
    mkdir -p "$project"
    {
        printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(program LANGUAGES C CXX)' \
            "add_executable(program $source/examples/send_route.c)"
        cat "$1"
    } >"$project/CMakeLists.txt"
    { cmake -G Ninja -S "$project" -B "$project/build" -DCMAKE_PREFIX_PATH="$prefix" && cmake --build "$project/build"; } \
        >"$scratch/output" 2>&1 || fail "does not build: $(cat "$scratch/output")"
}

# A drawing is compared with what it draws elsewhere; here it says of what kind it is.
run_mermaid() { head -1 "$1" | grep -qE '^(flowchart|sequenceDiagram|stateDiagram)' || fail "is no drawing"; }

# An excerpt stands in its file, but for the layout of its lines.
run_excerpt() {
    awk '{ gsub(/[ \t]/, "") } NR == FNR { part = part $0; next } { whole = whole $0 } END { exit index(whole, part) == 0 }' \
        "$1" "$source/$2" || fail "does not stand in $2 like this"
}

run_block() {
    local language=$2
    if [[ $language == none ]]; then
        fail "does not say what it is"
    elif [[ $language != text ]] && ! declare -F "run_$language" >/dev/null; then
        fail "a block is one of sh, console, toml, c, cpp, cmake, mermaid, text, not '$language'"
    elif [[ $(mark "not run") ]]; then
        echo "$line: not run: $(mark "not run")"
    elif [[ $(mark from) ]]; then
        run_excerpt "$1" "$(mark from)"
    elif [[ $language != text ]]; then
        "run_$language" "$1"
    elif grep -qE '^(\$|\./run|ribkit|[a-z]+ --?[a-z]) ' "$1"; then
        fail "has commands: a block of them is sh or console"
    fi
}

# Commands and options that a sentence names are there.
check_sentences() {
    local line span command option
    while IFS=: read -r line span; do
        if [[ $span =~ ^\./run\ ([a-z]+) ]]; then
            grep -q "^  ${BASH_REMATCH[1]} " <<<"$("$source/run" --help)" || fail "there is no $span"
        fi
        [[ $span =~ ^ribkit\ ([a-z]+) ]] || continue
        command=${BASH_REMATCH[1]}
        ribkit --help | grep -E "^ +$command " >/dev/null || { fail "there is no ribkit $command"; continue; }
        ribkit "$command" --help >"$scratch/help"
        for option in $(grep -oE -- '--[a-z-]+' <<<"${span%%|*}" || true); do
            grep -qE -- "$option([^a-z-]|\$)" "$scratch/help" || fail "ribkit $command has no $option"
        done
    done < <(awk '/^ *```/ { inside = !inside } !inside { n = split($0, part, "`"); for (i = 2; i <= n; i += 2) print FNR ":" part[i] }' \
        "$document")
}

failures=0
awk -v folder="$scratch/blocks" -f "$here/blocks.awk" "$document"
mapfile -t blocks < <(find "$scratch/blocks" -name '*.marks' -printf '%f\n' | sort -n)
for marks in "${blocks[@]}"; do
    line=${marks%.marks}
    marks=$scratch/blocks/$marks
    block=$(find "$scratch/blocks" -name "$line.*" ! -name '*.marks')
    run_block "$block" "${block##*.}"
done
check_sentences
echo "${#blocks[@]} blocks, $failures wrong"
((failures == 0))
