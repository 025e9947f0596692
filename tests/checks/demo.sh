#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the demo tells its story to the end, and leaves nothing behind
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/tools/morvekctl"
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
wlan0   wifi, connected, manual, 192.168.43.99/24
code -1: The new configuration settings are the same as the current configuration settings.
"Garage" was not joined, code -1: Failed to connect to Access Point
wlan0   wifi, connected, auto, 192.168.77.21/24
profile  hotspot off, "Backseat" (wpa2, 5 GHz)
on       hotspot on
off      hotspot off
the networking daemon is not there
{"accessPoint":null,"address":null,"connected":false,"powered":false}
That was it; nothing is left running.
END
! grep -E 'are we there yet|open sesame|drive safely' "$work/told" || mistake "the demo tells a secret"

# It can be interrupted anywhere; here, while a monitor runs and a scan is under way.
TMPDIR=$work/left setsid examples/demo.sh "$build" >"$work/told" 2>&1 &
demo=$!
for ((tries = 0; tries < 300; ++tries)); do
    ! grep -qF 'wifi scan' "$work/told" || break
    sleep 0.1
done
kill -TERM "$demo"
code=0
wait "$demo" || code=$?
((code == 143)) || mistake "the interrupted demo ended with code $code"
[[ -z $(ls -A "$work/left") ]] || mistake "the demo leaves $(ls -A "$work/left")"
[[ -z $(left_running) ]] || mistake "the demo leaves running: $(left_running)"
finish
