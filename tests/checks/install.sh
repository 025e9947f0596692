#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# what is installed runs where it has been moved to, and applications build against it
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

need "$build/CMakeCache.txt"
work=$(mktemp -d)
daemon=
trap '[[ -z $daemon ]] || kill "$daemon" || true; rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH MORVEK_HOSTD

# ./dev installs what is built; here it must not build, as others look at the build meanwhile.
copy_dev "$work/project"
mkdir "$work/programs"
ln -s "$(realpath "$build")" "$work/project/build"
cat >"$work/programs/cmake" <<END
#!/bin/sh
[ "\$1" != --install ] || exec "$(command -v cmake)" "\$@"
END
chmod +x "$work/programs/cmake"
(cd "$work" && PATH=$work/programs:$PATH project/dev install first/place) >"$work/told"
[[ $(<"$work/told") == "Installed into $work/first/place; docs/installing.md tells how to use it." ]] \
    || mistake "./dev install says '$(<"$work/told")'"

# An application that is put beside the programs moves with them.
application=$work/first/place/bin/with-pkg-config
libraries=$(dirname "$(find "$work/first/place" -name libmorvek-network.so)")
from_programs=\$ORIGIN/$(realpath --relative-to "$work/first/place/bin" "$libraries")
read -ra flags < <(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs morvek-network)
g++ -fPIC -o "$application" examples/interfaces/main.cpp "${flags[@]}" \
    "-Wl,-rpath,$from_programs" \
    || mistake "examples/interfaces does not build with pkg-config"

prefix=$work/moved
mv "$work/first/place" "$prefix"
cmp host/simulation/scenario.schema.json "$prefix/share/morvek/scenario.schema.json" \
    || mistake "the schema of scenarios is not installed"
while IFS= read -r file; do
    mistake "the installed $file names a folder of the build, or where it was installed"
done < <(grep -rIlF -e "$PWD" -e "$work/first" "$prefix" || true)

# searches FILE PLACE: whether it looks for libraries there, and nowhere else
searches() {
    local places
    places=$(readelf --dynamic "$1" | sed -n 's/.*R\(UN\)\?PATH.*\[\(.*\)\]/\2/p')
    [[ $places == "$2" ]] || mistake "the installed $1 looks for its libraries in '$places'"
}
for program in "$prefix"/bin/morvek*; do
    searches "$program" "$from_programs"
done
for library in "$prefix"/lib*/libmorvek-*.so.1; do
    searches "$library" "\$ORIGIN"
done
for module in "$prefix"/lib*/qml/Morvek/*/lib*.so; do
    searches "$module" "\$ORIGIN/../../.."
done

for example in first interfaces settings statusbar wifitile; do
    if ! cmake -S "examples/$example" -B "$work/$example" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null \
        || ! cmake --build "$work/$example" >/dev/null; then
        mistake "examples/$example does not build with CMake"
    fi
done

# The test of an application finds the daemons that were installed with the test kit, wherever that is.
"$work/wifitile/wifitile-example" >"$work/told" 2>&1 || mistake "the test of examples/wifitile fails: $(<"$work/told")"
for module in "$prefix"/lib*/qml/Morvek/Network; do
    [[ -d $module ]] || continue # without Qt's declarative packages
    QML2_IMPORT_PATH=${module%/Morvek/Network} QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software \
        "$(pkg-config --variable=host_bins Qt5Core)/qmltestrunner" -input examples/wifitile/tst_wifitile.qml \
        >"$work/told" 2>&1 || mistake "the test of examples/wifitile in QML fails: $(<"$work/told")"
done
read -ra flags < <(PKG_CONFIG_PATH=$(echo "$prefix"/lib*/pkgconfig) pkg-config --cflags --libs morvek-test-kit)
g++ -fPIC -o "$work/with-test-kit" tests/testkit/shortlived.cpp "${flags[@]}" \
    "-Wl,-rpath,$(echo "$prefix"/lib*)" || mistake "a test does not build with pkg-config"
read -r root _ < <("$work/with-test-kit" exit)
[[ $root == */morvek-unit-*/root ]] || mistake "a test that is built with pkg-config does not start its unit"

