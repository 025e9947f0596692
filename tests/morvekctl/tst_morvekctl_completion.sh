#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What bash offers after the programs: tst_morvekctl_completion.sh MORVEKCTL MORVEK-HOSTD MORVEK-ZOP COMPLETION
set -euo pipefail

morvekctl=$1
hostd=$2
zop=$3
# shellcheck source=usage/completion/morvek.bash
source "$4"

work=$(mktemp -d)
daemon=
# What a daemon that is ending still writes would be in the way.
trap '[[ -z $daemon ]] || { kill "$daemon"; tail --pid="$daemon" -f /dev/null; }; rm -rf "$work"' EXIT
export ZOP_ROOT=$work/root
mkdir -m 0700 "$ZOP_ROOT"
failed=0
number=0

# Bash has it only while somebody types.
compopt() {
    COMPREPLY+=("(${*:2})")
}

# finds NAME EXPECTED FOUND: whether the two are the same
finds() {
    number=$((number + 1))
    if [[ $3 == "$2" ]]; then
        echo "ok $number - $1"
    else
        echo "not ok $number - $1"
        echo "# found:  $3"
        echo "# wanted: $2"
        failed=1
    fi
}

# offers NAME LINE CANDIDATE...: what TAB offers at the end of LINE, the first word of which stands for the program; in
# brackets which names of files bash is to look for
offers() {
    local name=$1 line=$2 wanted=("${@:3}")
    line=${line/#morvekctl/$morvekctl} line=${line/#morvek-hostd/$hostd} line=${line/#morvek-zop/$zop}
    COMP_LINE=$line COMP_POINT=${#line} COMPREPLY=()
    _morvek
    finds "$name" "${wanted[*]}" "${COMPREPLY[*]}"
}

general=(status interfaces show preferred configure monitor wifi hotspot help)
hotspot=(status on off profile set monitor)
wifi=(status on off scan connect disconnect monitor)
offers "commands and options" "morvekctl " "${general[@]}" --help --version
offers "the start of a command" "morvekctl in" interfaces
offers "a whole command" "morvekctl preferred" preferred
offers "nothing after an unknown command" "morvekctl nonsense "
offers "nothing for an unknown start" "morvekctl x"
offers "options of a command" "morvekctl interfaces --" --help --json --wait --timeout --verbose
offers "options are offered once" "morvekctl interfaces --json --" --help --wait --timeout --verbose
offers "the start of an option" "morvekctl monitor --c" --count
offers "the value of an option is the user's" "morvekctl monitor --count "
offers "a command after options" "morvekctl --json sh" show
offers "modes" "morvekctl configure eth0 " auto manual
offers "the start of a mode" "morvekctl configure eth0 m" manual
offers "options after the last word" "morvekctl configure eth0 auto --ap" --applied
offers "commands that have help" "morvekctl help " "${general[@]}"
offers "commands of a group" "morvekctl wifi " "${wifi[@]}" --help
offers "the start of a command of a group" "morvekctl wifi s" status scan
offers "commands of a group after an option" "morvekctl wifi --json d" disconnect
offers "options of a group" "morvekctl wifi --" --help
offers "options of a command of a group" "morvekctl wifi connect Garage --" \
    --help --passkey-file --json --wait --timeout --verbose
offers "commands of another group" "morvekctl hotspot " "${hotspot[@]}" --help
offers "options of a command of another group" "morvekctl hotspot profile --" \
    --help --show-passphrase --json --wait --timeout --verbose
offers "the start of an option of a group" "morvekctl hotspot set --pa" --passphrase-file
offers "options that are still left" "morvekctl hotspot set --name Bus --band 5 --security open --" \
    --help --max-clients --inactivity-time --privacy --block-connections --passphrase-file --ask-passphrase \
    --json --wait --timeout --verbose
offers "files of passphrases" "morvekctl hotspot set --passphrase-file " "(default)"
offers "bands" "morvekctl hotspot set --band " 2.4 5
offers "bands, attached" "morvekctl hotspot set --band=" 2.4 5
offers "securities" "morvekctl hotspot set --security " open WPA WPA2 WPA/WPA2
offers "switches" "morvekctl hotspot set --privacy " on off
offers "no networks that were never seen" "morvekctl wifi connect "
offers "commands of a group that have help" "morvekctl help wifi " "${wifi[@]}"
offers "nothing more to have help for" "morvekctl help wifi scan " --help --all
offers "nothing below a command" "morvekctl help show "
offers "nothing after an unknown command of a group" "morvekctl wifi scna "
offers "no interfaces without a daemon" "morvekctl show "

switches=(--scenario --list-scenarios --network --interfaces --only --force --remember --replay --without --root
    --speed --seed --fresh --hold --timeout --check --verbose --help --version)
offers "words and options of the daemons" "morvek-hostd " act look pass wait "${switches[@]}"
offers "what can happen" "morvek-hostd act w" wrong-key wifi-event
offers "what can go wrong" "morvek-hostd act re" remove refuse
offers "what there is to look at" "morvek-hostd look " requests objects faults daemons all --root --timeout
offers "no more than two options after a word" "morvek-hostd wait --" --root --timeout
offers "options of the daemons once, but one" "morvek-hostd --without wifi --speed 2 --s" --scenario --seed
offers "an option that may be repeated" "morvek-hostd --without wifi --wi" --without
offers "services" "morvek-hostd --without " networking wifi tethering
offers "services, attached" "morvek-hostd --without=" networking wifi tethering
offers "worlds" "morvek-hostd --interfaces " scenario system
offers "scenarios and files" "morvek-hostd --scenario wifi-r" wifi-refused wifi-roaming "(default)"
offers "worlds, by their name" "morvek-hostd --network " scenario kernel manager
offers "recordings" "morvek-hostd --replay " "(default)"
offers "folders" "morvek-hostd --root " "(dirnames)"
offers "no factors" "morvek-hostd --speed "
offers "verbs" "morvek-zop " list show watch set remove check record --help --version -h
offers "no objects without any" "morvek-zop show "
finds "nothing that this has made" "$ZOP_ROOT" "$(find "$ZOP_ROOT")"

cat >"$work/scenario.json" <<'END'
{ "interfaces": [{ "name": "eth0", "type": "wired" }, { "name": "eth0:1", "type": "wired" },
                 { "name": "wlan0", "type": "wifi" }] }
END
exec {output}< <(exec "$hostd" --scenario "$work/scenario.json" --verbose 2>"$work/log")
daemon=$!
read -r -t 60 _ <&"$output"
offers "interfaces" "morvekctl show " eth0 eth0:1 wlan0
offers "the start of an interface" "morvekctl configure e" eth0 eth0:1
offers "what follows a colon" "morvekctl show eth0:" 1
offers "interfaces after options" "morvekctl show --timeout 5 w" wlan0
interfaces=/zop/services/networking/all/interfaces
offers "objects" "morvek-zop show $interfaces/eth0" $interfaces/eth0 $interfaces/eth0:1
offers "objects that hold something" "morvek-zop watch /zop/services/networking/" \
    /zop/services/networking/all/status_public $interfaces/eth0 $interfaces/eth0:1 $interfaces/wlan0
offers "directories" "morvek-zop list /zop/services/networking/" \
    /zop/services/networking/all $interfaces
offers "an option of a recording" "morvek-zop record -" --redact "(default)"
offers "directories of a recording" "morvek-zop record --redact x /zop/services/networking/" \
    /zop/services/networking/all $interfaces
offers "more directories" "morvek-zop record x /zop /zop/services/networking/all/" $interfaces
offers "no changes" "morvek-zop set $interfaces/eth0 "
kill "$daemon"
tail --pid="$daemon" -f /dev/null
daemon=
offers "interfaces that were seen last" "morvekctl show e" eth0 eth0:1
"$zop" set /zop/services/wifi/status 'scan_results=[{"ssid":"-x"},{"ssid":"Home"},{"ssid":"Hall"},{"ssid":"Home"}]'
offers "networks, each once, and none that is like an option" "morvekctl wifi connect " Home Hall
finds "no request to the daemon" "" "$(grep -w request "$work/log" || true)"

echo "1..$number"
exit "$failed"
