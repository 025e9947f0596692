#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# each program's page of the manual is sound, and tells word for word what its help tells
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

# words: those of a text, each on a line
words() {
    tr -s '[:space:]' '\n' | sed '/^$/d'
}

# page FOLDER PROGRAM SUMMARY ARGUMENT...: the page of a program that writes its whole help with ARGUMENT...
page() {
    local program=$build/$1/$2 file=$build/$1/$2.1 text
    need "$file"
    text=$(groff -ww -man -Tutf8 "$file" 2>&1 >/dev/null)
    [[ -z $text ]] || mistake "$file: $text"

    # On long lines, and without the marks of bold type. Headings begin in the first column, those within in the fourth.
    text=$(groff -man -rLL=500n -rHY=0 -P-cbou -Tutf8 "$file")
    grep -qxF "       $2 - $3" <<<"$text" || mistake "$file does not say that it is about $2, which $3"
    grep -qxF "       $("$program" "${@:4}" | sed -n '1s/^Usage: //p')" <<<"$text" || mistake "$file lacks the usage"
    diff <("$program" "${@:4}" | sed '1,2d; /^[^ ].*:$/d' | words) \
        <(sed '1,/^DESCRIPTION$/d; /^   \{0,1\}[^ ]/d; /^[^ ]/d' <<<"$text" | words) \
        || mistake "$file tells something else (>) than the help (<)"
}

page tools morvekctl \
    "shows and changes the network interfaces, the Wi-Fi station and the Wi-Fi hotspot of this unit" help --all
page host/hostd morvek-hostd "plays the daemons of a head unit on a Linux machine" --help
page host/zop morvek-zop "looks at the objects below ZOP_ROOT, and changes them, by hand" --help
finish