# A unit's own platform libraries take the stand-in's place; here they are the installed ones. The contract can be tried
# on them. Its folders are its own, too.
if ! cmake -S . -B "$work/unit" -G Ninja -DMORVEK_PLATFORM="$prefix" -DCMAKE_INSTALL_LIBDIR=lib/unit \
    -DCMAKE_INSTALL_BINDIR=unit/bin >/dev/null \
    || ! cmake --build "$work/unit" --target morvek-network contract-update contract-statepeers >/dev/null \
    || ! ctest --test-dir "$work/unit" -R '^contract\.(update|statepeers)$' --no-tests=error >/dev/null; then
    mistake "the library and the contract's tests do not build and run against an installed platform"
fi
# shellcheck disable=SC2016 # as the loader reads it
grep -qF 'NEW_RPATH "\$ORIGIN/../../lib/unit"' "$work/unit/tools/cmake_install.cmake" \
    || mistake "programs in other folders would not find the libraries"

cmake -DCMAKE_INSTALL_PREFIX="$work/image" -P "$work/unit/src/cmake_install.cmake" >/dev/null
searches "$work/image/lib/unit/libmorvek-network.so.1" "\$ORIGIN"

# What is installed finds itself: the applications read what the daemon publishes, and so do the tools.
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
"$prefix/bin/morvek-zop" show /zop/services/wifi/status | grep wifi_power >/dev/null \
    || mistake "the installed morvek-zop does not show the Wi-Fi status"

# The user's unit tells systemd when everything is published. It has the program from the folders that systemd knows,
# wherever it was installed.
unit=$prefix/lib/systemd/user/morvek-hostd.service
for line in Type=notify "ExecStart=morvek-hostd --network manager" TimeoutStopSec=20 Restart=on-failure RestartSec=5 \
    RestartPreventExitStatus=2 WantedBy=default.target; do
    grep -qxF -e "$line" "$unit" || mistake "the user's unit does not say $line"
done
if command -v systemd-analyze >/dev/null; then
    sed "s,^ExecStart=,&$prefix/bin/," "$unit" >"$work/morvek-hostd.service"
    XDG_RUNTIME_DIR=$work systemd-analyze --user verify "$work/morvek-hostd.service" >"$work/told" 2>&1 || true
    [[ ! -s $work/told ]] || mistake "systemd does not take the user's unit: $(<"$work/told")"
fi

# its_libraries PID: the folders that it has them from
its_libraries() {
    sed -n 's,.* \(/.*\)/libmorvek-[a-z]*\.so\..*,\1,p' "/proc/$1/maps" | sort -u
}

libraries=$(its_libraries "$daemon")
[[ $libraries == "$prefix"/lib* ]] || mistake "the installed daemon has its libraries from '$libraries'"
while read -r application words; do
    exec {output}< <(exec "$application")
    pid=$!
    read -r -t 20 line <&"$output" || line=
    [[ $line == "$words"* ]] || mistake "$(basename "$application") says '$line'"
    [[ $(its_libraries "$pid") == "$libraries" ]] || mistake "$(basename "$application") does not run with what is installed"
    kill "$pid" || mistake "$(basename "$application") has ended by itself"
done <<END
$prefix/bin/with-pkg-config $name is
$work/interfaces/interfaces-example $name is
$work/statusbar/statusbar-example wlan0 192.168.43.17 |
END

# QML finds the module and its types there, and the sentences of the kit their translations.
for file in "$libraries"/qml/Morvek/Network/{qmldir,plugins.qmltypes} \
    "$prefix"/share/morvek/translations/morvek-network-kit_de.qm; do
    [[ -s $file ]] || mistake "$file is not installed"
done
export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software XDG_RUNTIME_DIR=$work QML2_IMPORT_PATH=$libraries/qml
timeout 20 "$(pkg-config --variable=host_bins Qt5Core)/qmlscene" --quit examples/first/qml/step1.qml \
    || mistake "the installed QML module is not found"

# Shells and the manual find what is theirs.
share=$prefix/share
for program in morvekctl morvek-hostd morvek-zop; do
    cmp usage/completion/morvek.bash "$share/bash-completion/completions/$program" || mistake "$program: not for bash"
    cmp usage/completion/morvek.fish "$share/fish/vendor_completions.d/$program.fish" || mistake "$program: not for fish"
    [[ -s $share/man/man1/$program.1 ]] || mistake "$program: not in the manual"
done
cmp usage/completion/_morvek "$share/zsh/site-functions/_morvek" || mistake "nothing for zsh"
finish
