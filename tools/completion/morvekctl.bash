# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Completion for bash: morvekctl itself knows what may follow.
_morvekctl()
{
    # Bash breaks words at colons, which interface names may hold: the words are taken from the line itself.
    local line=${COMP_LINE:0:COMP_POINT} words
    read -ra words <<<"$line"
    [[ $line == *[[:space:]] ]] && words+=('')
    local current=${words[-1]}

    mapfile -t COMPREPLY < <("${words[0]}" complete -- "${words[@]:1}" 2>/dev/null)
    if [[ $current == *:* && $COMP_WORDBREAKS == *:* ]]; then
        COMPREPLY=("${COMPREPLY[@]#"${current%"${current##*:}"}"}")
    fi
}

complete -F _morvekctl morvekctl
