#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# an application builds against the installed tree and runs
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/CMakeCache.txt"
work=$(mktemp -d)
daemon=
trap '[[ -z $daemon ]] || kill "$daemon" || true; rm -rf "$work"' EXIT

prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
cmp host/simulation/scenario.schema.json "$prefix/share/morvek/scenario.schema.json" \
    || mistake "the schema of scenarios is not installed"
libraries=$(dirname "$(find "$prefix" -name libmorvek-network.so)")
export LD_LIBRARY_PATH=$libraries

if ! cmake -S examples/interfaces -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null \
    || ! cmake --build "$work/cmake" >/dev/null; then
    mistake "examples/interfaces does not build with CMake"
fi

export PKG_CONFIG_PATH=$libraries/pkgconfig
read -ra flags < <(pkg-config --cflags --libs morvek-network)
g++ -fPIC -o "$work/with-pkg-config" examples/interfaces/main.cpp "${flags[@]}" \
    || mistake "examples/interfaces does not build with pkg-config"

# A unit's own platform libraries take the stand-in's place; here they are the installed ones. The contract can be tried
# on them.
if ! cmake -S . -B "$work/unit" -G Ninja -DMORVEK_PLATFORM="$prefix" >/dev/null \
    || ! cmake --build "$work/unit" --target morvek-network contract-update contract-statepeers >/dev/null \
    || ! ctest --test-dir "$work/unit" -R '^contract\.(update|statepeers)$' --no-tests=error >/dev/null; then
    mistake "the library and the contract's tests do not build and run against an installed platform"
fi

# What is installed finds itself: the application reads what the daemon publishes, and so does the tool.
mkdir -m 0700 "$work/root"
export ZOP_ROOT=$work/root
exec {output}< <(exec "$prefix/bin/morvek-hostd" --root "$ZOP_ROOT")
daemon=$!
read -r -t 20 ready <&"$output" || mistake "the installed daemon does not start"
[[ $ready == "ready: "* ]] || mistake "the installed daemon says '$ready'"
name=$("$prefix/bin/morvekctl" interfaces --json | jq -r '.[0].name')
[[ -n $name && $name != null ]] || mistake "the installed morvekctl lists nothing"
connected=$("$prefix/bin/morvekctl" wifi status --json | jq .connected)
[[ $connected == true ]] || mistake "the installed morvekctl does not see the Wi-Fi station connected"

for application in "$work/cmake/interfaces-example" "$work/with-pkg-config"; do
    [[ -x $application ]] || continue
    exec {output}< <(exec "$application")
    pid=$!
    read -r -t 20 line <&"$output" || line=
    [[ $line == "$name is "* ]] || mistake "$(basename "$application") says '$line'"
    kill "$pid" || mistake "$(basename "$application") has ended by itself"
done

# Shells and the manual find what is theirs.
share=$prefix/share
for program in morvekctl morvek-hostd morvek-zop; do
    cmp usage/completion/morvek.bash "$share/bash-completion/completions/$program" || mistake "$program: not for bash"
    cmp usage/completion/morvek.fish "$share/fish/vendor_completions.d/$program.fish" || mistake "$program: not for fish"
    [[ -s $share/man/man1/$program.1 ]] || mistake "$program: not in the manual"
done
cmp usage/completion/_morvek "$share/zsh/site-functions/_morvek" || mistake "nothing for zsh"
finish
