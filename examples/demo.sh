#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A car's day, with daemons and applications on roots of their own: demo.sh BUILD-FOLDER. It leaves nothing behind.
set -euo pipefail

build=$(cd "${1:?the folder of the build is missing}" && pwd)
PATH=$build/tools:$build/host/hostd:$build/examples/statusbar:$PATH
work=$(mktemp -d)
daemon=
declare -A followers=() shown=()
bold=
plain=
[[ ! -t 1 ]] || bold=$'\e[1m' plain=$'\e[0m'

# stop SIGNAL PID: returns when it has ended, as what it still writes would be in the way
stop() {
    kill "-$1" "$2" 2>/dev/null || true
    tail --pid="$2" -f /dev/null
}

end() {
    local pid
    for pid in "${followers[@]}" $daemon; do
        stop TERM "$pid"
    done
    wait
    rm -rf "$work"
}
trap end EXIT
trap 'exit 130' INT # the commands that are shown end by themselves then, and the tour would go on
trap 'exit 143' TERM

chapters=(
    "Morning, in the garage: the daemons start, and an application sees what they publish"
    "On the road: addresses by hand and by DHCP, and what makes no sense"
    "A stop: a scan, a wrong passkey and the right one"
    "The passengers want to be online: the hotspot"
    "A bad moment: the daemons die, and come back"
    "Evening: all is switched off"
    "At the workshop: daemons that refuse, daemons that do not answer, and this machine's own interfaces"
)
chapter=0

outline() {
    local index
    printf '%s\n\n' "${bold}A car's day, in half a minute$plain"
    for index in "${!chapters[@]}"; do
        printf '  %d  %s\n' "$((index + 1))" "${chapters[index]}"
    done
    printf '\n%s\n' "Lines with a bar are those of programs that run beside: of an application, and of a monitor."
}

# begin_chapter: the next one, after a moment for reading the last lines
begin_chapter() {
    sleep 0.6
    printf '\n%s\n' "$bold== $((chapter + 1)). ${chapters[chapter]%%:*} ==$plain"
    chapter=$((chapter + 1))
}

# tell TEXT...: one line of explanation
tell() {
    sleep 0.4
    printf '\n%s\n' "# $*"
}

show_command() {
    printf '%s\n' "$bold\$ $*$plain"
}

# try COMMAND...: shows the command line and what it does
try() {
    local code=0
    show_command "$@"
    "$@" 2>&1 || code=$?
    ((code == 0)) || echo "(exit code $code)"
}

# start_daemons [ARGUMENT]...: returns when everything is published
start_daemons() {
    local output line
    show_command morvek-hostd "$@" '&'
    exec {output}< <(exec morvek-hostd "$@")
    daemon=$!
    if ! read -r -t 30 line <&"$output"; then
        echo "morvek-hostd did not start" >&2
        exit 1
    fi
    echo "$line"
}

# stop_daemons SIGNAL
stop_daemons() {
    show_command kill "-$1" "$daemon"
    stop "$1" "$daemon"
    daemon=
}

use_root() {
    mkdir -m 0700 "$work/$1"
    export ZOP_ROOT=$work/$1
    show_command export "ZOP_ROOT=$ZOP_ROOT"
}

# follow NAME WORDS COMMAND...: a program that tells what happens. Its lines are kept until they are shown, so that they do
# not get between others. Returns when it has told WORDS.
follow() {
    show_command "${@:3}" '&'
    : >"$work/$1"
    "${@:3}" >>"$work/$1" &
    followers[$1]=$!
    shown[$1]=0
    told "$1" "$2"
}

# told NAME WORDS: shows the lines of this program since the last time, when WORDS are among them
told() {
    local tries
    for ((tries = 0; tries < 150; ++tries)); do
        if fresh "$1" | grep -F -- "$2" >/dev/null; then
            fresh "$1" >"$work/fresh"
            shown[$1]=$((shown[$1] + $(wc -l <"$work/fresh")))
            sed "s/^/$(printf '%9s' "$1") | /" "$work/fresh"
            return
        fi
        sleep 0.1
    done
    echo "$1 has not told \"$2\"" >&2
    exit 1
}

# fresh NAME: what has not been shown of its lines
fresh() {
    tail -n "+$((shown[$1] + 1))" "$work/$1"
}

