// SPDX-License-Identifier: Apache-2.0
#include "scandaemon.h"

#include "rounds.h"

#include <QtCore/QTimer>

#include <utility>

#include <sched.h>

using namespace morvek;

namespace {

constexpr int Yields = 50;

QJsonObject accessPoint(int number)
{
    QJsonArray flags {QStringLiteral("WPA2-PSK-CCMP"), QStringLiteral("ESS")};
    if (number % 2 == 0)
        flags.prepend(QStringLiteral("WPA-PSK-TKIP"));
    if (number % 3 == 0)
        flags.append(QStringLiteral("WPS"));
    return {{QStringLiteral("bssid"),
             QStringLiteral("02:00:00:00:%1:%2")
                 .arg(number / 256, 2, 16, QLatin1Char('0'))
                 .arg(number % 256, 2, 16, QLatin1Char('0'))},
            {QStringLiteral("ssid"), QStringLiteral("Network %1").arg(number)},
            {QStringLiteral("signal_level"), QString::number(-40 - number % 50)},
            {QStringLiteral("frequency"), QString::number(2412 + 5 * (number % 13))},
            {QStringLiteral("flags"), flags}};
}

} // namespace

QByteArray scanResults(int count)
{
    QJsonArray results;
    for (int number = 0; number < count; ++number)
        results.append(accessPoint(number));
    return QJsonDocument(results).toJson(QJsonDocument::Compact);
}

ScanDaemon::ScanDaemon(int count, Rounds *rounds)
    : m_results(scanResults(count), "text"),
      m_rounds(rounds)
{
    m_control = std::make_unique<ZopObject>(QStringLiteral("/zop/services/wifi/control"), ZopObject::Publish, true);
    connect(m_control.get(), &ZopObject::attributesChanged, this, &ScanDaemon::reply);
    m_status = std::make_unique<ZopObject>(QStringLiteral("/zop/services/wifi/status"), ZopObject::Publish, false);
}

void ScanDaemon::reply(const ZopChangeset &request)
{
    const QString message = QStringLiteral("msg");
    ZopChangeset reply;
    reply.assignments.insert(QStringLiteral("res"), request.assignments.value(message));
    for (const QString &name : {QStringLiteral("id"), QStringLiteral("peer")})
        reply.assignments.insert(name, request.assignments.value(name));
    m_control->setAttributes(reply);
    // Scans that are asked for while one is under way join it.
    if (!std::exchange(m_isScanning, true))
        QTimer::singleShot(0, this, &ScanDaemon::publish);
}

void ScanDaemon::publish()
{
    m_isScanning = false;
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("scan_results"), m_results);
    if (m_rounds) {
        // On one core, this lets the client deal with the reply and come to rest, without a pause that cools the core.
        for (int i = 0; i < Yields; ++i)
            sched_yield();
        if (!m_rounds->next())
            return;
    }
    if (!m_status->setAttributes(changes))
        qFatal("cannot publish: %s", qPrintable(m_status->errorString()));
    if (m_rounds)
        m_rounds->awaitArrival();
}
