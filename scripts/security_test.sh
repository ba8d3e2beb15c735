#!/usr/bin/env bash
# SECURITY.md names tests that are there. usage: security_test.sh SOURCES
set -euo pipefail
cd "$1"
failed=0
mapfile -t named < <(grep '^|' SECURITY.md | grep -oE '`[a-z_]+\.[a-z_]{2,}`' | tr -d '`')
((${#named[@]} > 20)) || { echo "SECURITY.md names ${#named[@]} tests only"; exit 1; }
for test in "${named[@]}"; do
    grep -rqE "^TEST(_F|_P)?\(${test%.*}, ${test#*.}\)" --include='*_test.cpp' --exclude-dir=build . ||
        { echo "SECURITY.md: there is no test $test"; failed=1; }
done
exit "$failed"
