#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# each public header compiles alone, as C++11 and without warnings
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

read -ra qt < <(pkg-config --cflags Qt5Core Qt5Network)
flags=(-std=c++11 -fPIC -Wall -Wextra -Wpedantic -Werror -fsyntax-only -Iinclude -Iplatform "${qt[@]/#-I/-isystem}")

# Twice, so that a missing guard is noticed.
compile() {
    printf '#include <%s>\n#include <%s>\n' "$2" "$2" | "$1" "${flags[@]}" -x c++ -
}

for header in include/*.h platform/*.h; do
    for compiler in g++ clang++; do
        compile "$compiler" "${header##*/}" || mistake "$header: $compiler refuses it"
    done
done
finish
