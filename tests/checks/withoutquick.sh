#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# without Qt's declarative packages, everything is built that does not use them
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/build.ninja"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

linked='^build .*: [A-Z]*_(EXECUTABLE|(SHARED|STATIC)_LIBRARY|SHARED_MODULE|MODULE_LIBRARY)_LINKER'
uses='libQt5(Qml|Quick)|QtQml|QtQuick'

grep -qE "$uses" "$build/build.ninja" || mistake "the build itself is without them"
cmake -S . -B "$work" -G Ninja -DCMAKE_DISABLE_FIND_PACKAGE_Qt5Qml=ON -DCMAKE_DISABLE_FIND_PACKAGE_Qt5Quick=ON \
    -DCMAKE_DISABLE_FIND_PACKAGE_Qt5QuickControls2=ON >/dev/null || mistake "nothing is built"
while IFS= read -r line; do
    mistake "built all the same: ${line%% |*}"
done < <(grep -E "$uses" "$work/build.ninja" || true)
diff <(grep -E "$linked" "$build/build.ninja" | grep -vE "$uses" | cut -d : -f 1 | sort) \
    <(grep -E "$linked" "$work/build.ninja" | cut -d : -f 1 | sort) || mistake "these are not built"
finish
