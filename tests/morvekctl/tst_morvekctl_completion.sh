#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What bash offers after morvekctl: tst_morvekctl_completion.sh MORVEKCTL MORVEK-HOSTD COMPLETION
set -euo pipefail

morvekctl=$1
hostd=$2
# shellcheck source=tools/completion/morvekctl.bash
source "$3"

work=$(mktemp -d)
daemon=
# What a daemon that is ending still writes would be in the way.
trap '[[ -z $daemon ]] || { kill "$daemon"; tail --pid="$daemon" -f /dev/null; }; rm -rf "$work"' EXIT
export ZOP_ROOT=$work
failed=0
number=0

# offers NAME LINE CANDIDATE...: what TAB offers at the end of LINE, "morvekctl" standing for the program
offers() {
    local name=$1 line=${2/#morvekctl/$morvekctl} wanted=("${@:3}")
    COMP_LINE=$line COMP_POINT=${#line} COMPREPLY=()
    _morvekctl
    number=$((number + 1))
    if [[ "${COMPREPLY[*]}" == "${wanted[*]}" ]]; then
        echo "ok $number - $name"
    else
        echo "not ok $number - $name"
        echo "# offered: ${COMPREPLY[*]}"
        echo "# wanted:  ${wanted[*]}"
        failed=1
    fi
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
offers "no passphrases" "morvekctl hotspot set --passphrase-file "
offers "no networks, as a scan takes time" "morvekctl wifi connect "
offers "commands of a group that have help" "morvekctl help wifi " "${wifi[@]}"
offers "nothing more to have help for" "morvekctl help wifi scan " --help
offers "nothing below a command" "morvekctl help show "
offers "nothing after an unknown command of a group" "morvekctl wifi scna "
offers "no interfaces without a daemon" "morvekctl show "

cat >"$work/scenario.json" <<'END'
{ "interfaces": [{ "name": "eth0", "type": "wired" }, { "name": "eth0:1", "type": "wired" },
                 { "name": "wlan0", "type": "wifi" }] }
END
exec {output}< <(exec "$hostd" --scenario "$work/scenario.json")
daemon=$!
read -r -t 60 _ <&"$output"
offers "interfaces" "morvekctl show " eth0 eth0:1 wlan0
offers "the start of an interface" "morvekctl configure e" eth0 eth0:1
offers "what follows a colon" "morvekctl show eth0:" 1
offers "interfaces after options" "morvekctl show --timeout 5 w" wlan0

echo "1..$number"
exit "$failed"
