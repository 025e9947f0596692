// SPDX-License-Identifier: Apache-2.0
#include "pace.h"
#include "tracing.h"
#include "wifinetworkmodel.h"

#include <QtCore/QRandomGenerator>

#include <iostream>

using namespace morvek;

namespace {

constexpr int Networks = 200;
constexpr int Step = 2;  // dB, from one scan to the next
constexpr int Most = 10; // dB, in all

using Scan = QVector<WifiNetworkModel::Found>;

/*! One scan a second of networks that are all in range, one more than are used up. */
QVector<Scan> driftingScans()
{
    QRandomGenerator random(Networks);
    QVector<int> drift(Networks, 0);
    QVector<Scan> scans;
    for (int second = 0; second < Pace::WarmUp + Pace::Counted; ++second) {
        Scan scan;
        for (int i = 0; i < Networks; ++i) {
            drift[i] = qBound(-Most, drift[i] + random.bounded(-Step, Step + 1), Most);
            scan.append({QStringLiteral("Network %1").arg(i), -40 - i % 50 + drift[i],
                         NetworkSecurity(QStringList(QStringLiteral("WPA2-PSK-CCMP")))});
        }
        scans.append(scan);
    }
    return scans;
}

} // namespace

// A model of networks that drift, once a second: what it costs is counted, and what it tells is printed: changes of
// rows, changes of what rows tell, and resets.
int main()
{
    WifiNetworkModel model;
    int moves = 0;
    int changes = 0;
    int resets = 0;
    const QVector<Scan> scans = driftingScans();
    for (int i = 0; i < Pace::WarmUp; ++i)
        model.setFound(scans[i]);
    for (const auto signal : {&WifiNetworkModel::rowsInserted, &WifiNetworkModel::rowsRemoved})
        QObject::connect(&model, signal, [&moves] { ++moves; });
    QObject::connect(&model, &WifiNetworkModel::rowsMoved, [&moves] { ++moves; });
    QObject::connect(&model, &WifiNetworkModel::dataChanged, [&changes] { ++changes; });
    QObject::connect(&model, &WifiNetworkModel::modelReset, [&resets] { ++resets; });
    QObject::connect(&model, &WifiNetworkModel::layoutChanged, [&resets] { ++resets; });
    markCounted();
    for (int i = 0; i < Pace::Counted; ++i)
        model.setFound(scans[Pace::WarmUp + i]);
    markCounted();
    std::cout << moves << ' ' << changes << ' ' << resets << std::endl;
    return 0;
}
