#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# storm.sh BUILD [--seed N] [--rounds N] [STORM]...: throws storms, each in a process of its own
set -euo pipefail

program=$1/tests/storm/morvek-storm
shift
seed=() rounds='' names=()
while (($#)); do
    case $1 in
    --seed)
        seed=(--seed "${2:?--seed needs a number}")
        shift 2
        ;;
    --rounds)
        rounds=${2:?--rounds needs a number}
        shift 2
        ;;
    -*)
        echo "unknown option '$1'; there are --sanitized (first), --seed N and --rounds N" >&2
        exit 2
        ;;
    *)
        names+=("$1")
        shift
        ;;
    esac
done

# What the program lists: NAME DESCRIPTION (ROUNDS OF A SHORT RUN).
list=$("$program")
if ((${#names[@]} == 0)); then
    mapfile -t names < <(cut -d ' ' -f 1 <<<"$list")
fi
failed=0
for name in "${names[@]}"; do
    if ! line=$(grep -E "^$name " <<<"$list"); then
        printf "there is no storm '%s', but these:\n%s\n" "$name" "$list" >&2
        exit 2
    fi
    usual=${line##*\(}
    usual=${usual%\)}
    code=0
    "$program" "$name" "${seed[@]}" --rounds "${rounds:-$((10 * usual))}" || code=$?
    ((code == 0 || code == 77)) || failed=$((failed + 1))
done
((failed == 0)) || echo "$failed of ${#names[@]} storms failed"
exit $((failed > 0))
