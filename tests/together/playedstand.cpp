// SPDX-License-Identifier: Apache-2.0
#include "playedstand.h"

PlayedStand::PlayedStand()
{
    preferred = QStringLiteral("wlan0");
    wired = QStringLiteral("eth0");
    leases = QStringLiteral("10.20.0.0/16");
    gateway = QStringLiteral("10.20.0.1");
    netmask = QStringLiteral("255.255.0.0");
    free = QStringLiteral("10.20.0.77");

    air = {
        {"02:00:00:00:20:01", "Home", "correct horse 7", 2437, -51, -45, 0x8, 0x2, 0x2},
        {"02:00:00:00:20:02", "Home", "correct horse 7", 5180, -66, -60, 0x8, 0x2, 0x2},
        {"02:00:00:00:20:03", "Garage", "open sesame 42", 2412, -60, -54, 0x1c, 0x3, 0x7},
        {"02:00:00:00:20:04", "Caf\u00e9 am Markt", "", 2462, -73, -67, 0x1, 0x1, 0x1},
        {"02:00:00:00:20:05", "Old Router", "", 2427, -80, -74, 0x2, 0x1, 0x1},
        {"02:00:00:00:20:06", "Office", "", 5240, -69, -63, 0x8, 0x4, 0x2},
        {"02:00:00:00:20:07", "Future", "", 5500, -75, -69, 0x1, 0x1, 0x3},
    };
    home = 0;
    garage = 2;
    open = 3;
}

bool PlayedStand::start(DaemonFixture *daemon)
{
    return daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("20")});
}
