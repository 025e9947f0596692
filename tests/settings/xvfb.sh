#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# xvfb.sh PROGRAM [ARGUMENT]...: runs it in windows of a display of its own, which nobody sees
set -euo pipefail

exec {number}< <(exec Xvfb -displayfd 1 -screen 0 1400x1400x24 -nolisten tcp 2>/dev/null)
server=$!
trap 'kill $server 2>/dev/null || true' EXIT
read -r -t 20 display <&"$number" || {
    echo "xvfb.sh: Xvfb does not start" >&2
    exit 1
}
DISPLAY=:$display QT_QPA_PLATFORM=xcb "$@"
