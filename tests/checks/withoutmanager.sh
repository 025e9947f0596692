#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# without libnm, everything is built but what asks a network manager
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/build.ninja"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

grep -q libnm "$build/build.ninja" || mistake "the build itself is without it"
cmake -S . -B "$work" -G Ninja -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON >/dev/null || mistake "nothing is built"
! grep -q libnm "$work/build.ninja" || mistake "libnm is used all the same"
# programs FOLDER: what is linked there, but for tests
programs() {
    ninja -C "$1" -t targets all | sed -nE 's,^((host|kit|src|tools)/[^:]*): CXX_.*LINKER.*,\1,p' | sort
}
diff <(programs "$build") <(programs "$work") || mistake "these are not built"
finish
