#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# each verb of ./dev installs what it needs and no more, and quick tells what it leaves out
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

# What the tests of a folder run is built with that folder, for quick.
need "$build/CMakeCache.txt"
tested=0
for folder in "$build"/tests/*/; do
    folder=${folder%/}
    mapfile -t programs < <(ctest --test-dir "$folder" --show-only=json-v1 \
        | jq -r --arg build "$(realpath "$build")/" '.tests[].command[]? | select(startswith($build)) | ltrimstr($build)' | sort -u)
    ((${#programs[@]})) || continue
    built=$(ninja -C "$build" -t graph "tests/${folder##*/}/all")
    for program in "${programs[@]}"; do
        tested=$((tested + 1))
        grep -qF "[label=\"$program\"" <<<"$built" \
            || mistake "./dev quick ${folder##*/} does not build $program, which its tests run"
    done
done
((tested)) || mistake "no test runs anything"

# A copy of ./dev, on a machine where nothing is installed, nothing can be, and all that is asked for is written down.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
copy_dev "$work/project"
mkdir -p "$work/programs" "$work/project/tests/wifi"
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
    sort "$ASKED" | tr '\n' ' '
}

# asks VERB PACKAGE...
asks() {
    local verb words
    read -ra verb <<<"$1"
    words=$(asked "${verb[@]}")
    [[ $words == "$(printf '%s\n' "${@:2}" | sort -u | tr '\n' ' ')" ]] || mistake "./dev $1 asks for '$words'"
}

building=(cmake g++ libnm-dev ninja-build pkg-config qtbase5-dev zlib1g-dev)
screen=(fonts-dejavu-core fonts-noto-core qml-module-qtquick-controls2 qml-module-qtquick-layouts
    qml-module-qtquick-templates2 qml-module-qtquick-window2 qml-module-qtquick2 qml-module-qttest qtdeclarative5-dev
    qtdeclarative5-dev-tools qtquickcontrols2-5-dev qttools5-dev-tools xvfb)
asks demo "${building[@]}"
asks "install $work/prefix" "${building[@]}" "${screen[@]}"
asks "run morvekctl" "${building[@]}"
asks storm "${building[@]}"
asks build "${building[@]}" "${screen[@]}" valgrind
asks counts "${building[@]}" valgrind dbus strace
asks bench "${building[@]}" valgrind dbus strace crossbuild-essential-armhf pkg-config
asks abi "${building[@]}" valgrind abigail-tools
asks fuzz "${building[@]}" clang libclang-rt-dev llvm
asks "storm --sanitized" "${building[@]}" clang libclang-rt-dev llvm
asks arm "${building[@]}" crossbuild-essential-armhf pkg-config jq qemu-user abigail-tools

# Whoever adds a test adds what it starts: these lists grow.
for verb in quick "quick wifi" sanitize "test --coverage" test; do
    read -ra words <<<"$verb"
    packages=$(asked "${words[@]}")
    for package in "${building[@]}" "${screen[@]}" iproute2; do
        [[ " $packages" == *" $package "* ]] || mistake "./dev $verb does not ask for $package"
    done
    for package in crossbuild-essential-armhf qemu-user abigail-tools clang-tidy; do
        [[ $verb == test ]] && wanted=yes || wanted=no
        [[ " $packages" == *" $package "* ]] && is=yes || is=no
        [[ $is == "$wanted" ]] || mistake "./dev $verb asks for $package: $is"
    done
done

# Nothing is asked for to say that there is nothing to draw on.
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
packages=$(asked settings)
[[ -z $packages ]] || mistake "./dev settings asks for '$packages' where there is no display"
grep -qxF './dev: settings needs a display, and neither DISPLAY nor WAYLAND_DISPLAY names one' "$work/told" \
    || mistake "./dev settings says '$(<"$work/told")'"
DISPLAY=:7 asks settings "${building[@]}" "${screen[@]}"

# What is there is not asked for again.
cat >"$work/programs/dpkg-query" <<'END'
#!/bin/sh
printf '%s installed\n' g++ cmake ninja-build
echo 'qtbase5-dev config-files'
END
asks demo libnm-dev pkg-config qtbase5-dev zlib1g-dev

# A program that is built runs as it is.
mkdir -p "$work/project/build/tools"
# shellcheck disable=SC2016 # for the shell in there
printf '#!/bin/sh\necho "this is morvekctl $* in $PWD"\n' >"$work/project/build/tools/morvekctl"
chmod +x "$work/project/build/tools/morvekctl"
packages=$(asked run morvekctl interfaces)
[[ -z $packages ]] || mistake "./dev run asks for '$packages' to run what is built"
[[ $(<"$work/told") == "this is morvekctl interfaces in $PWD" ]] || mistake "./dev run does not run what is built: $(<"$work/told")"

# Neither is anything installed to say what cannot be done.
packages=$(asked quick nowhere)
[[ -z $packages ]] || mistake "./dev quick asks for '$packages' to say that there is no such folder"
grep -qxF './dev: tests/nowhere has no tests; these have: wifi' "$work/told" || mistake "./dev quick nowhere says '$(<"$work/told")'"

asked quick wifi netif >/dev/null
grep -qxF './dev: quick takes one folder: ./dev quick [FOLDER]' "$work/told" || mistake "./dev quick overlooks a folder"
packages=$(asked install)
[[ -z $packages ]] || mistake "./dev install asks for '$packages' to say that it is told no folder"
grep -qxF './dev: install where? ./dev install PREFIX' "$work/told" || mistake "./dev install says '$(<"$work/told")'"
packages=$(asked install --help)
[[ -z $packages ]] || mistake "./dev install --help would install into a folder of that name"

# What is built and run by quick, on a machine where everything is installed and one test fails.
for program in cmake ctest; do
    # shellcheck disable=SC2016 # for the shell in there
    printf '#!/bin/sh\necho "$(basename "$0") $*" >>"$ASKED"\n[ "$(basename "$0")" = cmake ] || exit 8\n' \
        >"$work/programs/$program"
    chmod +x "$work/programs/$program"
done
cat >"$work/programs/dpkg-query" <<'END'
#!/bin/sh
printf '%s installed\n' g++ cmake libnm-dev ninja-build pkg-config qtbase5-dev zlib1g-dev "$@"
END

# quick_runs TARGET FOLDER WORDS [FOLDER-OF-TESTS]
quick_runs() {
    local code=0
    rm -f "$ASKED"
    "$work/project/dev" quick "${@:4}" >"$work/told" 2>&1 || code=$?
    ((code == 8)) || mistake "./dev quick ${*:4} ends with code $code when a test has failed"
    grep -q -- "^cmake --build build .*--target $1 " "$ASKED" || mistake "./dev quick ${*:4} does not build $1"
    grep -q -- "^ctest --test-dir $2 " "$ASKED" || mistake "./dev quick ${*:4} does not run the tests in $2"
    [[ $(grep '^Left out' "$work/told") == "$3" ]] || mistake "./dev quick ${*:4} says '$(<"$work/told")'"
}
others="Left out: the checks, sanitizers, the fuzzing engine and 32-bit ARM, which ./dev test adds."
quick_runs tests/all build "$others"
quick_runs tests/wifi/all build/tests/wifi "Left out: the tests of the other folders."$'\n'"$others" wifi
quick_runs tests/wifi/all build/tests/wifi "Left out: the tests of the other folders."$'\n'"$others" tests/wifi/

finish
