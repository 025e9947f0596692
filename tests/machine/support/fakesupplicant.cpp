// SPDX-License-Identifier: Apache-2.0
#include "fakesupplicant.h"

namespace {

const QString Root = QStringLiteral("/fi/w1/wpa_supplicant1");
const QString Path = Root + QStringLiteral("/Interfaces/0");
const QString Interface = QStringLiteral("fi.w1.wpa_supplicant1.Interface");

} // namespace

FakeSupplicant::FakeSupplicant()
    : BusObjects(QStringLiteral("fi.w1.wpa_supplicant1"), Root)
{
    add(Path, {{Interface, {{QStringLiteral("Stations"), QVariant::fromValue(BusPaths())}}}});
    setAnswer(QStringLiteral("GetInterface"), [](const BusCall &call) -> BusAnswer {
        if (call.text(0) != QLatin1String("wlan0"))
            return {{}, QStringLiteral("fi.w1.wpa_supplicant1.InterfaceUnknown"), QStringLiteral("unknown")};
        return {{QVariant::fromValue(QDBusObjectPath(Path))}, {}, {}};
    });
}

void FakeSupplicant::setStations(int count, const QString &signal)
{
    BusPaths stations;
    while (stations.size() < count)
        stations += QDBusObjectPath(Path + QStringLiteral("/Stations/%1").arg(stations.size()));
    change(Path, {{QStringLiteral("Stations"), QVariant::fromValue(stations)}});
    emitSignal(Path, Interface, signal, {QStringLiteral("02:00:00:00:04:00")});
}
