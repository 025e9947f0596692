#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# translations have all that is to be translated, and nothing else
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

programs=$(pkg-config --variable=host_bins Qt5Core)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
found=0
while IFS= read -r -d '' file; do
    found=$((found + 1))
    # What is translated there is what is written above it.
    folder=${file%/translations/*}
    cp "$file" "$work/new.ts"
    "$programs/lupdate" -silent -locations none -no-obsolete "$folder" -ts "$work/new.ts" || mistake "$file: not read"
    diff "$file" "$work/new.ts" || mistake "lupdate -locations none -no-obsolete $folder -ts $file"
    ! grep -nE 'type="(unfinished|vanished|obsolete)"|<translation></translation>' "$file" || mistake "$file: not finished"
done < <(sources .ts)
((found)) || mistake "there are no translations"
finish
