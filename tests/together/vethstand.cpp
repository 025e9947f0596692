// SPDX-License-Identifier: Apache-2.0
#include "managedstand.h"
#include "realmanager.h"

/*! A real manager, which has a cable to either side. */
class VethStand : public ManagedStand
{
public:
    VethStand();

private:
    bool prepare() override;

    RealManager m_manager;
};

VethStand::VethStand()
{
    preferred = QStringLiteral("vt0");
    wired = QStringLiteral("vt1");
    leases = QStringLiteral("10.9.1.0/24");
    gateway = QStringLiteral("10.9.1.1");
    netmask = QStringLiteral("255.255.255.0");
    free = QStringLiteral("10.9.1.77");

    if (!m_manager.start() || !m_manager.startServer())
        qFatal("there is no manager");
    shell("nmcli connection add type ethernet ifname vt0 con-name first ipv4.route-metric 100 autoconnect no");
    shell("nmcli connection add type ethernet ifname vt1 con-name second ipv4.route-metric 200 autoconnect no");
}

bool VethStand::prepare()
{
    int first = -1;
    int second = -1;
    shell("nmcli connection up first", &first);
    shell("nmcli connection up second", &second);
    return first == 0 && second == 0;
}

std::unique_ptr<Stand> Stand::make()
{
    return std::make_unique<VethStand>();
}
