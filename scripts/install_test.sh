#!/usr/bin/env bash
# Installing below an empty prefix and below one in use: uninstalling leaves what was there before.
. "$(dirname "$0")/expect.inc"

everything() { (cd "$1" && find . | LC_ALL=C sort); }

mkdir -p "$scratch_folder/used/lib"
echo theirs >"$scratch_folder/used/lib/theirs"
for prefix in "$scratch_folder/new/deep" "$scratch_folder/used"; do
    before=$(everything "$scratch_folder")
    expect_run 0 "*command    $prefix/bin/ribkit*export PKG_CONFIG_PATH=$prefix/lib/pkgconfig*" install "$prefix"
    [[ $("$prefix/bin/ribkit" text rib_uuid 12) == "12  fspf" ]] || fail "the installed command does not run"
    first=$(everything "$prefix")
    touch "$prefix/include/ribkit/kept.h"
    echo "$prefix/include/ribkit/old.h" >>"$prefix/share/ribkit/installed" # of an earlier version
    touch "$prefix/include/ribkit/old.h"
    expect_run 0 "*" install "$prefix"
    [[ $(everything "$prefix") == "$(LC_ALL=C sort <<<"$first"$'\n'./include/ribkit/kept.h)" ]] ||
        fail "installing twice is not installing once"
    rm "$prefix/include/ribkit/kept.h"
    expect_run 0 "run: removed from $prefix" uninstall "$prefix"
    rmdir "$prefix/include/ribkit" "$prefix/include" 2>/dev/null && fail "folders of ours are left"
    [[ $(everything "$scratch_folder") == "$before" ]] || fail "left below $prefix: $(everything "$prefix")"
done
expect_run 2 "run: nothing was installed below *" uninstall "$scratch_folder/used"