# leave NAME: ends what was followed
leave() {
    show_command kill "${followers[$1]}"
    stop TERM "${followers[$1]}"
    unset "followers[$1]"
}

outline

begin_chapter
tell "The daemons of the head unit start, and publish what they know as objects below a root of their own."
use_root unit
start_daemons
tell "The tool lists the interfaces. The unit prefers one of them."
try morvekctl interfaces
try morvekctl show eth0.5
tell "An application of the unit, its status bar: some C++ on the library, which stands in examples/statusbar."
follow statusbar 'wlan0 192.168.43.17 | Wi-Fi Home | hotspot off' statusbar-example

begin_chapter
tell "The tool, too, tells every change as it happens."
follow monitor 192.168.43.17/24 morvekctl monitor
tell "The Wi-Fi gets an address by hand. It is disconnected first, so the unit prefers the wire meanwhile."
try morvekctl configure wlan0 manual --address 192.168.43.99/24 --gateway 192.168.43.1 --applied
told statusbar 'wlan0 192.168.43.99'
told monitor 192.168.43.99/24
tell "And back to DHCP: the command returns when the daemon has accepted it, the address comes later."
try morvekctl configure wlan0 auto
told statusbar 'wlan0 192.168.43.17'
told monitor 192.168.43.17/24
leave monitor
tell "What makes no sense is refused at once: by the tool, or by the library with a code and a message."
try morvekctl configure wlan0 manual --address 192.168.43.99
try morvekctl configure eth0.5 manual --address 172.16.5.2/24 --gateway 172.16.5.1
try morvekctl show eth7

begin_chapter
tell "A scan tells which networks are in range, and how they are protected."
try morvekctl wifi scan
tell "A passkey comes from a file or is typed unseen, never from an argument. This one is wrong."
printf 'open sesame 24\n' >"$work/wrong.key"
try morvekctl wifi connect Garage --passkey-file "$work/wrong.key"
told statusbar 'Wi-Fi not connected'
tell "With the right one the station joins the network, and its interface gets an address there."
printf 'open sesame 42\n' >"$work/garage.key"
try morvekctl wifi connect Garage --passkey-file "$work/garage.key"
told statusbar 'wlan0 192.168.77.21 | Wi-Fi Garage'

begin_chapter
tell "The profile of the hotspot tells everything but the passphrase. It gets another name, and a passphrase from a file."
printf 'are we there yet\n' >"$work/hotspot.key"
try morvekctl hotspot set --name Backseat --max-clients 4 --passphrase-file "$work/hotspot.key"
try morvekctl hotspot on
told statusbar 'hotspot on Backseat'

begin_chapter
tell "The daemons die. What they published stays, but they cannot be asked any more."
stop_daemons KILL
try morvekctl interfaces
tell "They come back, with the world of this morning, but for the hotspot: its profile is kept. The application lives on."
start_daemons
told statusbar 'wlan0 192.168.43.17 | Wi-Fi Home | hotspot off'
tell "They take requests again, and the application hears of it."
try morvekctl hotspot on --json
told statusbar 'hotspot on Backseat'

begin_chapter
tell "The hotspot and the Wi-Fi radio are switched off."
try morvekctl hotspot off
try morvekctl wifi off
told statusbar 'eth0 10.20.0.40 | Wi-Fi off | hotspot off'
try morvekctl wifi status --json
leave statusbar
stop_daemons TERM

begin_chapter
tell "The daemons can play faults. These may not configure the Wi-Fi, and say so."
use_root workshop
start_daemons --scenario refused
try morvekctl configure wlan0 manual --address 192.168.43.99/24 --gateway 192.168.43.1
stop_daemons TERM
tell "These do not answer the first time. The tool waits for no longer than it is told to; the second time it gets its answer."
start_daemons --scenario hotspot-no-reply
try morvekctl hotspot profile --timeout 1.5
try morvekctl hotspot profile
stop_daemons TERM
tell "And at last the interfaces of this machine itself, which are not touched."
use_root machine
start_daemons --interfaces system
try morvekctl interfaces
stop_daemons TERM

tell "That was it; nothing is left running. Play on by hand: ./dev run morvek-hostd, ./dev run morvekctl --help"
