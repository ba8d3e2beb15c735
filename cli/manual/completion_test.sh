#!/usr/bin/env bash
# What a shell completes when somebody types, in each shell that is there. usage: completion_test.sh RIBKIT EXAMPLES
# Without RIBKIT, '', it is the installed one, and each shell has to find what it needs by itself.
set -euo pipefail
ribkit=$1 examples=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export PATH=$scratch/bin:$PATH HOME=$scratch TERM=dumb
mkdir -p "$scratch/bin" "$scratch/home/fabrics"
[[ ! $ribkit ]] || ln -s "$ribkit" "$scratch/bin/ribkit"
cp "$examples/fabrics/small.toml" "$examples/faults/rough.faults" "$examples/messages/fcu.hex" "$scratch/home"
cd "$scratch/home"
failures=0

# Some shells give the option again, or end a folder's name.
alike() { sed -e 's/^--[a-z]*=//' -e 's:\([^/]\)/$:\1:' | LC_ALL=C sort | tr '\n' ' '; }

# expect SHELL LINE WORD...: in any order, when the tab key is hit behind LINE.
expect() {
    local shell=$1 line=$2 shown wanted
    shift 2
    shown=$("complete_in_$shell" "$line" | alike)
    wanted=$(printf '%s\n' "$@" | alike)
    [[ $shown == "$wanted" ]] || { echo "$shell: '$line' becomes $shown and not $wanted" >&2; failures=$((failures + 1)); }
}

# As bash calls a function: the line, and its words, which it parts at = and : too.
in_bash='eval "$(ribkit completion bash)"'
[[ $ribkit ]] || in_bash='. /usr/share/bash-completion/bash_completion; _completion_loader ribkit || (($? == 124))'
complete_in_bash() {
    bash --norc -c "$in_bash"'
        COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDBREAKS=$'"' \\t\\n\"\\'><=;|&(:'"'
        _ribkit ribkit "" ""
        printf "%s\n" "${COMPREPLY[@]}"' bash "$1"
}

# A terminal in which keys are pressed; words are noted where the shell takes them.
in_zsh='eval "$(ribkit completion zsh)"'
[[ $ribkit ]] || in_zsh=
complete_in_zsh() {
    : >"$scratch/answers"
    cat >"$scratch/begin.zsh" <<END
PROMPT=is-ready # the editor says it
autoload -Uz compinit
compinit -u -D
$in_zsh
END
    cat >>"$scratch/begin.zsh" <<'END'
compadd() {
    local -a taken
    if [[ ${@[1,(i)(-|--)]} != *-(O|A|D)\ * ]]; then
        builtin compadd -A taken "$@"
        (( $#taken )) && print -rl -- $taken >>$HOME/answers
    fi
    builtin compadd "$@"
}
END
    echo 'print is-done' >"$scratch/end.zsh"
    cat >"$scratch/press.zsh" <<'END'
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell "source $HOME/begin.zsh"
zpty -r -m shell seen '*is-ready*'
zpty -w -n shell "$1"$'\t'
zpty -w shell $'\x15'"source $HOME/end.zsh"
zpty -r -m shell seen '*is-done*'
END
    timeout 60 zsh -f "$scratch/press.zsh" "$1" >/dev/null
    sed '/^$/d' "$scratch/answers"
}

in_fish=(fish --no-config -c 'ribkit completion fish | source; complete -C $argv[1]')
[[ $ribkit ]] || in_fish=(fish -c 'complete -C $argv[1]')
complete_in_fish() { "${in_fish[@]}" "$1" | cut -f1; }

shells=(bash)
for shell in zsh fish; do
    if command -v "$shell" >/dev/null; then shells+=("$shell"); else echo "not tried: $shell is missing (Debian: $shell)"; fi
done
for shell in "${shells[@]}"; do
    expect "$shell" "ribkit mo" module monitor
    expect "$shell" "ribkit lab --re" --real-time
    expect "$shell" "ribkit lab --role m" mcast
    expect "$shell" "ribkit lab small.toml --local core" core-1 core-2
    expect "$shell" "ribkit decode rib_fclrt_i" rib_fclrt_info rib_fclrt_intf
    expect "$shell" "ribkit show sync_" sync_fcl sync_fcm sync_fcu sync_gbl
    expect "$shell" "ribkit text rib_uuid fs" fspf
    expect "$shell" "ribkit completion " bash zsh fish words
    expect "$shell" "ribkit routes --bus=un" unix:
    expect "$shell" "ribkit routes --bus nat" nats://
    expect "$shell" "ribkit lab " small.toml fabrics
    expect "$shell" "ribkit lab --faults r" rough.faults
    expect "$shell" "ribkit show fcu fc" fcu.hex
    expect "$shell" "ribkit status --json=s" small.toml
done
[[ $ribkit || ${#shells[@]} == 3 ]] || failures=$((failures + 1))
echo "${shells[*]}: $failures wrong"
((failures == 0))
