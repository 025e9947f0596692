// SPDX-License-Identifier: Apache-2.0
#include "scanningcommand.h"

#include <asyncwifiscanoperation.h>
#include <publishedsecurity.h>

#include <algorithm>
#include <climits>
#include <tuple>

namespace morvek {

namespace {

QList<WifiAccessPoint> sortedBySignal(QList<WifiAccessPoint> accessPoints)
{
    // A level that is not known is 0, which would be the strongest.
    const auto weakness = [](const WifiAccessPoint &accessPoint) {
        return accessPoint.rssi() == 0 ? LLONG_MAX : -qlonglong(accessPoint.rssi());
    };
    const auto rank = [&](const WifiAccessPoint &accessPoint) {
        return std::make_tuple(weakness(accessPoint), accessPoint.ssid(), accessPoint.bssid());
    };
    std::stable_sort(accessPoints.begin(), accessPoints.end(),
                     [&](const WifiAccessPoint &a, const WifiAccessPoint &b) { return rank(a) < rank(b); });
    return accessPoints;
}

} // namespace

ScanningCommand::ScanningCommand(const CommandLine &line)
    : WifiCommand(line)
{
}

ScanningCommand::~ScanningCommand() = default;

void ScanningCommand::run()
{
    if (!needRadio())
        return;
    setOverdue(QStringLiteral("no scan results have come") + silenceReason());
    setDeadline(ScanTime);
    onScanStarted();
    hearRefusals(QStringLiteral("nothing was scanned"));
    m_operation.reset(service()->scan());
    connect(m_operation.get(), &AsyncWifiScanOperation::success, this, &ScanningCommand::onSuccess);
    connect(m_operation.get(), &AsyncWifiScanOperation::failure, this,
            [this] { fail(m_operation->error().message()); });
}

void ScanningCommand::onSuccess()
{
    if (isFinished())
        return;
    hearNoMore();
    onScanned(sortedBySignal(m_operation->results()), PublishedSecurity());
}

} // namespace morvek
