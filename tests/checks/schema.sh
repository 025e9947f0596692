#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the schema of scenarios refuses what morvek-hostd refuses, and nothing else
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

hostd=$build/host/hostd/morvek-hostd
verdicts=$build/tests/simulation/scenarioverdicts
need "$hostd"
need "$verdicts"

shipped=(host/simulation/scenarios/*.json)
for file in "${shipped[@]}" tests/morvekctl/scenarios/*.json; do
    said=$("$hostd" --check --scenario "$file" 2>&1) || true
    [[ $said == "ok: $file" ]] || mistake "$file: $said"
done
for file in "${shipped[@]}"; do
    [[ $(jq -r '."$schema"' "$file") == ../scenario.schema.json ]] || mistake "$file does not name its schema"
done

# The distribution's, as its validator is.
/usr/bin/python3 tests/checks/lib/schema.py "$verdicts" || mistake "schema and reader disagree"
finish
