#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# clang-format leaves every source file as it is
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

sources .h .cpp | xargs -0 clang-format --dry-run -Werror || mistake "run clang-format -i on these files"
finish
