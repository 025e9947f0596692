#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# each verb of ./dev installs what it needs, and no more
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

# A copy of ./dev, on a machine where nothing is installed, nothing can be, and all that is asked for is written down.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work"/{programs,project/tests/checks}
cp dev "$work/project"
cp -r tests/checks/lib "$work/project/tests/checks"
mkdir "$work/project/tests/wifi"
cp tests/wifi/CMakeLists.txt "$work/project/tests/wifi"
for program in dpkg-query apt-get sudo cmake; do
    printf '#!/bin/sh\nexit 1\n' >"$work/programs/$program"
done
cat >"$work/programs/apt-get" <<'END'
#!/bin/sh
[ "$1" = install ] || exit 0
shift
for word; do
    case $word in -*) ;; *) echo "$word" ;; esac
done >>"$ASKED"
exit 1
END
# shellcheck disable=SC2016 # for the shell in there
printf '#!/bin/sh\nexec "$@"\n' >"$work/programs/sudo"
chmod +x "$work"/programs/*
export PATH=$work/programs:$PATH ASKED=$work/asked

# asked VERB...: the packages that ./dev VERB... wants to be installed, in one line
asked() {
    rm -f "$ASKED"
    touch "$ASKED"
    "$work/project/dev" "$@" >"$work/told" 2>&1 || true
    sort -u "$ASKED" | tr '\n' ' '
}

# asks VERB PACKAGE...
asks() {
    local verb words
    read -ra verb <<<"$1"
    words=$(asked "${verb[@]}")
    [[ $words == "${*:2} " ]] || mistake "./dev $1 asks for '$words'"
}

building=(cmake g++ ninja-build qtbase5-dev zlib1g-dev)
asks demo "${building[@]}"
asks "install $work/prefix" "${building[@]}"
asks storm "${building[@]}"
asks build cmake dbus g++ ninja-build qtbase5-dev strace valgrind zlib1g-dev
asks "run morvekctl" cmake dbus g++ ninja-build qtbase5-dev strace valgrind zlib1g-dev
asks fuzz clang cmake g++ libclang-rt-dev llvm ninja-build qtbase5-dev zlib1g-dev
asks "storm --sanitized" clang cmake g++ libclang-rt-dev llvm ninja-build qtbase5-dev zlib1g-dev
asks arm abigail-tools cmake crossbuild-essential-armhf g++ jq ninja-build pkg-config qemu-user qtbase5-dev zlib1g-dev

# Whoever adds a test adds what it starts: these lists grow.
for verb in quick "quick wifi" sanitize "test --coverage" test; do
    read -ra words <<<"$verb"
    packages=$(asked "${words[@]}")
    for package in "${building[@]}" iproute2; do
        [[ " $packages" == *" $package "* ]] || mistake "./dev $verb does not ask for $package"
    done
    for package in crossbuild-essential-armhf qemu-user abigail-tools clang-tidy; do
        [[ $verb == test ]] && wanted=yes || wanted=no
        [[ " $packages" == *" $package "* ]] && is=yes || is=no
        [[ $is == "$wanted" ]] || mistake "./dev $verb asks for $package: $is"
    done
done

# What is there is not asked for again.
cat >"$work/programs/dpkg-query" <<'END'
#!/bin/sh
printf '%s installed\n' g++ cmake ninja-build
echo 'qtbase5-dev config-files'
END
asks demo qtbase5-dev zlib1g-dev

# A program that is built runs as it is.
mkdir -p "$work/project/build/tools"
printf '#!/bin/sh\necho "this is morvekctl $*"\n' >"$work/project/build/tools/morvekctl"
chmod +x "$work/project/build/tools/morvekctl"
packages=$(asked run morvekctl interfaces)
[[ -z $packages ]] || mistake "./dev run asks for '$packages' to run what is built"
[[ $(<"$work/told") == "this is morvekctl interfaces" ]] || mistake "./dev run does not run what is built: $(<"$work/told")"

# Neither is anything installed to say what cannot be done.
packages=$(asked quick nowhere)
[[ -z $packages ]] || mistake "./dev quick asks for '$packages' to say that there is no such folder"
grep -qxF './dev: tests/nowhere has no tests; these have: wifi' "$work/told" || mistake "./dev quick nowhere says '$(<"$work/told")'"
finish
