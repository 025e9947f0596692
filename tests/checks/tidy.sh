#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the sources pass clang-tidy
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"
# shellcheck source=tests/checks/lib/beside.bash
source tests/checks/lib/beside.bash

commands=$build/compile_commands.json
need "$commands"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# flags FOLDER: what the compile commands of its sources tell of definitions and include folders, a word a line. The
# standard is named because clang's own is another one than that of the build.
flags() {
    printf '%s\n' -std=c++17 -fPIC
    jq -r --arg folder "$PWD/$1/" '.[] | select(.file | startswith($folder)) | .command' "$commands" \
        | grep -oE -- '(-isystem |-[DI])[^ ]+' | sort -u | sed 's/\\"/"/g; s/ /\n/'
}

# tidy FOLDER SOURCE...: all of them as one, as most of the time goes into the headers that they have in common. Those
# that cannot be one, because they give one name to different things, are looked at in halves.
tidy() {
    local folder=$1 all words
    shift
    all=$(mktemp "$work/XXXXXX.cpp")
    mapfile -t words < <(flags "$folder")
    printf "#include \"$PWD/%s\" // NOLINT(bugprone-suspicious-include)\n" "$@" >"$all"
    if (($# > 1)) && ! clang++ -fsyntax-only "${words[@]}" "$all" 2>/dev/null; then
        tidy "$folder" "${@:1:$#/2}" || return
        tidy "$folder" "${@:$#/2+1}"
        return
    fi
    clang-tidy --quiet --config-file=.clang-tidy "$all" -- "${words[@]}" 2> >(grep -vE '^[0-9]+ warnings? generated' >&2)
}

# Each folder in parts, so that all cores have something to do to the end.
while IFS= read -r folder; do
    mapfile -t files < <(sources .cpp | tr '\0' '\n' | grep -E "^$folder/[^/]*$")
    for ((from = 0; from < ${#files[@]}; from += 12)); do
        beside tidy "$folder" "${files[@]:from:12}"
    done
done < <(sources .cpp | tr '\0' '\n' | grep -E '^(src|host|kit|testkit|qml|tools|usage)/' | sed 's,/[^/]*$,,' | sort -u)
beside_all || mistake "clang-tidy is not content"
finish
