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
for name in "update to slot" "request to result" "scan published to success" "longest event of a scan" \
    "each of 2000 access points" "profile fetched" "a pending fetch takes" "a finished fetch keeps" \
    "one update, 1000 interfaces" "start-up, 1000 interfaces" "a request after 10000" \
    "a finished command keeps" "an application with the service"; do
    jq --exit-status --arg name "$name" 'any(.[]; (.name | startswith($name)) and .value > 0)' \
        "$work/figures.json" >/dev/null || mistake "no figure for '$name'"
done
finish
