#!/bin/sh
# Every public header compiles alone, without a warning, as C11 and as C++17. usage: headers_test.sh INCLUDE
set -eu
for header in "$1"/*.h; do
    echo "#include \"$header\"" | ${CC:-cc} -std=c11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -x c -
    echo "#include \"$header\"" | ${CXX:-c++} -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -x c++ -
done
