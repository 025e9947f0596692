#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A car's day, with daemons and applications on roots of their own: demo.sh BUILD-FOLDER. It leaves nothing behind.
set -euo pipefail

build=$(cd "${1:?the folder of the build is missing}" && pwd)
PATH=$build/tools:$build/host/hostd:$PATH
work=$(mktemp -d)
daemon=
monitors=()
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
    for pid in "${monitors[@]}" $daemon; do
        stop TERM "$pid"
    done
    wait
    rm -rf "$work"
}
trap end EXIT
trap 'exit 130' INT # the commands that are shown end by themselves then, and the tour would go on
trap 'exit 143' TERM

# chapter TEXT...: after a moment for reading the last lines
chapter() {
    sleep 0.7
    printf '\n%s\n' "$bold== $* ==$plain"
}

# tell TEXT...: one line of explanation
tell() {
    sleep 0.5
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

# follow LAST COMMAND...: a monitor, the lines of which stand between the others; returns when LAST of its start was told
follow() {
    local output line
    show_command "${@:2}" '&'
    exec {output}< <(exec "${@:2}")
    monitors+=($!)
    while IFS= read -r line; do
        printf '    | %s\n' "$line"
        printf '%s\n' "$line" >>"$work/told"
    done <&"$output" &
    wait_until "$1"
}

# wait_until WORDS: until a monitor has told them, since the last call
wait_until() {
    local tries
    for ((tries = 0; tries < 150; ++tries)); do
        if grep -qF -- "$1" "$work/told" 2>/dev/null; then
            : >"$work/told"
            return
        fi
        sleep 0.1
    done
    echo "no monitor has told \"$1\"" >&2
    exit 1
}

chapter "Morning, in the garage"
tell "The daemons of the head unit start, and publish what they know as objects below a root of their own."
use_root unit
start_daemons
tell "An application sees the interfaces as a list. The unit prefers one of them."
try morvekctl interfaces
try morvekctl preferred --json
try morvekctl show eth0.5

chapter "On the road"
tell "From here on, an application follows every change as it happens; its lines are those with the bar."
follow ' preferred ' morvekctl monitor
tell "The Wi-Fi gets an address by hand. It is disconnected first, so the unit prefers the wire meanwhile."
try morvekctl configure wlan0 manual --address 192.168.43.99 --prefix 24 --gateway 192.168.43.1 --applied
tell "And back to DHCP: the command returns when the daemon has accepted it, the address comes later."
try morvekctl configure wlan0 auto
wait_until 'preferred      wlan0   wifi, connected, auto'
tell "What makes no sense is refused at once: by the tool, or by the library with a code and a message."
try morvekctl configure wlan0 manual --address 192.168.43.99
try morvekctl configure eth0 auto
try morvekctl show eth7

chapter "A stop"
tell "A scan tells which networks are in range, and how they are protected."
try morvekctl wifi scan
tell "A passkey comes from a file or is typed unseen, never from an argument. This one is wrong."
printf 'open sesame 24\n' >"$work/wrong.key"
try morvekctl wifi connect Garage --passkey-file "$work/wrong.key"
tell "With the right one the station joins the network, and its interface gets an address there."
printf 'open sesame 42\n' >"$work/garage.key"
try morvekctl wifi connect Garage --passkey-file "$work/garage.key"
wait_until 'preferred      wlan0   wifi, connected, auto, 192.168.77.21'

chapter "The passengers want to be online"
tell "The unit has a hotspot, too. Its profile tells everything but the passphrase."
try morvekctl hotspot profile
tell "It gets another name, and a passphrase from a file."
printf 'are we there yet\n' >"$work/hotspot.key"
try morvekctl hotspot set --name Backseat --max-clients 4 --passphrase-file "$work/hotspot.key"
tell "A second application follows the hotspot, a third one switches it."
follow 'profile ' morvekctl hotspot monitor
try morvekctl hotspot on
wait_until 'on       hotspot on'
try morvekctl hotspot off
wait_until 'off      hotspot off'

chapter "A bad moment"
tell "The daemons die. What they published stays, but they cannot be asked any more."
stop_daemons KILL
try morvekctl interfaces
tell "They come back, with the world of this morning, but for the hotspot: its profile is kept. The applications live on."
start_daemons
tell "They take requests again: the wired interface gets an address by hand, the hotspot goes on as it was set."
try morvekctl configure eth0 manual --address 10.20.0.77 --netmask 255.255.0.0 --gateway 10.20.0.1 --applied
try morvekctl hotspot on --json
wait_until 'on       hotspot on'
try morvekctl hotspot status

chapter "Evening"
tell "The hotspot and the Wi-Fi radio are switched off."
try morvekctl hotspot off
try morvekctl wifi off
try morvekctl wifi status --json
tell "The applications that followed the changes end, then the daemons."
for pid in "${monitors[@]}"; do
    show_command kill "$pid"
    stop TERM "$pid"
done
monitors=()
stop_daemons TERM
tell "On this desk, the same list for the interfaces of this machine itself, which are not touched."
use_root machine
start_daemons --interfaces system
try morvekctl interfaces
stop_daemons TERM

tell "That was it; nothing is left running. Play on by hand: ./dev run morvek-hostd, ./dev run morvekctl --help"
