#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the sources pass clang-tidy
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/compile_commands.json"
sources .cpp | grep -zE '^(src|host|tools)/' \
    | xargs -0 -n 4 -P "${JOBS:-$(nproc)}" clang-tidy -p "$build" --quiet 2>/dev/null || mistake "see above"
finish
