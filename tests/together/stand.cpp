// SPDX-License-Identifier: Apache-2.0
#include "stand.h"

using namespace morvek;

Stand::Stand()
{
    car.setName(QStringLiteral("Morvek Car"));
    car.setPassphrase(QStringLiteral("drive safely 8"));
    car.setSecurityType(WifiSecurityProtocolWpa2);
    car.setBand(WifiBand5GHz);
    car.setMaxClients(10);
    car.setInactivityTime(600);
}
