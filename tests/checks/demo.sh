#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the demo tells its story to the end, and leaves nothing behind
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/tools/morvekctl"
need "$build/examples/statusbar/statusbar-example"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/left"

# left_running: whoever has a root of the demo in its environment
left_running() {
    grep -lsF "ZOP_ROOT=$work/left/" /proc/[0-9]*/environ || true
}

code=0
TMPDIR=$work/left examples/demo.sh "$build" >"$work/told" 2>&1 || code=$?
((code == 0)) || mistake "the demo ended with code $code: $(tail -n 1 "$work/told")"
while IFS= read -r words; do
    grep -qF -- "$words" "$work/told" || mistake "the demo does not tell '$words'"
done <<'END'
statusbar | wlan0 192.168.43.99 | Wi-Fi Home | hotspot off
code -1: The new configuration settings are the same as the current configuration settings.
"Garage" was not joined, code -1: Failed to connect to Access Point
statusbar | wlan0 192.168.77.21 | Wi-Fi Garage | hotspot off
statusbar | wlan0 192.168.77.21 | Wi-Fi Garage | hotspot on Backseat
statusbar | wlan0 192.168.43.17 | Wi-Fi Home | hotspot on Backseat
{"accessPoint":null,"address":null,"connected":false,"powered":false}
statusbar | eth0 10.20.0.40 | Wi-Fi off | hotspot off
wlan0 was not configured, code 13: The system was unable to configure the interface. (permission denied)
That was it; nothing is left running.
END
grep -qE '^  monitor \| .*192\.168\.43\.99/24' "$work/told" || mistake "the demo shows no monitor"
for code in 3 4; do
    grep -qxF "(exit code $code)" "$work/told" || mistake "nothing ends with code $code: no daemon is dead, or none keeps silent"
done

# It begins with an outline, and keeps to it.
outline=$(sed -n '/^== /q; s/^  \([1-7]\)  \([^:]*\):.*/== \1. \2 ==/p' "$work/told")
[[ $(wc -l <<<"$outline") == 7 ]] || mistake "the outline has not seven chapters: $outline"
diff <(echo "$outline") <(grep '^== ' "$work/told") || mistake "the demo does not keep to its outline"

# What other programs tell stands in a block of its own: after it, a command or an empty line.
between=$(awk '/^ *(statusbar|monitor) \| / { block = 1; next } block && !/^($|[$] )/ { print } { block = 0 }' "$work/told")
[[ -z $between ]] || mistake "what other programs tell stands before: $between"
! grep -E 'are we there yet|open sesame|drive safely' "$work/told" || mistake "the demo tells a secret"

# It can be interrupted anywhere; here, while an application runs and a scan is under way.
: >"$work/interrupted"
TMPDIR=$work/left setsid examples/demo.sh "$build" >>"$work/interrupted" 2>&1 &
demo=$!
for ((tries = 0; tries < 300; ++tries)); do
    ! grep -qF 'wifi scan' "$work/interrupted" || break
    sleep 0.1
done
kill -TERM "$demo"
code=0
wait "$demo" || code=$?
((code == 143)) || mistake "the interrupted demo ended with code $code"
[[ -z $(ls -A "$work/left") ]] || mistake "the demo leaves $(ls -A "$work/left")"
[[ -z $(left_running) ]] || mistake "the demo leaves running: $(left_running)"
finish
