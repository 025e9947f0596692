#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the scripts pass shellcheck
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

{ sources .sh .bash && printf 'dev\0.ci/run\0'; } | xargs -0 shellcheck -x || mistake "see above"
finish
