#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# morvek-zop shows and changes objects by hand
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

zop=$build/host/zop/morvek-zop
need "$zop"
ZOP_ROOT=$(mktemp -d)
export ZOP_ROOT
trap 'rm -rf "$ZOP_ROOT"' EXIT

# expect CODE OUTPUT ARGUMENT...: what morvek-zop ends with and writes, errors included; of the usage the first line
expect() {
    local code=0 output
    output=$("$zop" "${@:3}" 2>&1) || code=$?
    output=$(sed '/^Usage:/q' <<<"$output")
    ((code == $1)) || mistake "morvek-zop ${*:3}: code $code in place of $1"
    [[ $output == "$2" ]] || mistake "morvek-zop ${*:3}: '$output' in place of '$2'"
}

expect 1 'morvek-zop: /zop: no such directory' list
expect 0 '' set /zop/a/one name=text 'list:=[1,2]' other=
expect 0 '' set /zop/a/b/two x=1
expect 0 $'/zop/a/one\n/zop/a/b/two' list
expect 0 /zop/a/b/two list /zop/a/b/
expect 1 'morvek-zop: /../..: "/../.." is not a path of names' list /../..
expect 1 'morvek-zop: /zop/nope: no such directory' list /zop/nope
expect 0 $'list = [1,2]  (json)\nname = text  (text)\nother =   (text)' show /zop/a/one
expect 0 '' set /zop/a/one -other $'name=\e[1m'
expect 0 $'list = [1,2]  (json)\nname = \\u001b[1m  (text)' show /zop/a/one
expect 1 'morvek-zop: /zop/a/none: no such object' show /zop/a/none
expect 2 $'morvek-zop: x:={bad: not a change: write NAME=TEXT, NAME:=JSON or -NAME\nUsage: morvek-zop COMMAND' \
    set /zop/a/none 'x:={bad'
expect 1 'morvek-zop: /zop/a/none: no such object' show /zop/a/none
expect 0 '' remove /zop/a/one
expect 1 'morvek-zop: /zop/a/one: no such object' remove /zop/a/one
expect 2 'Usage: morvek-zop COMMAND' show
expect 2 'Usage: morvek-zop COMMAND' dance
expect 0 'Usage: morvek-zop COMMAND' --help

# watch tells the present values, then each update.
coproc watch { exec "$zop" watch /zop/a/b/two; }
for line in 'x = 1  (text)' -- 'x = 2  (text)' 'y = 3  (text)' --; do
    [[ $line != 'x = 2  (text)' ]] || "$zop" set /zop/a/b/two x=2 y=3
    read -r -t 20 told <&"${watch[0]}" || told=nothing
    [[ $told == "$line" ]] || mistake "morvek-zop watch: '$told' in place of '$line'"
done
# shellcheck disable=SC2154 # set by coproc
kill "$watch_PID"
finish
