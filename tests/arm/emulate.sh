#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs a program of the 32-bit ARM target, against the libraries of the folder SYSROOT.
#
# The emulator refuses the system call by which Qt starts a process, and Qt takes no notice: what it then believes to be
# the process's number is -1, which kill() takes for every process there is. So an emulated program sees no processes
# but its own, and has no rights, or it does not run.
#
# With --check it tells whether it can run programs here, and, of the build folder BUILD, that nothing but this runs its
# tests, and that an ordinary user may read what they need.
set -euo pipefail
umask 022 # also for the folders that are made below
project=$(realpath "$(dirname "$0")/../..")

usage() {
    echo "Usage: $0 SYSROOT PROGRAM [ARGUMENT]... | --check [BUILD]" >&2
    exit 2
}

isolate=(unshare --pid --ipc --mount --fork --kill-child --mount-proc)

check() {
    # shellcheck disable=SC2016 # for the shell in there
    if ((EUID != 0)) || [[ $("${isolate[@]}" sh -c 'echo $$') != 1 ]]; then
        echo "$0: programs are not emulated here: as root only, and where namespaces are permitted" >&2
        exit 1
    fi
    (($#)) || exit 0
    ctest --test-dir "$1" --show-only=json-v1 | jq --exit-status --arg wrapper "$(realpath "$0")" \
        '.tests | length > 0 and all(.command[0] == $wrapper)' >/dev/null || {
        echo "$0: there is a test in $1 that would run outside of it" >&2
        exit 1
    }
    local unreadable=('(' -type f ! -perm -004 -o -type d ! -perm -005 ')' -print -quit) closed
    closed=$(find "$project" -maxdepth 0 ! -perm -005)
    [[ -n $closed ]] || closed=$(find "$project"/{docs,host,tests} "$1" -name Testing -prune -o "${unreadable[@]}")
    [[ -z $closed ]] || {
        echo "$0: programs run as an ordinary user, to whom $closed is closed" >&2
        exit 1
    }
}

(($#)) || usage
if [[ $1 == --check ]]; then
    check "${@:2}"
    exit
fi
(($# >= 2)) || usage

((EUID == 0)) || {
    echo "$2 is not run: only root can give it processes of its own" >&2
    exit 1
}
export TMPDIR=/mnt HOME=/nonexistent
[[ $project != /mnt/* ]] || TMPDIR=/srv # an empty folder is put there, which must not hide the project
# The shell stays as process 1, or a program that aborts hangs.
# shellcheck disable=SC2016 # for the shell in there
exec "${isolate[@]}" sh -c '
    ordinary() {
        setpriv --reuid=65534 --regid=65534 --clear-groups --no-new-privs "$@"
    }
    if [ $$ -ne 1 ]; then
        echo "$5 is not run: it would see the processes of this machine" >&2
        exit 1
    fi
    # A folder above the project that is closed to others, such as the home of root, is replaced in here by one that
    # holds the project only.
    project=$1
    shift
    closed= folder=$project
    while [ "$folder" != / ]; do
        folder=$(dirname "$folder")
        ordinary test -x "$folder" || closed=$folder
    done
    if [ -n "$closed" ]; then
        mount --bind "$project" "$TMPDIR" && mount -t tmpfs -o mode=0755 none "$closed" \
            && mkdir -p "$project" && mount --move "$TMPDIR" "$project" || exit 1
    fi
    mount -t tmpfs -o mode=1777 none "$TMPDIR" || exit 1
    ordinary "$@"
    exit $?' sh "$project" qemu-arm -L "$(realpath "$1")" "$(realpath "$2")" "${@:3}"
