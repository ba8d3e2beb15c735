// Each shell's part is to ask the command for words, to add files where the first line says so, and to put the word
// that was chosen in the place of what was typed.
#include "cli/manual/completion.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ribkit::cli {

namespace {

constexpr const char *for_bash = R"script(# Completes the words of ribkit in bash.
_ribkit() {
    local words lines word cut endings file
    # As they were typed: bash parts words at = and : as well.
    read -a words <<<"${COMP_LINE:0:COMP_POINT}"
    [[ ${COMP_LINE:0:COMP_POINT} != *[[:blank:]] ]] || words+=("")
    mapfile -t lines < <("${1/#\~/$HOME}" completion words -- "${words[@]:1}" 2>/dev/null)
    word=${words[${#words[@]}-1]}
    cut=${word%"${word##*[=:]}"} # what bash leaves as it is
    [[ $COMP_WORDBREAKS == *[=:]* ]] || cut=
    COMPREPLY=()
    endings=${lines[0]-}
    for file in "${lines[@]:1}"; do
        file=${file%%$'\t'*}
        COMPREPLY+=("$(printf '%q' "${file#"$cut"}")")
    done
    if [[ $endings ]]; then
        compopt -o filenames 2>/dev/null
        [[ $word != --*=* ]] || word=${word#*=}
        while read -r file; do
            [[ $endings == '*' || -d $file || " $endings " == *" .${file##*.} "* ]] && COMPREPLY+=("$file")
        done < <(compgen -f -- "$word")
    elif ((${#COMPREPLY[@]} == 1)) && [[ ${COMPREPLY[0]} == *[:/=] ]]; then
        compopt -o nospace 2>/dev/null
    fi
}
complete -F _ribkit ribkit
)script";

constexpr const char *for_zsh = R"script(#compdef ribkit
# Completes the words of ribkit in zsh.
_ribkit() {
    local -a lines values given kinds
    local line endings prefix
    given=("${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}")
    lines=("${(@f)$(${(Q)words[1]} completion words -- "${given[@]}" 2>/dev/null)}")
    # The first line may be empty, which the lines have lost then.
    [[ ${lines[1]} == *$'\t'* ]] || { endings=${lines[1]}; shift lines }
    [[ ${given[-1]} == --*=* ]] && prefix=${given[-1]%%=*}= && compset -P 1 '*='
    for line in "${lines[@]}"; do
        [[ -n $line ]] || continue
        line=${line#$prefix}
        values+=("${${line%%$'\t'*}//:/\\:}:${line#*$'\t'}")
    done
    (( $#values )) && _describe -V 'ribkit' values
    if [[ $endings == '*' ]]; then
        _files
    elif [[ -n $endings ]]; then
        kinds=(${(s: :)endings})
        _files -g "*.(${(j:|:)kinds#.})(-.)"
    fi
}
if [[ $funcstack[1] == _ribkit ]]; then
    _ribkit "$@"
else
    compdef _ribkit ribkit
fi
)script";

constexpr const char *for_fish = R"script(# Completes the words of ribkit in fish.
function __ribkit_complete
    set -l given (commandline -opc)
    set -l typed (commandline -ct)
    set -l lines ($given[1] completion words -- $given[2..-1] "$typed" 2>/dev/null)
    set -l endings $lines[1]
    printf '%s\n' $lines[2..-1]
    test -n "$endings"; or return
    set -l prefix (string match -r -- '^--[^=]*=' $typed)
    set -l begun (string replace -r -- '^--[^=]*=' '' $typed)
    for file in $begun*
        set -l ending .(string split -r -m 1 . -- $file)[-1]
        if test -d $file
            printf '%s%s/\n' "$prefix" $file
        else if test "$endings" = '*'; or contains -- $ending (string split ' ' -- $endings)
            printf '%s%s\n' "$prefix" $file
        end
    end
end
complete -c ribkit -f -a '(__ribkit_complete)'
)script";

struct shell_script {
    std::string_view shell;
    const char *text;
};

constexpr shell_script scripts[] = {{"bash", for_bash}, {"zsh", for_zsh}, {"fish", for_fish}};

} // namespace

std::string completion_script(const std::string &shell) {
    const auto *const found =
        std::find_if(std::begin(scripts), std::end(scripts), [&](const auto &one) { return one.shell == shell; });
    return found == std::end(scripts) ? "" : found->text;
}

} // namespace ribkit::cli
