#!/usr/bin/env bash
# What a shared library of ours offers to programs, as abidw describes it: its name, its versioned symbols, their types.
# Types are those of the public headers, which the library itself is compiled with: a stub of each exported function is
# compiled with debugging information, so that nothing else has to be. usage: describe_interface.sh HEADERS LIBRARY
set -euo pipefail
headers=$(realpath "$1") library=$(realpath "$2")
for tool in abidw gcc; do
    command -v "$tool" >/dev/null || { echo "there is no $tool: apt-get install abigail-tools gcc" >&2; exit 1; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Symbols with their version, one a line: NAME VERSION.
offered() {
    readelf --dyn-syms -W "$library" |
        awk -v type="$1" '$7 ~ /^[0-9]+$/ && $4 == type && split($8, s, "@@") == 2 { print s[1], s[2] }' | sort
}
offered FUNC >"$work/symbols"
offered OBJECT >"$work/variables"
[[ -s $work/symbols ]] || { echo "$library offers nothing" >&2; exit 1; }

cd "$work"
for header in "$headers"/*.h; do
    printf '#include "%s"\n' "${header##*/}"
done >all.c
gcc -std=c11 -I"$headers" -aux-info prototypes -fsyntax-only all.c
# "/* qip.h:12:NC */ extern int f (int);" -> "f extern int f (int)"
sed -nE 's:^/\* .*\:NC \*/ (extern .*[ *]([a-z][A-Za-z0-9_]*) \(.*\));$:\2 \1:p' prototypes | sort -u >declared
{
    cat all.c
    join -o 2.2 symbols <(awk '{ n = $1; $1 = ""; sub(/^ /, ""); gsub(/ /, "\001"); print n, $0 }' declared) |
        tr '\001' ' ' | sed -E 's/^extern (.*)$/\1 { __builtin_trap(); }/'
    sed -E 's/^([^ ]*) .*/__typeof__(\1) \1 = {0};/' variables
} >stubs.c
undeclared=$(join -v 1 -o 1.1 symbols declared)
[[ ! $undeclared ]] || { echo "no public header declares" $undeclared >&2; exit 1; }
version=$(awk '{ print $2 }' symbols | sort -u)
printf '%s { global: *; };\n' "$version" >map
soname=$(readelf -dW "$library" | sed -nE 's/.*\(SONAME\).*\[(.*)\]$/\1/p')
gcc -std=c11 -w -g -fPIC -shared -I"$headers" -Wl,--version-script=map -Wl,-soname,"$soname" stubs.c -o "$soname"
abidw --no-comp-dir-path --no-show-locs --no-corpus-path --no-parameter-names --drop-undefined-syms "$soname"
