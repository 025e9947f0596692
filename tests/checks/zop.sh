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

# expect CODE OUTPUT ARGUMENT...: what morvek-zop ends with and writes, errors included
expect() {
    local code=0 output
    output=$("$zop" "${@:3}" 2>&1) || code=$?
    ((code == $1)) || mistake "morvek-zop ${*:3}: code $code in place of $1"
    [[ $output == "$2" ]] || mistake "morvek-zop ${*:3}: '$output' in place of '$2'"
}

expect 1 'morvek-zop: /zop: no such directory' list
chmod 0755 "$ZOP_ROOT"
expect 1 "morvek-zop: the root \"$ZOP_ROOT\" is open to other users (wanted: mode 0700): close it with 'chmod 700 \
\"$ZOP_ROOT\"'" list
chmod 0700 "$ZOP_ROOT"
expect 0 '' set /zop/a/one name=text 'list:=[1,2]' other=
expect 0 '' set /zop/a/b/two x=1
expect 0 $'/zop/a/one\n/zop/a/b/two' list
expect 0 /zop/a/b/two list /zop/a/b/
expect 1 'morvek-zop: /../..: "/../.." is not a path of names' list /../..
expect 1 'morvek-zop: /zop/nope: no such directory' list /zop/nope
expect 0 $'list  = [1,2]  (json)\nname  = text  (text)\nother =   (text)' show /zop/a/one
expect 0 '' set /zop/a/one -other $'name=\e[1m'
expect 0 $'list = [1,2]  (json)\nname = \\u001b[1m  (text)' show /zop/a/one
expect 1 'morvek-zop: /zop/a/none: no such object' show /zop/a/none
for word in 'x:={bad' x = - ''; do
    expect 2 "morvek-zop: $word: not a change: write NAME=TEXT, NAME:=JSON or -NAME" set /zop/a/none "$word"
done
for word in x=2 'x:=[]' -x; do
    expect 2 "morvek-zop: $word: \"x\" is changed already: give one change for each attribute" \
        set /zop/a/none x=1 y=1 "$word"
done
expect 2 'morvek-zop: x=1: "x" is changed already: give one change for each attribute' set /zop/a/none -x x=1
expect 1 'morvek-zop: /zop/a/none: no such object' show /zop/a/none
expect 0 '' remove /zop/a/one
expect 1 'morvek-zop: /zop/a/one: no such object' remove /zop/a/one
expect 2 "morvek-zop: a command is missing: see 'morvek-zop --help'"
expect 2 "morvek-zop: there is no command \"dance\": see 'morvek-zop --help'" dance /zop/a/one
expect 2 "morvek-zop: there is no option \"-x\": see 'morvek-zop --help'" -x
expect 2 "morvek-zop: there is no option \"--json\": see 'morvek-zop --help'" show --json /zop/a/b/two
expect 2 'morvek-zop: "--help" is too much: morvek-zop --help' --help --help
expect 2 'morvek-zop: PATH is missing: morvek-zop show PATH' show
expect 2 'morvek-zop: "/b" is too much: morvek-zop show PATH' show /a /b
expect 2 'morvek-zop: "/b" is too much: morvek-zop list [DIRECTORY]' list /a /b
expect 2 'morvek-zop: CHANGE... is missing: morvek-zop set PATH CHANGE...' set /zop/a/none
expect 2 'morvek-zop: "zop/a/b/two" lacks the "/" that a path begins with: write /zop/a/b/two' show zop/a/b/two
expect 2 'morvek-zop: "zop" lacks the "/" that a path begins with: write /zop' list zop
for help in --help -h 'show --help' 'set -h'; do
    read -ra words <<<"$help"
    [[ $("$zop" "${words[@]}") == "Usage: morvek-zop COMMAND"* ]] || mistake "morvek-zop $help: no help"
done

