// SPDX-License-Identifier: Apache-2.0
#include "busaccesspoints.h"

#include "bus.h"
#include "rounds.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>

namespace {

const QString Folder = QStringLiteral("/morvek/bench/AccessPoint");
const QString Device = QStringLiteral("/morvek/bench/Device");
const QString DeviceInterface = QStringLiteral("morvek.bench.Device");
const QString AccessPointInterface = QStringLiteral("morvek.bench.AccessPoint");
const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString ServiceName = QStringLiteral("morvek.bench");
const QString Added = QStringLiteral("AccessPointAdded");

} // namespace

BusAccessPoints::BusAccessPoints(const QDBusConnection &bus, int count, Rounds *rounds)
    : m_bus(bus),
      m_count(count),
      m_rounds(rounds)
{
}

void BusAccessPoints::announce()
{
    if (!m_rounds->next()) {
        QCoreApplication::quit();
        return;
    }
    m_answered = 0;
    for (int number = 0; number < m_count; ++number) {
        QDBusMessage message = QDBusMessage::createSignal(Device, DeviceInterface, Added);
        message << QVariant::fromValue(QDBusObjectPath(Folder + QLatin1Char('/') + QString::number(number)));
        m_bus.send(message);
    }
}

void BusAccessPoints::awaitArrival()
{
    m_rounds->awaitArrival();
    announce();
}

QString BusAccessPoints::introspect(const QString &) const
{
    return QString();
}

bool BusAccessPoints::handleMessage(const QDBusMessage &message, const QDBusConnection &bus)
{
    const QString number = message.path().section(QLatin1Char('/'), -1);
    const QVariantMap properties {{QStringLiteral("HwAddress"), QStringLiteral("02:00:00:00:00:01")},
                                  {QStringLiteral("Ssid"), QStringLiteral("Network %1").arg(number).toUtf8()},
                                  {QStringLiteral("Strength"), -60},
                                  {QStringLiteral("Frequency"), 2437U},
                                  {QStringLiteral("Flags"), 0x188U}};
    if (++m_answered == m_count)
        QTimer::singleShot(0, this, &BusAccessPoints::awaitArrival);
    return bus.send(message.createReply(properties));
}

BusScanReceiver::BusScanReceiver(const QDBusConnection &bus, const QString &service, const QString &interface,
                                 int count, const std::function<void()> &done)
    : m_bus(bus),
      m_service(service),
      m_interface(interface),
      m_count(count),
      m_done(done)
{
}

void BusScanReceiver::onAdded(const QDBusObjectPath &path)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, path.path(), Properties, QStringLiteral("GetAll"));
    message << m_interface;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &BusScanReceiver::onRead);
}

void BusScanReceiver::onRead(QDBusPendingCallWatcher *watcher)
{
    const QDBusPendingReply<QVariantMap> reply = *watcher;
    if (reply.isError())
        qFatal("a call failed: %s", qPrintable(reply.error().message()));
    watcher->deleteLater();
    take(reply.value());
}

void BusScanReceiver::take(const QVariantMap &properties)
{
    m_records.append({properties.value(QStringLiteral("HwAddress")).toString(),
                      QString::fromUtf8(properties.value(QStringLiteral("Ssid")).toByteArray()),
                      properties.value(QStringLiteral("Strength")).toInt(),
                      properties.value(QStringLiteral("Frequency")).toUInt(),
                      properties.value(QStringLiteral("Flags")).toUInt()});
    if (m_records.size() < m_count)
        return;
    m_records.clear();
    m_done();
}

int runBusScanSender(const QString &address, int count, Rounds *rounds)
{
    QDBusConnection bus = connectToBus(address);
    BusAccessPoints accessPoints(bus, count, rounds);
    bus.registerVirtualObject(Folder, &accessPoints, QDBusConnection::SubPath);
    if (!bus.registerService(ServiceName))
        qFatal("cannot take the name on the bus");
    rounds->awaitReady();
    accessPoints.announce();
    return QCoreApplication::exec();
}

int runBusScanReceiver(const QString &address, int count, Rounds *rounds)
{
    QDBusConnection bus = connectToBus(address);
    BusScanReceiver receiver(bus, ServiceName, AccessPointInterface, count, [rounds] {
        if (!rounds->arrived())
            QCoreApplication::quit();
    });
    if (!bus.connect(ServiceName, Device, DeviceInterface, Added, &receiver, SLOT(onAdded(QDBusObjectPath))))
        qFatal("cannot subscribe on the bus");
    settle(&bus);
    rounds->setReady();
    return QCoreApplication::exec();
}
