#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# README.md shows the example as it is compiled, and its links lead somewhere
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

fence='```'
diff <(sed -n "/^${fence}cpp\$/,/^$fence\$/p" README.md | sed '1d;$d') <(sed 1d examples/interfaces/main.cpp) \
    || mistake "README.md does not show examples/interfaces/main.cpp"

for document in *.md docs/{,kit/}*.md; do
    while IFS= read -r link; do
        [[ -e $(dirname "$document")/$link ]] || mistake "$document: $link is not there"
    done < <(sed "/^$fence/,/^$fence/d" "$document" | grep -oE '\]\([^)#:]+' | sed 's/^](//')
done
finish
