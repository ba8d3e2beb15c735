# Do the tests notice? Mutants of the core folders.

core_folders=(codec mem diag wrap snmp)

# mutate [FOLDER...]: 200 mutants of each, always the same; fails when one survives.
mutate() {
    local folder failed=0 folders=("$@")
    for folder; do
        [[ " ${core_folders[*]} " == *" $folder "* ]] || refuse "mutate: '$folder' is no core folder: ${core_folders[*]}"
    done
    (($#)) || folders=("${core_folders[@]}")
    need "mutation" "${test_packages[@]}" python3
    for folder in "${folders[@]}"; do
        mutate_folder "$folder" --count 200 --seed 1 || failed=1
        tail -n 1 "build/mutate/$folder.log"
    done
    return "$failed"
}

# mutate_folder FOLDER OPTION...: prints what survived.
mutate_folder() {
    local folder=$1 log=build/mutate/$1.log program=(fuzz/mutate_code "$1")
    shift
    [[ $folder != codec ]] || program=(fuzz/mutate)
    mkdir -p build/mutate
    echo "run: mutants of $folder, log $log" >&2
    attend "mutants of $folder" "$log" "${program[@]}" "$@" && return
    sed -nE 's:^\[[0-9/]+\] (SURVIVED\: ):\1:p' "$log" | grep . || tail -n 5 "$log"
    echo "again: ${program[*]} $*" >&2
    return 1
}
