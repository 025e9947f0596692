#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A tour of daemons and applications on roots of their own: demo.sh BUILD-FOLDER. It leaves nothing behind.
set -euo pipefail

build=$(cd "${1:?the folder of the build is missing}" && pwd)
PATH=$build/tools:$build/host/daemons:$PATH
work=$(mktemp -d)
daemon=
monitor=
bold=
plain=
[[ ! -t 1 ]] || bold=$'\e[1m' plain=$'\e[0m'

end() {
    local pid
    for pid in $monitor $daemon; do
        kill "$pid" 2>/dev/null || true
        tail --pid="$pid" -f /dev/null # what it still writes would be in the way
    done
    rm -rf "$work"
}
trap end EXIT

# tell TEXT...: one line of explanation, after a moment for reading the last one
tell() {
    sleep 0.7
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

# start_daemon [ARGUMENT]...: returns when everything is published
start_daemon() {
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

stop_daemon() {
    kill "-$1" "$daemon"
    tail --pid="$daemon" -f /dev/null
    daemon=
}

use_root() {
    mkdir -m 0700 "$work/$1"
    export ZOP_ROOT=$work/$1
    show_command export "ZOP_ROOT=$ZOP_ROOT"
}

start_monitor() {
    local output line
    show_command morvekctl monitor '&'
    exec {output}< <(exec morvekctl monitor)
    monitor=$!
    while read -r -t 30 line <&"$output"; do
        echo "    | $line"
        [[ $line != *' preferred '* ]] || break
    done
    sed -u 's/^/    | /' <&"$output" &
}

tell "Daemons publish the interfaces of a head unit as objects below a root of their own."
use_root unit
start_daemon

tell "An application sees them as a list."
try morvekctl interfaces

tell "The unit prefers one of them; another stands on the wired one."
try morvekctl preferred
try morvekctl show eth0.5

tell "From here on, a second application follows every change as it happens."
start_monitor

tell "The Wi-Fi gets an address by hand. It is disconnected first, so the unit prefers the wire meanwhile."
try morvekctl configure wlan0 manual --address 192.168.43.99 --prefix 24 --gateway 192.168.43.1 --applied

tell "And back to DHCP. Without --applied, the command returns when the daemon has accepted it."
try morvekctl configure wlan0 auto
try morvekctl preferred --json
sleep 2

tell "What makes no sense is refused at once: by the tool, or by the library with a code and a message."
try morvekctl configure wlan0 manual --address 192.168.43.99
try morvekctl configure eth0 auto
try morvekctl show eth7

tell "The daemon dies. What it published stays, but it cannot be asked any more."
show_command kill -KILL "$daemon"
stop_daemon KILL
try morvekctl interfaces

tell "It comes back; the application that follows the changes has outlived it."
start_daemon
try morvekctl configure eth0 manual --address 10.20.0.77 --netmask 255.255.0.0 --gateway 10.20.0.1 --applied
sleep 1
show_command kill "$monitor"
kill "$monitor"
tail --pid="$monitor" -f /dev/null
monitor=

tell "The Wi-Fi station is at home. A scan tells what else is in range, and how it is protected."
try morvekctl wifi status
try morvekctl wifi scan

tell "A passkey comes from a file or is typed unseen, never from an argument. This one is wrong."
printf 'open sesame 24\n' >"$work/wrong.key"
try morvekctl wifi connect Garage --passkey-file "$work/wrong.key"

tell "With the right one the station joins the network, and its interface gets an address there."
printf 'open sesame 42\n' >"$work/garage.key"
try morvekctl wifi connect Garage --passkey-file "$work/garage.key"
sleep 2
try morvekctl interfaces

tell "It leaves the network again."
try morvekctl wifi disconnect
try morvekctl wifi status --json
show_command kill "$daemon"
stop_daemon TERM

tell "The same list for the interfaces of this machine itself, which are not touched."
use_root machine
start_daemon --interfaces system
try morvekctl interfaces
show_command kill "$daemon"
stop_daemon TERM

tell "That was it; nothing is left running. Play on by hand: ./dev run morvek-hostd, ./dev run morvekctl --help"
