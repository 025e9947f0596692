#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# coverage.sh DIRECTORY: tells how much of src/ the tests ran that were built there. Fails below 98 % of the lines or
# 90 % of the branches, and when a function has more lines that no test runs than tests/uncovered.txt gives a reason for.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

directory=$1
explanations=tests/uncovered.txt
lines_wanted=98
branches_wanted=90

llvm-profdata merge -sparse "$directory"/profiles/*.profraw -o "$directory/tests.profdata"
llvm-cov export -format=lcov -instr-profile="$directory/tests.profdata" "$directory/src/libmorvek-network.so" \
    >"$directory/tests.lcov"

# A line for each file of src/, "uncovered FILE FUNCTION" for a line that nothing ran, "half FILE LINE" for a
# condition that was never false, or never true, and "total" with the sums and percentages.
counted=$(c++filt <"$directory/tests.lcov" | awk -F'[:,]' -v source="$PWD/src/" '
    function percent(part, whole) { return whole ? 100 * part / whole : 100 }
    /^SF:/ {
        file = substr($0, 4)
        gsub("/[^/]+/[.][.]/", "/", file)
        wanted = index(file, source) == 1
        sub(source, "src/", file)
        split("", starts)
        split("", conditions)
        found = hit = outcomes = taken = 0
    }
    !wanted { next }
    /^FN:/ {
        name = $0
        sub(/^FN:[0-9]+,/, "", name)
        sub(/^[^,]*[.](cpp|h):/, "", name)
        sub(/\(.*/, "", name)
        starts[$2] = name
    }
    /^DA:/ {
        found++
        if ($3 > 0) {
            hit++
        } else {
            for (start = $2; start > 0 && !(start in starts); --start) { }
            print "uncovered", file, starts[start]
        }
    }
    /^BRDA:/ { # a template has a condition for each of its instances
        key = $2 "," $3 "," $4
        if (!(key in conditions))
            outcomes++
        if ($5 != "-" && $5 > 0 && !conditions[key]) {
            taken++
            conditions[key] = 1
        } else if (!(key in conditions)) {
            conditions[key] = 0
        }
    }
    /^end_of_record/ {
        printf "%-52s %4d of %4d lines  %4d of %4d branches\n", file, hit, found, taken, outcomes
        for (key in conditions) {
            if (!conditions[key]) {
                split(key, part, ",")
                print "half", file, part[1]
            }
        }
        all_found += found; all_hit += hit; all_outcomes += outcomes; all_taken += taken
    }
    END {
        printf "total %d %d %d %d %.2f %.2f\n", all_hit, all_found, all_taken, all_outcomes,
            percent(all_hit, all_found), percent(all_taken, all_outcomes)
    }')

grep -vE '^(uncovered|half|total) ' <<<"$counted" | sort
read -r _ hit found taken outcomes lines branches < <(grep '^total ' <<<"$counted")
echo "lines: $hit of $found, $lines %; branches: $taken of $outcomes, $branches %"

while read -r _ file line; do
    echo "one way only: $file:$line: $(sed -n "${line}s/^ *//p" "$file")"
done < <(grep '^half ' <<<"$counted" | sort -u || true)
mistakes=0
# COUNT FILE FUNCTION of what is not run, and of what is explained.
not_run=$(sed -n 's/^uncovered //p' <<<"$counted" | sort | uniq -c)
while read -r lines_not_run file function; do
    explained=$(awk -v name="$function" '$1 + 0 > 0 && index($0, " " name " -- ") { print; exit }' "$explanations")
    if [[ ${explained%% *} == "$lines_not_run" ]]; then
        echo "not run: $file: $explained"
    elif [[ -n $function ]]; then
        echo "not run, and $explanations does not say why: $file: $lines_not_run lines of $function"
        mistakes=1
    fi
done <<<"$not_run"
while read -r _ function; do
    grep -qF -- " ${function%% -- *}" <<<"$not_run" || {
        echo "$explanations explains what is run: $function"
        mistakes=1
    }
done < <(grep -vE '^(#|$)' "$explanations")
awk -v lines="$lines" -v branches="$branches" -v l=$lines_wanted -v b=$branches_wanted \
    'BEGIN { exit lines < l || branches < b }' || {
    echo "wanted: $lines_wanted % of the lines and $branches_wanted % of the branches"
    mistakes=1
}
((mistakes == 0))
