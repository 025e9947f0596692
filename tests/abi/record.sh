#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Writes into FOLDER what the build in BUILD promises to programs that are built against it: the symbols of the library,
# the sizes of the public types, and all that can be told of both by the debug information. The same goes for the classes
# of the platform's library that public ones derive from.
set -euo pipefail

(($# == 2)) || {
    echo "Usage: $0 BUILD FOLDER" >&2
    exit 2
}
library=$1/src/libmorvek-network.so.1
platform=$1/host/platform/libmorvek-platform.so.1
folder=$(dirname "${BASH_SOURCE[0]}")
sizes=$(find "$1/tests/abi" -name 'sizes.cpp.o')
mkdir -p "$2"

# NAME SIZE ALIGNMENT, in bytes
nm --format=posix --radix=d "$sizes" | awk '
    $1 ~ /^sizeof_/ { size[substr($1, 8)] = $4 }
    $1 ~ /^alignof_/ { alignment[substr($1, 9)] = $4 }
    END { for (name in size) print name, size[name] + 0, alignment[name] + 0 }' | LC_ALL=C sort >"$2/sizes.txt"

nm --dynamic --defined-only --format=posix "$library" | awk '{ print $1 }' | c++filt | LC_ALL=C sort -u \
    >"$2/symbols.txt"

# describe LIBRARY FILE [ARGUMENT]...: of Qt's types, the names will do. What would tell where and by whom it was built is
# left out.
describe() {
    abidw --suppressions "$folder/public.suppr" --exported-interfaces-only --drop-undefined-syms --no-corpus-path \
        --no-comp-dir-path --no-show-locs --type-id-style hash --out-file "$2" "${@:3}" "$1"
    sed -i "s,path='[^']*/\(src\|host\)/,path='\1/," "$2"
}
describe "$library" "$2/morvek-network.abi"
describe "$platform" "$2/morvek-platform.abi" --suppressions "$folder/bases.suppr"

# abidiff overlooks enumerators that are only used as the argument of a template.
sed -n "s/.*<enumerator name='\([^']*\)' value='\([^']*\)'.*/\1 \2/p" "$2/morvek-network.abi" | LC_ALL=C sort -u \
    >"$2/enumerators.txt"
