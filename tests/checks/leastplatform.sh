#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the library and the kit ask nothing of the platform but what tests/leastplatform declares
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

read -ra qt < <(pkg-config --cflags Qt5Core Qt5Network)
flags=(-std=c++17 -fPIC -Wall -Wextra -Wpedantic -Werror -fsyntax-only "${qt[@]/#-I/-isystem}"
    -Itests/leastplatform -Iinclude -Isrc/frame -Isrc/hotspot -Isrc/netif -Isrc/wifi
    -Ikit/include -Ikit/frame -Ikit/hotspot -Ikit/netif -Ikit/wifi)

# The public headers, all at once, and each source.
sources .h | grep -zE '^(kit/)?include/' | xargs -0 printf '#include "%s"\n' | clang++ "${flags[@]}" -I. -x c++ - \
    || mistake "a public header asks for more"
sources .cpp | grep -z '^src/' | xargs -0 -n 4 -P "${JOBS:-$(nproc)}" clang++ "${flags[@]}" \
    || mistake "a source asks for more"
# The kit sees what applications do, too.
sources .cpp | grep -z '^kit/' | xargs -0 -n 4 -P "${JOBS:-$(nproc)}" clang++ "${flags[@]}" -DFOR_APPLICATIONS \
    || mistake "a source of the kit asks for more"

# The recorder asks for values' bytes besides, as it can be built on a unit.
sources .cpp | grep -z '^host/recorder/' | xargs -0 -n 4 -P "${JOBS:-$(nproc)}" \
    clang++ "${flags[@]}" -Ihost/recorder -DFOR_RECORDER || mistake "the recorder asks for more"

# Of the tool, what asks for the stand-in's own header does without it.
clang++ "${flags[@]}" -Iplatform tools/commandline/rootstate.cpp || mistake "the tool needs the stand-in"
finish
