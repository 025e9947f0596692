#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs fuzz targets and tells how many inputs each of them has tried: see docs/fuzzing.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
# shellcheck source=tests/checks/lib/beside.bash
source tests/checks/lib/beside.bash

build="build-fuzz"

die() {
    echo "./dev fuzz: $*" >&2
    exit 2
}

# options: what every run of the target $1 is given
options() {
    printf '%s\n' "-artifact_prefix=$build/findings/$1-" -max_len=4096 -timeout=120 -rss_limit_mb=2048 -print_final_stats=1
    # Whatever a journal claims, readers take no more memory than its largest record.
    [[ $1 != journal* ]] || echo -malloc_limit_mb=32
    [[ ! -f tests/fuzz/$1.dict ]] || printf '%s\n' "-dict=tests/fuzz/$1.dict"
}

# fuzz TARGET LIMIT...: a run by number is the same every time, so it takes nothing over from runs before it.
fuzz() {
    local target=$1 corpus=$build/corpus/$1 log=$build/findings/$1.log limits=("${@:2}") given executed result=ok
    mkdir -p "$corpus" "$build/findings"
    if [[ ${limits[*]} == -runs=* ]]; then
        corpus=$(mktemp -d "$TMPDIR/corpus.XXXXXX")
        limits+=(-seed=1)
    fi
    mapfile -t given < <(options "$target")
    "$build/tests/fuzz/fuzz-$target" "${given[@]}" "${limits[@]}" "$corpus" "tests/fuzz/corpus/$target" >"$log" 2>&1 \
        || result=FOUND
    executed=$(sed -n 's/^stat::number_of_executed_units: //p' "$log")
    printf '%-5s  %-20s %10s executions\n' "$result" "$target" "${executed:-?}"
    [[ $result == ok ]] && return
    sed -n '/^INFO:\|^#[0-9]/!p' "$log" | head -n 60
    echo "What was found, and how to see it again: ./dev fuzz --replay FILE $target"
    return 1
}

limit=(-max_total_time=60)
replay=
while (($#)); do
    case $1 in
    --seconds) limit=("-max_total_time=${2:?}") && shift 2 ;;
    --runs) limit=("-runs=${2:?}") && shift 2 ;;
    --replay) replay=${2:?} && shift 2 ;;
    -*) die "unknown option $1 (known: --seconds N, --runs N, --replay FILE)" ;;
    *) break ;;
    esac
done

targets=("$@")
if ((!$#)); then
    mapfile -t targets < <(find tests/fuzz/corpus -mindepth 1 -maxdepth 1 -type d -printf '%f\n' | sort)
fi
for target in "${targets[@]}"; do
    [[ -x $build/tests/fuzz/fuzz-$target ]] || die "there is no target $target"
done
if [[ -n $replay ]]; then
    ((${#targets[@]} == 1 && $# == 1)) || die "replay with which target? ./dev fuzz --replay FILE TARGET"
    exec "$build/tests/fuzz/fuzz-${targets[0]}" "$replay"
fi

# In memory where there is such a place: some targets write a file for each input.
[[ ! -w /dev/shm ]] || TMPDIR=/dev/shm
TMPDIR=$(mktemp -d "${TMPDIR:-/tmp}/morvek-fuzz.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
for target in "${targets[@]}"; do
    beside fuzz "$target" "${limit[@]}"
done
beside_all
