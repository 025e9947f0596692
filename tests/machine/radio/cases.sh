#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# In the guest: sets the scene, then runs the test programs of BUILD; their results go to the folder RESULTS.
#
#     cases.sh BUILD [TEST-ARGUMENT]...
[[ -n ${BENCH:-} ]] || exec bash "${0%/*}/scene.sh" bash "$0" "$@"
code=0
for program in tst_radiostation tst_radiohotspot; do
    timeout 420 "$1/tests/machine/radio/$program" -o "$RESULTS/$program.txt,txt" -o -,txt "${@:2}" || code=1
done
cp "$BENCH"/*.log "$RESULTS"
exit "$code"
