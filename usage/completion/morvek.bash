# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Completion for bash: the programs themselves know what may follow.
_morvek()
{
    # The words are taken from the line as the program would get them, but nothing in them is carried out.
    local line=${COMP_LINE:0:COMP_POINT} words=() word='' quote='' begun='' character i
    local kept='' before='' # of the last word: what stands before the part that bash replaces, or before a quote in it
    for ((i = 0; i < ${#line}; ++i)); do
        character=${line:i:1}
        if [[ $character == "$quote" ]]; then
            quote='' kept=$before
        elif [[ $character == \\ && $quote != "'" ]]; then
            i=$((i + 1)) begun=1
            [[ -z $quote || ${line:i:1} == [\"\\\$\`] ]] || word+=\\
            word+=${line:i:1}
        elif [[ -n $quote ]]; then
            word+=$character
        elif [[ $character == [\'\"] ]]; then
            quote=$character before=$kept kept=$word begun=1
        elif [[ $character == [[:space:]] ]]; then
            [[ -z $begun ]] || words+=("$word")
            word='' kept='' begun=''
        else
            word+=$character begun=1
            [[ $COMP_WORDBREAKS != *"$character"* ]] || kept=$word
        fi
    done
    words+=("$word")

    local found
    mapfile -t found < <("${words[0]}" complete -- "${words[@]:1}" 2>/dev/null)
    COMPREPLY=()
    for word in "${found[@]:1}"; do
        word=${word#"$kept"}
        case $quote in
            \') word=${word//\'/\'\\\'\'} ;;
            \")
                word=${word//\\/\\\\} word=${word//\"/\\\"}
                word=${word//\$/\\\$} word=${word//\`/\\\`}
                ;;
            *) [[ -z $word ]] || printf -v word %q "$word" ;;
        esac
        COMPREPLY+=("$word")
    done
    case ${found[0]-} in
        files) compopt -o default ;;
        directories) compopt -o dirnames ;;
    esac
}

complete -F _morvek morvekctl morvek-hostd morvek-zop
