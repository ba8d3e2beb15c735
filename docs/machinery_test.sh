#!/usr/bin/env bash
# Does the test of the documents notice? Blocks that are right pass, and each that is wrong is named by its line.
# usage: machinery_test.sh SOURCE BUILD SCRATCH
set -euo pipefail
source=$1 build=$2 scratch=$3
rm -rf "$scratch"
mkdir -p "$scratch"
document=$scratch/document.md

# judge: the document on standard input; what the test says of it is then in `said`, how it ends in `status`.
judge() {
    cat >"$document"
    status=0
    said=$("$(dirname "$0")/documents_test.sh" "$document" "$source" "$build" "$scratch/run" 2>&1) || status=$?
}

fail() {
    echo "$1; the test says: $said" >&2
    exit 1
}

judge <<'END'
Right: `ribkit lab --trace` and `ribkit text`.

```sh
test -f examples/fabrics/small.toml
touch /tmp/here-only
```
<!-- not run: it would end everything -->
```sh
exit 1
```
<!-- varies: seconds -->
```console
$ printf 'one\ntwo\nthree\n12:00:00 up for 5 seconds\nfour\n' | tee kept
one
...
three
23:59:59 up for   7.5 seconds
...
$ false || cat nosuch
cat: nosuch: No such file or directory
$ test -f kept
```
<!-- file: one.toml -->
```toml
local = "a"
[[vsan]]
id = 1
[[switch]]
name = "a"
domain = 1
```
```sh
ribkit lab one.toml; test -f PREFIX/include/ribkit/rib_codec.h
```
```toml
[rib]
positions = 64
```
```c
char text[RIB_TEXT_SIZE];
rib_uuid_to_str(12, text);
```
<!-- stays: a process that writes once it is let -->
```sh
{ until test -e let; do sleep 0.05; done; touch /tmp/written; } &
```
```sh
touch let
until test -e /tmp/written; do sleep 0.05; done
```
<!-- from: exports.txt -->
```text
rib_uuid_to_str
```
END
[[ ! -e /tmp/here-only ]] || fail "a block writes into /tmp itself"
[[ $status == 0 && $said == *"not run: it would end everything"* && $said == *"10 blocks, 0 wrong" ]] ||
    fail "a right document is wrong"

# wrong WHAT: the document on standard input has one mistake, in line 2, of which WHAT is said.
wrong() {
    judge
    [[ $status == 1 && $said == *"document.md:2: "*"$1"*", 1 wrong" ]] || fail "not noticed: $1"
}
wrong "ends with 1" <<<$'\n```sh\nfalse\ntrue\n```'
wrong "these lines are shown" <<<$'\n```console\n$ echo 1\n2\n```'
wrong "these lines are shown" <<<$'\n```console\n$ printf "1\\n2\\n3\\n"\n1\n3\n```'
wrong "these lines are shown" <<<$'\n```console\n$ printf "1\\n2\\n"\n...\n1\n```'
wrong "is printed and not shown" <<<$'\n```console\n$ printf "1\\n2\\n"\n1\n```'
wrong "ends with 1" <<<$'\n```console\n$ false\n```'
wrong "shows no command" <<<$'\n```console\nfalse\n```'
wrong "is no fabric file" <<<$'\n```toml\nlocal = 1\n```'
wrong "does not compile" <<<$'\n```c\nnosuch();\n```'
wrong "does not compile" <<<$'\n```cpp\nstd::nosuch();\n```'
wrong "does not build" <<<$'\n```cmake\nfind_package(ribkit REQUIRED nosuch)\ntarget_link_libraries(program nosuch::nosuch)\n```'
wrong "a block is one of" <<<$'\n```shell\nribkit\n```'
wrong "has commands" <<<$'\n```text\nribkit lab\n```'
wrong "does not say what it is" <<<$'\n```\n8 routes\n```'
wrong "does not say what it is" <<<$'\n``` \n8 routes\n```'
wrong "has no --nosuch" <<<$'\nSee `ribkit lab --nosuch`.'
wrong "there is no ribkit nosuch" <<<$'\nSee `ribkit nosuch`.'
wrong "there is no ./run nosuch" <<<$'\nSee `./run nosuch 3`.'
judge <<<$'\n```sh\ntrue'
[[ $status != 0 && $said == *"does not end"* ]] || fail "an open block is not noticed"
