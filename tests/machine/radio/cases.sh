#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# In the guest: sets the scene, then runs the test programs of BUILD; their results go to the folder RESULTS.
#
#     cases.sh BUILD [CASE]...
[[ -n ${BENCH:-} ]] || exec bash "${0%/*}/scene.sh" bash "$0" "$@"
export QTEST_FUNCTION_TIMEOUT=600000 # a wait in vain is told after three times its length
code=0
for program in tst_radiostation tst_radiohotspot; do
    all=$("$1/tests/machine/radio/$program" -functions 2>&1)
    cases=()
    for name in "${@:2}"; do
        ! grep -qxF "${name%%:*}()" <<<"$all" || cases+=("$name")
    done
    (($# == 1 || ${#cases[@]})) || continue
    timeout 600 "$1/tests/machine/radio/$program" -o "$RESULTS/$program.txt,txt" -o -,txt "${cases[@]}" || code=1
done
cp "$BENCH"/*.log "$RESULTS"
exit "$code"