# check tells what is wrong with a file: here are a state of three bytes, and an update that is damaged.
file=$ZOP_ROOT/zop/c/three
expect 0 '' set /zop/c/three x=123
expect 0 '/zop/c/three: generation 1, updates: 1, attributes: 1, bytes of state: 48' check /zop/c/three
size=$(stat -c %s "$file")
head -c 30 /dev/zero >>"$file"
expect 1 "morvek-zop: /zop/c/three: bytes $size to $((size + 29)) are no whole update: it is being written, or its \
writer was killed
/zop/c/three: generation 1, updates: 1, attributes: 1, bytes of state: 48" check /zop/c/three
chmod 640 "$file"
expect 0 '' set /zop/c/three y=1
expect 1 "morvek-zop: /zop/c/three: other users may use the file: its mode is 0640
morvek-zop: /zop/c/three: bytes $size to $((size + 29)) are no update
/zop/c/three: generation 1, updates: 2, attributes: 2, bytes of state: 66" check /zop/c/three
chmod 600 "$file"
# The first record begins behind the header's 48 bytes, and holds nothing: 28 bytes.
printf x | dd of="$file" bs=1 seek=60 conv=notrunc status=none
truncate -s "$size" "$file"
expect 1 'morvek-zop: /zop/c/three: bytes 48 to 75 are no update
morvek-zop: /zop/c/three: the state that the file began with is missing
/zop/c/three: generation 1, updates: 1, attributes: 1, bytes of state: 48' check /zop/c/three
truncate -s 40 "$file"
expect 1 "morvek-zop: /zop/c/three: malformed content in \"$file\": the header is damaged" check /zop/c/three
ln -sf /dev/null "$file"
expect 1 "morvek-zop: /zop/c/three: malformed content in \"$file\": this is no file" check /zop/c/three
expect 1 'morvek-zop: /zop/c/four: no such object' check /zop/c/four
expect 1 'morvek-zop: /../x: "/../x" is not a path of names' check /../x

# watch tells the present values, then each update.
coproc watch { exec "$zop" watch /zop/a/b/two; }
for line in 'x = 1  (text)' -- 'x = 2  (text)' 'y = 3  (text)' --; do
    [[ $line != 'x = 2  (text)' ]] || "$zop" set /zop/a/b/two x=2 y=3
    read -r -t 20 told <&"${watch[0]}" || told=nothing
    [[ $told == "$line" ]] || mistake "morvek-zop watch: '$told' in place of '$line'"
done
# shellcheck disable=SC2154 # set by coproc
kill "$watch_PID"

# record writes lines until it is interrupted; the file is its owner's.
expect 2 'morvek-zop: FILE is missing: morvek-zop record [--redact] FILE [DIRECTORY]...' record
expect 2 'morvek-zop: FILE is missing: morvek-zop record [--redact] FILE [DIRECTORY]...' record --redact
expect 2 'morvek-zop: "zop/a" lacks the "/" that a path begins with: write /zop/a' record x /zop zop/a
expect 1 "morvek-zop: $ZOP_ROOT/none/x: No such file or directory" record "$ZOP_ROOT/none/x"
expect 1 "morvek-zop: $ZOP_ROOT/x: /../x: \"/../x\" is not a path of names" record "$ZOP_ROOT/x" /../x
expect 1 'morvek-zop: /dev/full: No space left on device' record /dev/full
"$zop" record "$ZOP_ROOT/lines" /zop/a/ /zop/a/b /zop/a &
recorder=$!
for ((i = 0; i < 200; i++)); do
    [[ $(cat "$ZOP_ROOT/lines" 2>/dev/null) != */zop/a/b/two* ]] || break
    sleep 0.1
done
kill -INT $recorder
code=0
wait $recorder || code=$?
((code == 0)) || mistake "morvek-zop record: code $code"
[[ $(stat -c %a "$ZOP_ROOT/lines") == 600 ]] || mistake "morvek-zop record: others may read the file"
[[ $(sed '1s/20[^"]*Z/TIME/' "$ZOP_ROOT/lines") == '{"recording":1,"start":"TIME","redacted":false}
{"t":'*',"object":"/zop/a/b/two","present":{"x":{"encoding":"text","text":"2"},"y":{"encoding":"text","text":"3"}}}' ]] ||
    mistake "morvek-zop record: $(cat "$ZOP_ROOT/lines")"
finish
