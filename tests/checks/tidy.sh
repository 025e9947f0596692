#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the sources pass clang-tidy
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/compile_commands.json"
# The standard is named because the compile commands leave it to GCC's default.
sources .cpp | grep -zE '^(src|host|tools)/' \
    | xargs -0 -n 4 -P "${JOBS:-$(nproc)}" clang-tidy -p "$build" --quiet --extra-arg-before=-std=c++17 \
        2> >(grep -vE '^[0-9]+ warnings? generated' >&2) || mistake "clang-tidy is not content"
finish
