// SPDX-License-Identifier: Apache-2.0
#include "managerlistener.h"

#include "bus.h"
#include "rounds.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusPendingCallWatcher>

namespace {

using Objects = QMap<QDBusObjectPath, QMap<QString, QVariantMap>>;

const QString Manager = QStringLiteral("org.freedesktop.NetworkManager");
const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString ManagerPath = QStringLiteral("/org/freedesktop/NetworkManager");
const QString AccessPoint = QStringLiteral("org.freedesktop.NetworkManager.AccessPoint");
const QString Wireless = QStringLiteral("org.freedesktop.NetworkManager.Device.Wireless");

} // namespace

ManagerListener::ManagerListener(Rounds *rounds)
    : m_bus(connectToBus(qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"))),
      m_rounds(rounds)
{
}

void ManagerListener::listenToDevice(const QString &interface, const char *slot)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(Manager, ManagerPath, Manager, QStringLiteral("GetDeviceByIpIface"));
    message << interface;
    m_device = qvariant_cast<QDBusObjectPath>(m_bus.call(message).arguments().value(0)).path();
    listen(m_device, slot);
}

void ManagerListener::listenToAddresses(const QString &interface)
{
    listenToDevice(interface, SLOT(onMtuChanged(QString, QVariantMap)));
    QDBusMessage message = QDBusMessage::createMethodCall(Manager, m_device, Properties, QStringLiteral("Get"));
    message << QStringLiteral("org.freedesktop.NetworkManager.Device") << QStringLiteral("Ip4Config");
    const auto value = qvariant_cast<QDBusVariant>(m_bus.call(message).arguments().value(0));
    listen(qvariant_cast<QDBusObjectPath>(value.variant()).path(), SLOT(onAddressesChanged(QString, QVariantMap)));
}

void ManagerListener::listen(const QString &path, const char *slot)
{
    if (!m_bus.connect(Manager, path, Properties, QStringLiteral("PropertiesChanged"), this, slot))
        qFatal("cannot subscribe to %s", qPrintable(path));
    settle(&m_bus);
}

void ManagerListener::onMtuChanged(const QString &, const QVariantMap &changed)
{
    if (changed.value(QStringLiteral("Mtu")).toUInt() == 0)
        qFatal("a signal came without its property");
    arrived();
}

void ManagerListener::onAddressesChanged(const QString &, const QVariantMap &changed)
{
    const auto addresses = qdbus_cast<QList<QVariantMap>>(changed.value(QStringLiteral("AddressData")));
    if (addresses.value(0).value(QStringLiteral("address")).toString().isEmpty()
        || changed.value(QStringLiteral("Gateway")).toString().isEmpty())
        qFatal("a signal came without addresses");
    arrived();
}

void ManagerListener::scan(int count, bool atOnce)
{
    m_isAtOnce = atOnce;
    m_reader = std::make_unique<BusScanReceiver>(m_bus, Manager, AccessPoint, count, [this] {
        arrived();
        requestScan();
    });
    requestScan();
}

void ManagerListener::onScanned(const QString &, const QVariantMap &changed)
{
    if (!changed.contains(QStringLiteral("LastScan")))
        return;
    if (m_isAtOnce)
        readAll();
    else
        readEach();
}

void ManagerListener::call(const QString &path, const QString &interface, const QString &member,
                           const QVariantList &arguments,
                           const std::function<void(const QDBusMessage &reply)> &answered)
{
    QDBusMessage message = QDBusMessage::createMethodCall(Manager, path, interface, member);
    message.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answered] {
        if (watcher->isError())
            qFatal("a call failed: %s", qPrintable(watcher->error().message()));
        answered(watcher->reply());
        watcher->deleteLater();
    });
}

void ManagerListener::requestScan()
{
    call(m_device, Wireless, QStringLiteral("RequestScan"), {QVariantMap()}, [](const QDBusMessage &) {});
}

void ManagerListener::readEach()
{
    call(m_device, Wireless, QStringLiteral("GetAllAccessPoints"), {}, [this](const QDBusMessage &reply) {
        const auto paths = qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().value(0));
        for (const QDBusObjectPath &path : paths)
            m_reader->onAdded(path);
    });
}

void ManagerListener::readAll()
{
    call(QStringLiteral("/org/freedesktop"), QStringLiteral("org.freedesktop.DBus.ObjectManager"),
         QStringLiteral("GetManagedObjects"), {}, [this](const QDBusMessage &reply) {
             for (const auto &interfaces : qdbus_cast<Objects>(reply.arguments().value(0))) {
                 if (interfaces.contains(AccessPoint))
                     m_reader->take(interfaces.value(AccessPoint));
             }
         });
}

void ManagerListener::arrived()
{
    if (!m_rounds->arrived())
        QCoreApplication::quit();
}
