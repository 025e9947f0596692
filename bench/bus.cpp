// SPDX-License-Identifier: Apache-2.0
#include "bus.h"

#include "process.h"
#include "rounds.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>

#include <functional>
#include <iostream>

namespace {

const char *const ObjectPath = "/morvek/bench";
const char *const Properties = "org.freedesktop.DBus.Properties";
const char *const ServiceName = "morvek.bench";

} // namespace

std::unique_ptr<Process> startBus(QString *address)
{
    auto bus = std::make_unique<Process>(
        QStringLiteral("dbus-daemon"),
        QStringList {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
    *address = QString::fromLatin1(bus->readLine());
    return bus;
}

QDBusConnection connectToBus(const QString &address)
{
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("bench"));
    if (!bus.isConnected())
        qFatal("cannot reach the bus");
    return bus;
}

void settle(QDBusConnection *bus)
{
    bus->call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                                             QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
}

BusReceiver::BusReceiver(Rounds *rounds)
    : m_rounds(rounds)
{
}

void BusReceiver::onChanged(const QString &, const QVariantMap &changed, const QStringList &)
{
    if (changed.size() != 3)
        qFatal("a signal came without its attributes");
    if (!m_rounds->arrived())
        QCoreApplication::quit();
}

void BusDaemon::configure(const QString &, const QVariantMap &) { }

int runBusSender(const QString &address, Rounds *rounds)
{
    QDBusConnection bus = connectToBus(address);
    rounds->awaitReady();
    for (int mtu = 1; rounds->next(); ++mtu) {
        QDBusMessage message = QDBusMessage::createSignal(QLatin1String(ObjectPath), QLatin1String(Properties),
                                                          QStringLiteral("PropertiesChanged"));
        const QVariantMap changed {{QStringLiteral("Mtu"), mtu},
                                   {QStringLiteral("HwAddress"), QStringLiteral("02:00:00:00:00:01")},
                                   {QStringLiteral("Up"), true}};
        message << QStringLiteral("morvek.bench.Interface") << changed << QStringList();
        bus.send(message);
        rounds->awaitArrival();
    }
    return 0;
}

int runBusReceiver(const QString &address, Rounds *rounds)
{
    QDBusConnection bus = connectToBus(address);
    BusReceiver receiver(rounds);
    if (!bus.connect(QString(), QLatin1String(ObjectPath), QLatin1String(Properties),
                     QStringLiteral("PropertiesChanged"), &receiver,
                     SLOT(onChanged(QString, QVariantMap, QStringList))))
        qFatal("cannot subscribe on the bus");
    settle(&bus);
    rounds->setReady();
    return QCoreApplication::exec();
}

int runBusDaemon(const QString &address)
{
    QDBusConnection bus = connectToBus(address);
    BusDaemon daemon;
    bus.registerObject(QLatin1String(ObjectPath), &daemon, QDBusConnection::ExportScriptableSlots);
    if (!bus.registerService(QLatin1String(ServiceName)))
        qFatal("cannot take the name on the bus");
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}

int runBusRequester(const QString &address, Rounds *rounds)
{
    QDBusConnection bus = connectToBus(address);
    std::function<void()> request = [&] {
        if (!rounds->next()) {
            QCoreApplication::quit();
            return;
        }
        QDBusMessage message =
            QDBusMessage::createMethodCall(QLatin1String(ServiceName), QLatin1String(ObjectPath),
                                           QStringLiteral("morvek.bench.Daemon"), QStringLiteral("configure"));
        message << QStringLiteral("if0000") << QVariantMap {{QStringLiteral("manual"), QStringLiteral("yes")}};
        auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(message));
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [&, watcher] {
            if (watcher->isError())
                qFatal("a call failed: %s", qPrintable(watcher->error().message()));
            watcher->deleteLater();
            rounds->arrived();
            rounds->awaitArrival();
            request();
        });
    };
    request();
    return QCoreApplication::exec();
}
