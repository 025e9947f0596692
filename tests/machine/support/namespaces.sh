#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# namespaces.sh COMMAND [ARGUMENT]...: runs it in namespaces of its own, where it may do what it likes to networks:
# with the interfaces vt0 and vt1, whose other ends vp0 (10.9.0.1/24) and vp1 (10.9.1.1/24) are in the namespace "peer",
# and with a network manager's folders empty. BENCH names a folder for files. All of it ends with the command, or with
# this script when that is killed; the machine is not touched. Where this is not permitted, it says why: code 77.
set -euo pipefail
PATH=$PATH:/usr/sbin:/sbin

skip() {
    echo "skipped: $*"
    exit 77
}

if [[ ${1:-} != --inside ]]; then
    for program in unshare nsenter ip dbus-daemon NetworkManager nmcli dnsmasq; do
        command -v "$program" >/dev/null || skip "there is no $program on this machine"
    done
    options=(--mount --net --pid --fork --kill-child --mount-proc)
    ((EUID == 0)) || options+=(--map-root-user)
    obstacle=$(unshare "${options[@]}" true 2>&1) || skip "namespaces are not permitted here: $obstacle"
    exec unshare "${options[@]}" "$0" --inside "$@"
fi
shift

# Without udev the manager leaves all devices alone, unless /sys is read-only.
mount -t sysfs -o ro sysfs /sys || skip "the namespace's interfaces cannot be seen below /sys"
for folder in /run /var/lib/NetworkManager /etc/NetworkManager; do
    mount -t tmpfs tmpfs "$folder"
done
export BENCH=/run/bench TMPDIR=/run/bench/tmp
mkdir -p /run/netns "$TMPDIR"

ip netns add peer
for i in 0 1; do
    ip link add "vt$i" type veth peer name "vp$i" netns peer || skip "the kernel has no pairs of interfaces"
    ip -n peer addr add "10.9.$i.1/24" dev "vp$i"
    ip -n peer link set "vp$i" up
done
ip link set lo up
ip -n peer link set lo up

# Not by exec: what the command leaves behind has a parent, and the command takes signals as anywhere else.
code=0
"$@" || code=$?
exit "$code"
