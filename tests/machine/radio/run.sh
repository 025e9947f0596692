#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the daemons over a real manager among simulated radios, in an emulated guest
#
#     tests/machine/radio/run.sh [CASE]...
#
# The folder radio of the build keeps the guest's kernel, and what the last run has left: its console, results and logs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."
PATH=$PATH:/usr/sbin:/sbin
BUILD=$(realpath "${BUILD:-build}")
export BUILD
work=$BUILD/radio
mkdir -p "$work"

skip() {
    echo "skipped: simulated radios: $*"
    exit 0
}
for program in NetworkManager apt-get busybox cpio dbus-daemon depmod dnsmasq hostapd ip iw nft nmcli \
    qemu-system-x86_64 wpa_supplicant; do
    command -v "$program" >/dev/null || skip "$program is not installed"
done
programs=(tst_radiostation tst_radiohotspot)
for program in "${programs[@]}"; do
    [[ -x $BUILD/tests/machine/radio/$program ]] || skip "the build has no network manager"
done

# Debian's kernel, unpacked and not installed. Those for virtual machines have no simulated radios.
if [[ ! -e $work/kernel/complete ]]; then
    image=$(apt-cache depends linux-image-amd64 2>/dev/null | awk '/Depends: linux-image/ {print $2; exit}')
    rm -rf "$work/kernel"
    mkdir -p "$work/kernel"
    (cd "$work" && [[ -n $image ]] && apt-get download "$image" && dpkg -x "$image"_*.deb kernel) >"$work/fetch.log" 2>&1 \
        || skip "the kernel of linux-image-amd64 cannot be fetched"
    rm -f "$work/$image"_*.deb
    depmod -b "$work/kernel" "$(ls "$work/kernel/lib/modules")"
    touch "$work/kernel/complete"
fi

# Each program has a guest of its own: what one leaves behind on purpose is not the other's.
code=0
ran=0
export SECONDS_MAX=${SECONDS_MAX:-800}
for program in "${programs[@]}"; do
    left=$work/$program
    rm -rf "$left"
    mkdir "$left"
    all=$(BENCH=$left "$BUILD/tests/machine/radio/$program" -functions 2>&1)
    cases=()
    for name in "$@"; do
        ! grep -qxF "${name%%:*}()" <<<"$all" || cases+=("$name")
    done
    (($# == 0 || ${#cases[@]})) || continue
    ran=$((ran + 1))
    tests/machine/radio/guest.sh "$left" "$work/kernel" tests/machine/radio/cases.sh "$BUILD" "$program" "${cases[@]}" \
        >"$left/output" 2>&1 || code=1
    results=$left/results/$program.txt
    if grep -qs '^Totals: [1-9][0-9]* passed, 0 failed, 0 skipped' "$results"; then
        sed -n 's/^\(PASS\) *: \([^ ]*\).*/\1  \2/p' "$results"
    else
        cat "$results" || tail -n 40 "$left/output"
        code=1
    fi
done
((ran)) || {
    echo "no program has these cases: $*"
    code=1
}
echo "what the guests have left is in $work"
exit "$code"
