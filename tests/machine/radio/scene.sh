#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# In the guest: access points, what hands out addresses behind them, and a unit with the radio wlan0 that is ready for a
# manager; then COMMAND, with BENCH, the folder for everybody's files.
#
#     scene.sh COMMAND [ARGUMENT]...
#
# In the network namespace "ap", wlan1 serves Open, Wpa2, Mixed, Wpa3 and Owe on channel 1, wlan2 and wlan3 serve House
# (WPA2) on channels 6 and 11; behind all of them is one server for 10.5.0.0/24. In "client" and "passenger" are wlan4
# and wlan5. In "world" is 10.9.0.1, which the unit reaches through up0, and which knows no way to the unit's hotspot.
# Files named own-* hold the passkeys of those around the unit.
set -u
export BENCH=/run/bench
mkdir -p /run/netns "$BENCH" /run/NetworkManager /var/lib/NetworkManager
cd "$BENCH" || exit 1

say() { echo "[$(cut -d' ' -f1 /proc/uptime)] $*"; }
# until_true SECONDS COMMAND...
until_true() {
    local end=$((SECONDS + $1))
    until "${@:2}"; do
        ((SECONDS < end)) || {
            say "not within $1 s: ${*:2}"
            return 1
        }
        sleep 0.1
    done
}

ip link set lo up
modprobe mac80211_hwsim radios=6 || exit 1
for space in ap client passenger world; do
    ip netns add "$space"
    ip -n "$space" link set lo up
done
for radio in 1 2 3; do iw phy "phy$radio" set netns name ap; done
iw phy phy4 set netns name client
iw phy phy5 set netns name passenger
ip link add up0 type veth peer name down0 netns world
ip -n world addr add 10.9.0.1/24 dev down0
ip -n world link set down0 up
ip -n ap link add bridge0 type bridge
ip -n ap addr add 10.5.0.1/24 dev bridge0
ip -n ap link set bridge0 up

# network NAME KEY-MANAGEMENT PASSPHRASE [LINE]...
network() {
    printf '%s\n' "ssid=$1" bridge=bridge0 "${@:4}"
    [[ -z $2 ]] || printf '%s\n' wpa=2 "wpa_key_mgmt=$2" rsn_pairwise=CCMP
    [[ -z $3 ]] || printf '%s\n' "wpa_passphrase=$3"
}
# radio INTERFACE CHANNEL
radio() {
    printf '%s\n' "interface=$1" driver=nl80211 hw_mode=g "channel=$2" "ctrl_interface=$BENCH/hostapd"
}
{
    radio wlan1 1
    network Open "" ""
    echo bss=wlan1a
    network Wpa2 WPA-PSK passkey-of-wpa2
    echo bss=wlan1b
    network Mixed "WPA-PSK SAE" passkey-of-mixed ieee80211w=1
    echo bss=wlan1c
    network Wpa3 SAE passkey-of-wpa3 ieee80211w=2
    echo bss=wlan1d
    network Owe OWE "" ieee80211w=2
} >own-wlan1.conf
for number in 2 3; do
    radio "wlan$number" "$((number * 5 - 4))"
    network House WPA-PSK passkey-of-house bss_transition=1
done | csplit --quiet --prefix=own- - '/^interface=wlan3/'
mv own-00 own-wlan2.conf
mv own-01 own-wlan3.conf
serves() { ip netns exec ap iw dev "$1" info 2>/dev/null | grep -q 'type AP'; }
for radio in wlan1 wlan2 wlan3; do
    ip netns exec ap hostapd -t "own-$radio.conf" >"own-$radio.log" 2>&1 &
    echo $! >"own-$radio.pid"
done
for interface in wlan1 wlan1a wlan1b wlan1c wlan1d wlan2 wlan3; do
    until_true 60 serves "$interface" || cat own-*.log
done
# addresses NAMESPACE INTERFACE PREFIX: hands out addresses there
addresses() {
    ip netns exec "$1" dnsmasq --keep-in-foreground --conf-file=/dev/null --port=0 --bind-interfaces --interface="$2" \
        --dhcp-range="$3.100,$3.110,10m" --no-ping --dhcp-leasefile="$BENCH/$1.leases" --pid-file= \
        --log-facility="$BENCH/$1.dhcp.log" --user=root &
}
addresses ap bridge0 10.5.0
addresses world down0 10.9.0

# The manager gives nft one second, in which it would not load what it needs from here; without, it does not masquerade.
nft -f - <<END
table ip warm {
    chain one { type nat hook postrouting priority 100; ip saddr 10.42.0.0/24 ip daddr != 10.42.0.0/24 masquerade; }
    chain two { type filter hook forward priority 0; ct state { established, related } accept; reject; }
}
delete table ip warm
END
rm -f /dev/rfkill # by that the manager's switch would silence all radios of the kernel, those around the unit, too
mount -o remount,bind,ro /sys # without udev the manager leaves every device alone, unless it is read-only
say "the scene is set"
"$@"
