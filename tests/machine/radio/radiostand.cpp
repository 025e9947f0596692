// SPDX-License-Identifier: Apache-2.0
#include "managedstand.h"
#include "radiomanager.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! A real manager among simulated radios, in a guest: see scene.sh. */
class RadioStand : public ManagedStand
{
public:
    RadioStand();

private:
    bool prepare() override;

    RadioManager m_manager;
};

RadioStand::RadioStand()
{
    preferred = QStringLiteral("wlan0");
    wired = QStringLiteral("up0");

    air = {
        {"02:00:00:00:01:00", "Open", "", 2412, -99, -20, 0x1, 0x1, 0x1},
        {"02:00:00:00:01:01", "Wpa2", "passkey-of-wpa2", 2412, -99, -20, 0x8, 0x2, 0x2},
        {"02:00:00:00:01:02", "Mixed", "passkey-of-mixed", 2412, -99, -20, 0x8, 0x2, 0x2},
        {"02:00:00:00:01:03", "Wpa3", "passkey-of-wpa3", 2412, -99, -20, 0x8, 0x0, 0x2},
        {"02:00:00:00:01:04", "Owe", "", 2412, -99, -20, 0x8, 0x0, 0x2},
        {"02:00:00:00:02:00", "House", "passkey-of-house", 2437, -99, -20, 0x8, 0x2, 0x2},
        {"02:00:00:00:03:00", "House", "passkey-of-house", 2462, -99, -20, 0x8, 0x2, 0x2},
    };
    home = 1;
    garage = 5;
    open = 0;
    car.setBand(WifiBand2_4GHz); // the radios may open no access point in the other one

    m_manager.start();
    shell("nmcli connection modify Cable ipv4.route-metric 700");
    shell("nmcli connection up Cable");
    shell("nmcli connection add type wifi ifname wlan0 con-name Home ssid Wpa2 wifi-sec.key-mgmt wpa-psk"
          " wifi-sec.psk passkey-of-wpa2");
}

/*! The user's own network, which a daemon that was killed has left by itself or by its end. */
bool RadioStand::prepare()
{
    shell("nmcli radio wifi on; nmcli device set wlan0 autoconnect yes");
    int code = -1;
    return QTest::qWaitFor(
        [&code] {
            shell("nmcli connection up Home", &code);
            return code == 0;
        },
        Patience);
}

std::unique_ptr<Stand> Stand::make()
{
    return std::make_unique<RadioStand>();
}
