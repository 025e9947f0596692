#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the binary interface is the recorded one
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

library=$build/src/libmorvek-network.so.1
need "$library"
case $(LC_ALL=C readelf --file-header "$library" | sed -n 's/^ *Machine: *//p') in
*X86-64) target=x86_64 ;;
ARM) target=armhf ;;
*) target=unknown ;;
esac
record=abi/$target
[[ -d $record ]] || {
    echo "skipped: nothing is recorded for this target"
    exit
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tests/abi/record.sh "$build" "$work/$target"

for list in symbols.txt sizes.txt enumerators.txt; do
    diff -u "$record/$list" "$work/$target/$list" || mistake "$record/$list: recorded above with -, built with +"
done
for list in morvek-network.abi morvek-platform.abi; do
    abidiff --harmless "$record/$list" "$work/$target/$list" \
        || mistake "$record/$list: programs that were built earlier see another library"
done
((mistakes == 0)) || echo "If that is meant, './dev abi' records it: docs/binary-interface.md tells when it may be meant."
finish
