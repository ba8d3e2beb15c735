#!/bin/sh
# Every public header compiles alone, without a warning: C's as C11 and as C++17, those of the C++ interface as C++20.
# usage: headers_test.sh SOURCE
set -eu
compiles() { # LANGUAGE STANDARD HEADER
    case $1 in c) compiler=${CC:-cc} ;; *) compiler=${CXX:-c++} ;; esac
    echo "#include \"$3\"" |
        "$compiler" "-std=$2" -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$source" -x "$1" -
}
source=$1
for header in "$source"/include/*.h; do
    compiles c c11 "$header"
    compiles c++ c++17 "$header"
done
for header in bytes layout size view writer; do
    compiles c++ c++20 "$source/codec/$header.h"
done
for header in "$source"/codec/messages/*.h; do
    compiles c++ c++20 "$header"
done
