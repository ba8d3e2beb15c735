#!/usr/bin/env bash
# What ./run says of its arguments: help is help, and what is wrong is refused in one line before anything is done.
. "$(dirname "$0")/expect.inc"

for help in help -h --help; do
    [[ $("$run" "$help" 2>/dev/null) == "usage: ./run COMMAND"* ]] || fail "./run $help is no help on standard output"
    expect_run 0 "usage: *" test "${help/#help/--help}"
done
expect_run 2 "usage: *"

refused() {
    local wanted=$1
    shift
    expect_run 2 "run: $wanted" "$@"
    [[ $("$run" "$@" 2>&1 | wc -l) == 1 ]] || fail "./run $*: more than a line"
    [[ ! $("$run" "$@" 2>/dev/null) ]] || fail "./run $*: something on standard output"
}
refused "there is no command 'nosuch'; *" nosuch
refused "there is no preset 'nosuch' to test: release asan *" test release nosuch
refused "test all is everything, so 'release' is too much" test all release
refused "test fresh takes 'all' or nothing, not 'release'" test fresh release
refused "fresh takes * too much" test fresh all all
refused "packages takes * too much" test packages a b
refused "there are no packages in *" test packages "$scratch_folder"
refused "there are no packages in *" test packages --made "$scratch_folder"
refused "packages takes * too much" test packages --made "$scratch_folder" a b
refused "package takes a folder, --tarball and --twice, not '--nosuch'" package --nosuch
refused "package takes one folder, so 'b' is too much" package a b
refused "there is no benchmark 'nosuch': codec decode diag mem modules platform rib" bench codec nosuch
refused "nats takes no arguments, so 'extra' is too much" nats extra
refused "golden takes no arguments, *" golden x
refused "attack takes no arguments, *" attack x
refused "chaos takes seeds, which are numbers, not 'x'" chaos 1 x
refused "size takes no arguments, *" size x
refused "format takes no arguments, *" format x
refused "instructions takes --keep or nothing, not 'x'" instructions x
refused "mutate: 'nosuch' is no core folder: codec mem diag wrap snmp" mutate nosuch
refused "coverage: there is no folder 'nosuch'" coverage nosuch
refused "soak takes a number of hours, not 'x'" soak x
refused "soak takes a number of hours, not '0'" soak 0
refused "abi takes --keep or nothing, not 'x'" abi x
refused "fuzz takes a number of seconds, not 'x'" fuzz x
refused "fuzz takes a number of seconds, not '0'" fuzz 0
refused "fuzz takes a number of seconds, not ''" fuzz
refused "fuzz takes 1 argument, so '2' is too much" fuzz 1 2
refused "tidy: there is no file 'nosuch.cpp'" tidy nosuch.cpp
refused "install takes 1 argument, so 'b' is too much" install a b
refused "nothing was installed below $scratch_folder: *" uninstall "$scratch_folder"
