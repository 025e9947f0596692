#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the bench measures all that it has to measure, whatever the figures are
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

bench=$build/bench/morvek-bench
need "$bench"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# It ends with 1 when a ratio to reach is missed, which says as much of the machine as of the code.
code=0
"$bench" --json "$work/figures.json" >/dev/null || code=$?
((code <= 1)) || mistake "morvek-bench ended with code $code"

# measured CONDITION NAME...: for each name there are figures that begin with it, and each of them meets the condition
measured() {
    local name
    for name in "${@:2}"; do
        jq --exit-status --arg name "$name" \
            "map(select(.name | startswith(\$name))) | length > 0 and all(.[]; .value | $1)" \
            "$work/figures.json" >/dev/null || mistake "no figure for '$name'"
    done
}

measured '. > 0' "update to slot" "request to result" "scan published to success" "longest event of a scan" \
    "update to the slowest of 100 applications" "100 bare inotify wake-ups" "profile fetched" "a pending fetch takes" \
    "a finished fetch keeps" "a finished command keeps" "a service with 1000 interfaces" \
    "an object's file after 100000 updates" "what that reader is told" "until it is told the last one" \
    "an application with the networking service" "an application with the Wi-Fi service" \
    "an application with the hotspot service"
measured '. == null or . > 0' "manager's signal" "manager's scan" "morvek-hostd over a manager" # a build may have none
measured '. >= 0' "an idle application in 10 s, networking" "an idle application in 10 s, Wi-Fi" \
    "an idle application in 10 s, hotspot" "an idle morvek-hostd" "changes of rows" "changes of data" "resets"
# What needs tools that may be missing, or may not trace, is skipped then.
measured '. == null or . > 0' "a request with three addresses, application" "a request with three addresses, daemon" \
    "a request with three addresses" "an update of one attribute, application" "an update of one attribute, daemon" \
    "an update of one attribute" "an update of three attributes, application" "an update of three attributes, daemon" \
    "an update of three attributes" "start-up with one interface" "each further interface at start-up" \
    "start-up with 1000 virtual interfaces" "a scan's access point" "opening a full object" \
    "the model, a scan of 200 drifting networks" "a program that links the library" "each of 2000 access points" \
    "one update, 1000 interfaces" "start-up, 1000 interfaces" "a request after 10000" \
    "text and data for ARM of src/libmorvek-network.so" "text and data for ARM of host/platform/libmorvek-platform.so"
for yardstick in "loop that only reads the journal" "bare inotify wake-up" "100 bare inotify wake-ups" "QtDBus signal" \
    "QtDBus call" "bare socket round trip" "bare parse"; do
    jq --exit-status --arg name "$yardstick" 'any(.[]; .yardstick == $name and .yardstickValue > 0)' \
        "$work/figures.json" >/dev/null || mistake "nothing stands beside '$yardstick'"
done
jq --raw-output '.[] | select(.value == null) | "skipped: \(.name), \(.unit)"' "$work/figures.json"
finish
