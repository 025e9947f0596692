#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# In the guest: sets the scene, then runs a test program of BUILD; its results go to the folder RESULTS.
#
#     cases.sh BUILD PROGRAM [CASE]...
[[ -n ${BENCH:-} ]] || exec bash "${0%/*}/scene.sh" bash "$0" "$@"
export MORVEK_PATIENCE=120000 QTEST_FUNCTION_TIMEOUT=600000 # a wait in vain is told after three times its length
code=0
timeout 1700 "$1/tests/machine/radio/$2" -o "$RESULTS/$2.txt,txt" -o -,txt "${@:3}" || code=$?
cp "$BENCH"/*.log "$RESULTS"
exit "$code"
