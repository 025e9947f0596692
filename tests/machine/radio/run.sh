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

code=0
rm -rf "$work/results"
export SECONDS_MAX=${SECONDS_MAX:-1500}
tests/machine/radio/guest.sh "$work" "$work/kernel" tests/machine/radio/cases.sh "$BUILD" "$@" \
    >"$work/output" 2>&1 || code=$?
count=0
for results in "$work"/results/tst_*.txt; do
    [[ -e $results ]] || break # the pattern itself
    count=$((count + 1))
    sed -n 's/^\(PASS\|FAIL!\|SKIP\|XFAIL\|XPASS\) *: \([^ ]*\).*/\1  \2/p' "$results"
    grep -q '^Totals: [1-9][0-9]* passed, 0 failed, 0 skipped' "$results" || {
        cat "$results"
        code=1
    }
done
((count == ${#programs[@]} || ($# && count))) || {
    tail -n 40 "$work/output"
    code=1
}
echo "the guest ended with code $code; $work holds what it left"
exit "$code"
