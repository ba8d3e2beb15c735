# What the library takes on the switch: the figures in docs/size.md, as compiler and linker say them.

size() {
    need "measuring sizes" "${test_packages[@]}"
    build ppc32 -DRIBKIT_TESTS=ON -- size_table
    local figures=build/ppc32/size.txt
    qemu-ppc -L /usr/powerpc-linux-gnu build/ppc32/footprint/size_table >"$figures"
    write_figures docs/size.md "$figures"
    cat "$figures"
}

# write_figures DOCUMENT FIGURES: puts them where the document says that they are made.
write_figures() {
    local document=$1 figures=$2 written
    written=$(awk -v figures="$figures" '
        /^<!-- end of the figures -->$/ { while ((getline line < figures) > 0) print line; skipped = 0 }
        !skipped { print }
        /^<!-- figures that .* -->$/ { skipped = 1 }' "$document")
    printf '%s\n' "$written" >"$document"
}
