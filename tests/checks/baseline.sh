#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# programs that were built against an earlier library run with this one
# shellcheck source-path=SCRIPTDIR
source "$(dirname "${BASH_SOURCE[0]}")/lib/check.bash"

libraries=("$(realpath "$build")/src" "$(realpath "$build")/host/platform")
for needed in "${libraries[0]}/libmorvek-network.so.1" "${libraries[1]}/libmorvek-platform.so.1" \
    "$build/host/hostd/morvek-hostd"; do
    need "$needed"
done
commit=$(<abi/baseline)
git cat-file -e "$commit^{tree}" 2>/dev/null || {
    echo "skipped: the history does not reach back to $commit, which abi/baseline names"
    exit
}
work=$(mktemp -d)
daemon=
trap '[[ -z $daemon ]] || kill "$daemon" || true; rm -rf "$work"' EXIT

# The library, the stand-in and the tool as they were, and an application with nothing but their headers. Only what they
# are linked with is needed, so they are built for speed of building.
mkdir "$work/source"
git archive "$commit" | tar -x -C "$work/source"
cmake -S "$work/source" -B "$work/build" -G Ninja -DBUILD_TESTING=OFF -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS=-O0 \
    -DCMAKE_SKIP_RPATH=ON >/dev/null
cmake --build "$work/build" --parallel "${JOBS:-$(nproc)}" --target morvekctl >"$work/log" || {
    cat "$work/log"
    exit 1
}
mkdir "$work/earlier"
cp "$work/build/tools/morvekctl" "$work/earlier"
"$(pkg-config --variable=host_bins Qt5Core)/moc" -o "$work/earlierprogram.moc" tests/abi/earlierprogram.cpp
read -ra flags < <(pkg-config --cflags --libs Qt5Core Qt5Network)
g++ -std=c++17 -O0 -fPIC -I"$work" -I"$work/source/include" -I"$work/source/platform" \
    -o "$work/earlier/earlierprogram" tests/abi/earlierprogram.cpp \
    -L"$work/build/src" -lmorvek-network -L"$work/build/host/platform" -lmorvek-platform "${flags[@]}"
rm -rf "$work/build" "$work/source" # so that they cannot be what runs

mkdir -m 0700 "$work/root"
export ZOP_ROOT=$work/root LC_ALL=C.UTF-8
exec {output}< <(exec "$build/host/hostd/morvek-hostd" --speed 20)
daemon=$!
read -r -t 20 ready <&"$output" || mistake "the daemon does not start"
[[ $ready == "ready: "* ]] || mistake "the daemon says '$ready'"

# earlier PROGRAM ARGUMENT...: runs it with today's libraries, and sees to it that these are what it runs with
earlier() {
    local library
    rm -f "$work"/loaded.*
    LD_LIBRARY_PATH=$(IFS=: && echo "${libraries[*]}") LD_DEBUG=files LD_DEBUG_OUTPUT=$work/loaded \
        timeout 60 "$work/earlier/$1" "${@:2}" || return
    for library in "${libraries[0]}/libmorvek-network.so.1" "${libraries[1]}/libmorvek-platform.so.1"; do
        grep -qF "calling init: $library" "$work"/loaded.* || echo "$1 does not run with $library"
    done
}

earlier morvekctl interfaces >"$work/interfaces" || mistake "morvekctl ended with code $?"
diff "$work/interfaces" - <<'END' || mistake "the earlier morvekctl does not tell today's interfaces"
NAME    TYPE      AVAILABLE  CONNECTED  PREFERRED  PRIORITY  MODE    ADDRESS           GATEWAY       PARENT
cell0   cellular  yes        yes        no         3         auto    100.64.3.9/30     100.64.3.10   -
eth0    wired     yes        yes        no         2         auto    10.20.0.40/16     10.20.0.1     -
eth0.5  wired     yes        yes        no         4         manual  172.16.5.2/24     172.16.5.1    eth0
wlan0   wifi      yes        yes        yes        1         auto    192.168.43.17/24  192.168.43.1  -
END

earlier earlierprogram >"$work/story" || mistake "earlierprogram ended with code $?"
diff "$work/story" - <<'END' || mistake "the earlier application does not see what it should"
interfaces: available 1, ready 1
cell0: type 4, priority 3, mode 0, gateway 100.64.3.10, parent ''
eth0: type 1, priority 2, mode 0, gateway 10.20.0.1, parent ''
eth0.5: type 1, priority 4, mode 1, gateway 172.16.5.1, parent 'eth0'
wlan0: type 2, priority 1, mode 0, gateway 192.168.43.1, parent ''
preferred: wlan0
configured: eth0
eth0 has 10.20.0.77
Wi-Fi: ready 1, powered 1, connected to Home
found: 7
Garage: 02:00:00:00:20:03, frequency 2412, protocols 28
valid 0
refused: -1 Wifi Configuration provided is not valid
valid 1
joined: Garage
profile: Morvek Car, band 1, clients 10, security 8
profile written
switched: 1
hotspot: on
end: gone
END

earlier morvekctl hotspot status --json >"$work/hotspot" || mistake "morvekctl ended with code $?"
jq --exit-status '.enabled and .profile.name == "Back seat"' "$work/hotspot" >/dev/null \
    || mistake "the earlier morvekctl tells another hotspot: $(<"$work/hotspot")"
finish
