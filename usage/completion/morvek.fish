# SPDX-License-Identifier: Apache-2.0
# Completion for fish: the programs themselves know what may follow.
function __morvek_complete
    set -l words (commandline -opc)
    set -l typed (string unescape -- (commandline -ct))
    set -l found ($words[1] complete -- $words[2..-1] "$typed" 2>/dev/null)
    string join \n -- $found[2..-1]
    set -l name (string match -r -- '^--[^=]*=' "$typed")
    switch "$found[1]"
        case files
            __fish_complete_path (string replace -- "$name" '' "$typed") | string replace -r '^' -- "$name"
        case directories
            __fish_complete_directories (string replace -- "$name" '' "$typed") '' | string replace -r '^' -- "$name"
    end
end

for program in morvekctl morvek-hostd morvek-zop
    complete -c $program -f -a '(__morvek_complete)'
end
