# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# What the checks share: they run at the root of the project, collect mistakes and end with 1 when there are any.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."

# shellcheck disable=SC2034 # used by the checks
build=${BUILD:-build}
mistakes=0

# mistake TEXT...: tells what is wrong, and goes on
mistake() {
    printf '%s\n' "$*"
    mistakes=$((mistakes + 1))
}

# need FILE: stops when the build has not made it
need() {
    [[ -e $1 ]] || {
        echo "$1 is not there: ./dev build makes it"
        exit 1
    }
}

# copy_dev FOLDER: ./dev and what it reads at its start, where it may do no harm
copy_dev() {
    mkdir -p "$1/tests/checks"
    cp dev "$1"
    cp -r tests/checks/lib "$1/tests/checks"
}

# finish: the last line of a check
finish() {
    ((mistakes == 0))
}

# sources SUFFIX...: the files of the project with these suffixes, each followed by a zero byte
sources() {
    local suffix patterns=()
    for suffix in "$@"; do
        patterns+=("*$suffix")
    done
    git ls-files -z --cached --others --exclude-standard -- "${patterns[@]}"
}
