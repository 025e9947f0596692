// SPDX-License-Identifier: Apache-2.0
#include "fakesupplicant.h"
#include "livelymanager.h"
#include "managedstand.h"
#include "privatebus.h"

/*! A manager that is played, with networks as they are around a real one. */
class FakeStand : public ManagedStand
{
public:
    FakeStand();

private:
    bool prepare() override;

    PrivateBus m_bus;
    std::unique_ptr<LivelyManager> m_manager;
    FakeSupplicant m_supplicant;
};

namespace {

/*! What the manager tells of the access points of the stand, in their order. */
const struct
{
    uint flags;
    uint wpaFlags;
    uint rsnFlags;
    int percent;
} Told[] = {
    {0x1, 0, FakeManager::Wpa2, 90},
    {0x1, 0, FakeManager::Wpa2, 60},
    {0x3, 0x144, 0x148, 75},
    {0, 0, 0, 50},
    {0x1, 0, 0, 40},
    {0x1, 0, 0x288, 55},
    {0x1, 0, FakeManager::Wpa3, 45},
};

} // namespace

FakeStand::FakeStand()
{
    preferred = QStringLiteral("wlan0");
    wired = QStringLiteral("eth0");

    air = {
        {"02:00:00:00:20:01", "Home", "correct horse 7", 2437, -46, -46, 0x8, 0x2, 0x2},
        {"02:00:00:00:20:02", "Home", "correct horse 7", 5180, -64, -64, 0x8, 0x2, 0x2},
        {"02:00:00:00:20:03", "Garage", "open sesame 42", 2412, -55, -55, 0x1c, 0x3, 0x7},
        {"02:00:00:00:20:04", "Caf\u00e9 am Markt", "", 2462, -70, -70, 0x1, 0x1, 0x1},
        {"02:00:00:00:20:05", "Old Router", "", 2427, -76, -76, 0x2, 0x1, 0x1},
        {"02:00:00:00:20:06", "Office", "", 5240, -67, -67, 0x8, 0x4, 0x2},
        {"02:00:00:00:20:07", "Future", "", 5500, -73, -73, 0x8, 0x0, 0x2},
    };
    home = 0;
    garage = 2;
    open = 3;
}

bool FakeStand::prepare()
{
    m_manager.reset();
    m_manager = std::make_unique<LivelyManager>();
    QStringList points;
    for (int i = 0; i < air.size(); ++i) {
        const StandAccessPoint &one = air.at(i);
        points += m_manager->addAccessPoint(m_manager->radio(), one.ssid,
                                            {{QStringLiteral("HwAddress"), QLatin1String(one.bssid)},
                                             {QStringLiteral("Frequency"), one.frequency},
                                             {QStringLiteral("Flags"), Told[i].flags},
                                             {QStringLiteral("WpaFlags"), Told[i].wpaFlags},
                                             {QStringLiteral("RsnFlags"), Told[i].rsnFlags},
                                             {QStringLiteral("Strength"), Told[i].percent}});
        if (*one.passkey)
            m_manager->setPasskey(one.ssid, QLatin1String(one.passkey));
    }
    m_manager->joinAsTheUser("Home", points.at(home));

    const QString cable = m_manager->addEthernet(wired);
    m_manager->beginActivation(cable,
                               m_manager->addProfile({{QStringLiteral("connection"),
                                                       {{QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}}}));
    m_manager->activate(cable);
    m_manager->setLease(cable, {{QStringLiteral("ip_address"), QStringLiteral("10.20.0.40")}});
    m_manager->setIp4(cable, {QStringLiteral("10.20.0.40/16")}, QStringLiteral("10.20.0.1"), 700);
    return m_bus.errorString().isEmpty() && m_manager->start() && m_supplicant.start();
}

std::unique_ptr<Stand> Stand::make()
{
    return std::make_unique<FakeStand>();
}
