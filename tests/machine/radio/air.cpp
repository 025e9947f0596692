// SPDX-License-Identifier: Apache-2.0
#include "air.h"

#include "patience.h"
#include "realmanager.h"

#include <QtCore/QFile>
#include <QtTest/QtTest>

namespace {

QByteArray radioOf(const QByteArray &client)
{
    return client == "client" ? "wlan4" : "wlan5";
}

QByteArray inNamespace(const QByteArray &space)
{
    return "ip netns exec " + space + ' ';
}

bool succeeds(const QByteArray &line)
{
    int code = -1;
    shell(line, &code);
    return code == 0;
}

QByteArray wlan(int radio)
{
    return "wlan" + QByteArray::number(radio);
}

void write(const QByteArray &name, const QByteArray &text)
{
    QFile file(QString::fromLatin1(qgetenv("BENCH") + '/' + name));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(text), qint64(text.size()));
}

} // namespace

void Air::setInRange(int radio, bool inRange)
{
    // Simulated radios hear each other when they have a group in common; the unit is in the first one.
    QFile group(QStringLiteral("/sys/kernel/debug/ieee80211/phy%1/hwsim/group").arg(radio));
    QVERIFY(group.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QCOMPARE(group.write(inRange ? "1" : "2"), qint64(1));
}

void Air::setServing(int radio, bool serving)
{
    const QByteArray own = "$BENCH/own-" + wlan(radio);
    const QByteArray process = "$(cat " + own + ".pid)";
    if (serving) {
        shell(inNamespace("ap") + "hostapd -B -t -P " + own + ".pid -f " + own + ".log " + own + ".conf");
        return;
    }
    shell("kill " + process);
    QTRY_VERIFY_WITH_TIMEOUT(!succeeds("kill -0 " + process), Patience);
}

void Air::askToRoam(int from)
{
    const QByteArray to = QByteArray::number(from == 2 ? 3 : 2);
    const QByteArray channel = from == 2 ? "11" : "6";
    const QByteArray answer = shell(inNamespace("ap") + "hostapd_cli -p $BENCH/hostapd -i " + wlan(from)
                                    + " bss_tm_req $(cat /sys/class/net/wlan0/address) pref=1 neighbor=02:00:00:00:0"
                                    + to + ":00,0x0000,81," + channel + ",7");
    QVERIFY2(answer.endsWith("OK"), answer.constData());
}

QByteArray Air::associated()
{
    return shell("iw dev wlan0 link | sed -n 's/^Connected to \\([0-9a-f:]*\\).*/\\1/p'");
}

QByteArray Air::addresses(const QByteArray &interface)
{
    return shell("ip -4 -o addr show dev " + interface + " | awk '{print $4}' | xargs");
}

QByteArray Air::activeProfiles()
{
    return shell("nmcli -t -f NAME connection show --active | sort | xargs -d '\\n'");
}

QByteArray Air::profiles()
{
    return shell("for uuid in $(nmcli -t -f UUID connection show | sort); do"
                 " nmcli -t -s -f connection,802-11-wireless,802-11-wireless-security,ipv4,ipv6 connection show"
                 " uuid $uuid | grep -v '^connection.timestamp:'; done");
}

QByteArray Air::profilesInMemory(const QByteArray &which)
{
    return shell("find /run/NetworkManager -path '*/system-connections/*' -type f " + which);
}

void Air::joinHotspot(const QByteArray &client, const QByteArray &name, const QByteArray &passphrase)
{
    const QByteArray own = "own-" + client;
    write(own + ".conf",
          "ctrl_interface=/run/supplicant-of-" + client + "\nnetwork={\n ssid=\"" + name + "\"\n psk=\"" + passphrase
              + "\"\n}\n");
    write(own + ".address",
          "#!/bin/sh\n[ \"$1\" = bound ] || exit 0\nip addr replace $ip/24 dev $interface\n"
          "ip route replace default via $router\n");
    const QByteArray interface = radioOf(client);
    shell(inNamespace(client) + "wpa_supplicant -B -P $BENCH/" + own + ".pid -Dnl80211 -i " + interface + " -c $BENCH/"
          + own + ".conf -f $BENCH/" + own + ".log");
    const QByteArray isJoined =
        "wpa_cli -p /run/supplicant-of-" + client + " -i " + interface + " status | grep -x wpa_state=COMPLETED";
    QTRY_VERIFY_WITH_TIMEOUT(succeeds(isJoined), Patience);
    shell("chmod +x $BENCH/" + own + ".address; " + inNamespace(client) + "busybox udhcpc -i "
          + interface + " -n -q -t 10 -s $BENCH/" + own + ".address");
}

void Air::leaveHotspot(const QByteArray &client)
{
    const QByteArray process = "$BENCH/own-" + client + ".pid";
    shell("kill $(cat " + process + ")");
    QTRY_VERIFY_WITH_TIMEOUT(!succeeds("test -e " + process), Patience);
    shell(inNamespace(client) + "ip addr flush dev " + radioOf(client));
}

bool Air::reaches(const QByteArray &client, const QByteArray &address)
{
    return succeeds(inNamespace(client) + "busybox ping -c 3 -W 5 " + address);
}

QByteArray Air::addressOf(const QByteArray &client)
{
    return shell(inNamespace(client) + "ip -4 -o addr show dev " + radioOf(client)
                 + " | awk '{print $4}' | cut -d/ -f1");
}
