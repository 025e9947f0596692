#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the daemons over a real manager among simulated radios, in emulated guests
#
#     tests/machine/radio/run.sh [--short | CASE...]
#
# The folder radio of the build keeps the guests' kernel, and what the last run has left: consoles, results and logs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."
# shellcheck source=tests/checks/lib/beside.bash
source tests/checks/lib/beside.bash
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
[[ $(uname -m) == x86_64 ]] || skip "the guests run this machine's programs, and have an x86_64 processor"
programs=(tst_radiostation tst_radiohotspot tst_wifiradio tst_hotspotradio)
for program in "${programs[@]}"; do
    [[ -x $BUILD/tests/machine/radio/$program ]] || skip "the build has no network manager"
done

# Debian's kernel, unpacked and not installed. Those for virtual machines have no simulated radios.
if [[ ! -e $work/kernel/complete ]]; then
    image=$({ apt-cache depends linux-image-amd64 2>/dev/null || true; } | sed -n 's/^ *Depends: \(linux-image-.*\)/\1/p')
    rm -rf "$work/kernel"
    mkdir -p "$work/kernel"
    (cd "$work" && [[ -n $image ]] && apt-get download "$image" && dpkg -x "$image"_*.deb kernel) >"$work/fetch.log" 2>&1 \
        || skip "the kernel of linux-image-amd64 cannot be fetched"
    rm -f "$work/$image"_*.deb
    depmod -b "$work/kernel" "$(ls "$work/kernel/lib/modules")"
    touch "$work/kernel/complete"
fi

# Now and then a scan misses some radio. tst_radiostation scans until none is missing; this case wants all at once.
declare -A left_out=([tst_wifiradio]=scans)

# cases_of PROGRAM: those that are run of it
cases_of() {
    BENCH=$work "$BUILD/tests/machine/radio/$1" -functions 2>&1 | sed -n 's/^\([A-Za-z]*\)()$/\1/p' \
        | grep -vxF "${left_out[$1]:-}"
}

# in_guest PROGRAM [CASE]...: tells how they ended. Each has a guest of its own: what one leaves behind on purpose is not
# the other's.
# shellcheck disable=SC2317 # it is called beside others
in_guest() {
    local left=$work/$1 code=0
    local results=$left/results/$1.txt
    rm -rf "$left"
    mkdir "$left"
    tests/machine/radio/guest.sh "$left" "$work/kernel" tests/machine/radio/cases.sh "$BUILD" "$@" >"$left/output" 2>&1 \
        || code=1
    if grep -qs '^Totals: [1-9][0-9]* passed, 0 failed, 0 skipped' "$results"; then
        sed -n 's/^\(PASS\) *: \([^ ]*\).*/\1  \2/p' "$results"
    else
        cat "$results" || tail -n 40 "$left/output"
        code=1
    fi
    return "$code"
}

# What says most in a short time.
declare -A short=(
    [tst_radiostation]="scans joins:Open joins:Wpa2 wrongPasskey passkeysLeaveNoTrace"
    [tst_radiohotspot]="clientsReachTheOtherSideAndEachOther passphraseStaysWithTheManager"
    [tst_wifiradio]="joinsAndLeaves joinsAnOpenNetwork cancelsWhenLeaving"
)
export SECONDS_MAX=${SECONDS_MAX:-1800} # a slow machine takes its time
trap 'trap - TERM; kill 0' INT           # which those beside do not hear
ran=0
for program in "${programs[@]}"; do
    mapfile -t all < <(cases_of "$program")
    cases=()
    case ${1:-} in
    '') cases=("${all[@]}") ;;
    --short) read -ra cases <<<"${short[$program]:-}" ;;
    *)
        for name in "$@"; do
            [[ " ${all[*]} " != *" ${name%%:*} "* ]] || cases+=("$name")
        done
        ;;
    esac
    ((${#cases[@]})) || continue
    ran=$((ran + 1))
    beside in_guest "$program" "${cases[@]}"
done
code=0
beside_all || code=1
((ran)) || {
    echo "no program has these cases: $*"
    code=1
}
echo "what the guests have left is in $work"
exit "$code"
