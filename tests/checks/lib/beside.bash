# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Runs commands side by side, one for each core at a time; JOBS sets how many.
jobs=${JOBS:-$(nproc)}
beside_running=0
beside_failed=0

# beside COMMAND...: runs it in the background, as soon as there is room
beside() {
    ((beside_running < jobs)) || beside_end
    "$@" &
    beside_running=$((beside_running + 1))
}

beside_end() {
    wait -n || beside_failed=1
    beside_running=$((beside_running - 1))
}

# beside_all: waits for all of them; false when one has failed
beside_all() {
    while ((beside_running)); do
        beside_end
    done
    ((beside_failed == 0))
}
