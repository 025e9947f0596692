#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# no event costs more instructions or system calls than bench/counts records
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

bench=$build/bench/morvek-bench
need "$bench"
grep -qx 'CMAKE_BUILD_TYPE:[A-Z]*=RelWithDebInfo' "$build/CMakeCache.txt" || mistake "$build is not built as it ships"
"$bench" counts --compare "bench/counts/$(uname -m).json" || mistake "what was meant to cost more: ./dev counts records it"
finish
