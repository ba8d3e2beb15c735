#!/usr/bin/env bash
# What Debian's packages say of each library's names is what it exports: debian/NAME.symbols has each with the version that
# brought it. RIBKIT_REFRESH_GOLDEN=1 writes down what is new, with the version as it is now, and leaves out what has gone.
# usage: symbols_test.sh SOURCES VERSION LIBRARY...
set -euo pipefail
sources=$1 version=$2
shift 2

# The kept file's first lines, and the names in its order; a version is a name of itself.
symbols_of() {
    sed '/^ /,$d' "$2"
    nm -D --defined-only "$1" | sed -En 's/.* A ([^ @]*)(@.*)?$/\1@\1/p; t; s/.* ([^ @]*@)@*([^ @]*)$/\1\2/p' | LC_ALL=C sort |
        awk -v new="$version~" 'NR == FNR { if (/^ /) since[$1] = $2; next } { print " " $1, ($1 in since ? since[$1] : new) }' "$2" -
}

failed=0
for library; do
    name=$(basename "$library")
    kept=$sources/debian/${name%.so*}0.symbols
    now=$(symbols_of "$library" "$kept")
    if [[ ${RIBKIT_REFRESH_GOLDEN-} ]]; then
        echo "$now" >"$kept"
    else
        diff <(echo "$now") "$kept" || { echo "${kept#"$sources/"}: not what is exported; ./run golden writes it"; failed=1; }
    fi
done
exit "$failed"
