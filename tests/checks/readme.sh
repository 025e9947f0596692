#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# documents show examples as they are compiled, and their links lead somewhere
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

fence='```'
diff <(sed -n "/^${fence}cpp\$/,/^$fence\$/p" README.md | sed '1d;$d') <(sed 1d examples/interfaces/main.cpp) \
    || mistake "README.md does not show examples/interfaces/main.cpp"

# A block below nothing but a link to an example is that example.
shown=0
for document in docs/*.md; do
    while read -r line file; do
        shown=$((shown + 1))
        diff <(sed -n "$((line + 3)),/^$fence\$/p" "$document" | sed '$d') <(sed 1d "$file") \
            || mistake "$document does not show $file"
    done < <(sed -nE 's,^\[(examples/[^]]*)\]\(../\1\)$,\1,p;t;s/.*//p' "$document" | grep -n . | tr : ' ')
done
((shown >= 11)) || mistake "the documents show $shown examples only"

for document in *.md docs/{,kit/}*.md; do
    while IFS= read -r link; do
        [[ -e $(dirname "$document")/$link ]] || mistake "$document: $link is not there"
    done < <(sed "/^$fence/,/^$fence/d" "$document" | grep -oE '\]\([^)#:]+' | sed 's/^](//')
done
finish
