#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the status bar of the examples tells what is, and what it cannot learn; their tests are as documents show them
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

statusbar=$build/examples/statusbar/statusbar-example
need "$statusbar"
work=$(mktemp -d)
daemon=
application=
trap 'kill $application $daemon 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir -m 0700 "$work/root"
export ZOP_ROOT=$work/root

# shows LINE...: what it shows from its start on; the last line is waited for
shows() {
    local output pid line='' lines=()
    exec {output}< <(exec "$statusbar")
    pid=$!
    while [[ $line != "${*: -1}" ]] && IFS= read -r -t 20 line <&"$output"; do
        lines+=("$line")
    done
    kill "$pid" 2>/dev/null || true
    [[ "${lines[*]}" == "$*" ]] || mistake "the status bar shows '$(IFS=$'\n' && echo "${lines[*]}")'"
}

shows "The networking daemon is not there."

# A hotspot that is on, and a daemon that first refuses to tell its name, then keeps silent, then tells it.
jq '.hotspot.active = true | .faults = [
    { "message": "retrieve_profile", "fault": "refuse", "err": 5, "errmsg": "input/output error", "times": 1 },
    { "message": "retrieve_profile", "fault": "no-reply", "times": 1 }]' \
    host/simulation/scenarios/headunit.json >"$work/scenario.json"
exec {ready}< <(exec "$build/host/hostd/morvek-hostd" --scenario "$work/scenario.json")
daemon=$!
read -r -t 20 <&"$ready" || mistake "the daemon does not start"

beginning=("wlan0 192.168.43.17 | no Wi-Fi yet | no hotspot yet" "wlan0 192.168.43.17 | Wi-Fi Home | no hotspot yet"
    "wlan0 192.168.43.17 | Wi-Fi Home | hotspot on")
shows "${beginning[@]}" "wlan0 192.168.43.17 | Wi-Fi Home | hotspot on (Failed to retrieve WifiHotspot config.)"
shows "${beginning[@]}" "wlan0 192.168.43.17 | Wi-Fi Home | hotspot on (no answer)"
shows "${beginning[@]}" "wlan0 192.168.43.17 | Wi-Fi Home | hotspot on Morvek Car"

# It is on anew while the daemon still owes an answer, and tells the second one; the first is not waited for any more. A
# second status bar, which gets no answer later, tells when that would have been given up.
quiet() {
    "$build/host/hostd/morvek-hostd" act no-reply message=retrieve_profile times=1
}

# follows LAST: reads what the first one shows, up to this end of a line
follows() {
    line=
    while [[ $line != *" | $1" ]] && IFS= read -r -t 20 line <&"$first"; do
        followed+=("${line##* | }")
    done
}

quiet >/dev/null
followed=()
exec {first}< <(exec "$statusbar")
application=$!
follows "hotspot on"
"$build/tools/morvekctl" hotspot off >/dev/null
follows "hotspot off"
"$build/tools/morvekctl" hotspot on >/dev/null
follows "hotspot on Morvek Car"
quiet >/dev/null
shows "${beginning[@]}" "wlan0 192.168.43.17 | Wi-Fi Home | hotspot on (no answer)"
"$build/tools/morvekctl" hotspot off >/dev/null
follows "hotspot off"
[[ ${followed[*]} == *"hotspot on hotspot off hotspot on hotspot on Morvek Car hotspot off" ]] \
    || mistake "the status bar goes on with '${followed[*]}'"
kill "$application"
# The test of the tile runs with all tests; here is the same in QML.
built=$(realpath "$build")
if [[ -e $built/qml/Morvek/Network/qmldir ]]; then
    MORVEK_HOSTD=$built/host/hostd/morvek-hostd QML2_IMPORT_PATH=$built/qml QT_QPA_PLATFORM=offscreen \
        QT_QUICK_BACKEND=software "$(pkg-config --variable=host_bins Qt5Core)/qmltestrunner" \
        -input examples/wifitile/tst_wifitile.qml >"$work/told" 2>&1 || mistake "a test in QML fails: $(<"$work/told")"
else
    echo "skipped: the example's test in QML"
fi

# What the document shows of the tests is a part of them.
awk -v name="$work/block" '/^```/ { inside = /^```(cpp|qml)$/; file = name NR; next } inside { print > file }' \
    docs/testing-your-application.md
tests=$(cat examples/wifitile/tst_wifitile.*)
for block in "$work"/block*; do
    [[ $tests == *"$(<"$block")"* ]] || mistake "docs/testing-your-application.md shows what is in no test: $(<"$block")"
done
finish
