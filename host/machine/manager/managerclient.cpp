// SPDX-License-Identifier: Apache-2.0
#include "managerclient.h"

#include "zoppath.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QEventLoop>
#include <QtCore/QPointer>
#include <QtCore/QVersionNumber>

#include <algorithm>
#include <chrono>

namespace morvek {

namespace {

// The first in which a connection can end with the process that has asked for it.
const QVersionNumber EarliestManager {1, 20};
// It is asked for all that it knows.
constexpr std::chrono::seconds Patience {10};

bool isKnownKind(NMDevice *device)
{
    switch (nm_device_get_device_type(device)) {
    case NM_DEVICE_TYPE_LOOPBACK:
    case NM_DEVICE_TYPE_WIFI_P2P:
    case NM_DEVICE_TYPE_OVS_INTERFACE:
    case NM_DEVICE_TYPE_OVS_PORT:
    case NM_DEVICE_TYPE_OVS_BRIDGE:
    case NM_DEVICE_TYPE_DUMMY:
    case NM_DEVICE_TYPE_UNKNOWN:
        return false;
    default:
        return true;
    }
}

/*! A modem has a name of its own, and while it is connected another one. */
bool isCalled(NMDevice *device, const QString &name)
{
    return name == ManagerClient::nameOf(device) || name == QString::fromUtf8(nm_device_get_iface(device));
}

} // namespace

ManagerClient::ManagerClient(const QStringList &only, QObject *parent)
    : QObject(parent),
      m_only(only)
{
    m_bell.setSingleShot(true);
    m_bell.setInterval(0);
    connect(&m_bell, &QTimer::timeout, this, [this] {
        watchAll();
        Q_EMIT changed();
    });
}

ManagerClient::~ManagerClient() = default;

bool ManagerClient::start(QString *error)
{
    // Only then its signals are heard.
    if (!QAbstractEventDispatcher::instance()->inherits("QEventDispatcherGlib")) {
        *error = QStringLiteral("the network manager is heard in GLib's event loop only: do not set QT_NO_GLIB");
        return false;
    }
    if (!makeClient(error))
        return false;
    if (!isRunning()) {
        *error = QStringLiteral("no network manager runs on this machine");
        return false;
    }
    const QString version = QString::fromUtf8(nm_client_get_version(get()));
    if (QVersionNumber::fromString(version) < EarliestManager) {
        *error =
            QStringLiteral("the network manager has version %1, and %2 is the first that can do what is asked of it")
                .arg(version, EarliestManager.toString());
        return false;
    }
    m_notify = SignalConnection::make<GParamSpec *>(get(), "notify", [this](GParamSpec *) { ring(); });
    m_running = SignalConnection::make<GParamSpec *>(get(), "notify::" NM_CLIENT_NM_RUNNING, [this](GParamSpec *) {
        Q_EMIT runningChanged(isRunning());
        ring();
    });
    // At once: a state that a new device takes is heard.
    m_added = SignalConnection::make<NMDevice *>(get(), NM_CLIENT_DEVICE_ADDED, [this](NMDevice *device) {
        watch(&m_watches, device);
        ring();
    });
    m_removed = SignalConnection::make<NMDevice *>(get(), NM_CLIENT_DEVICE_REMOVED, [this](NMDevice *) { ring(); });
    watchAll();
    return true;
}

/*! From the event loop: what asks the program to end is heard, whatever the manager does. */
bool ManagerClient::makeClient(QString *error)
{
    *error = QStringLiteral("the network manager has not answered");
    const GRef<GCancellable> wait(g_cancellable_new());
    QEventLoop loop;
    const auto made = [&](GObject *, GAsyncResult *result) {
        GErrorKeeper failure;
        m_client.reset(nm_client_new_finish(result, &failure));
        if (failure && !g_cancellable_is_cancelled(wait.get()))
            *error = QStringLiteral("no system bus: ") + QString::fromUtf8(failure.get()->message);
        loop.quit();
    };
    nm_client_new_async(wait.get(), AsyncCall::ready, AsyncCall::make(&loop, made));
    QTimer::singleShot(Patience, &loop, [&wait] { g_cancellable_cancel(wait.get()); });
    loop.exec();
    return m_client != nullptr;
}

bool ManagerClient::isRunning() const
{
    return nm_client_get_nm_running(get());
}

bool ManagerClient::knows(const QString &interface) const
{
    const QVector<NMDevice *> shown = devices();
    return std::any_of(shown.begin(), shown.end(),
                       [&interface](NMDevice *device) { return isCalled(device, interface); });
}

QVector<NMDevice *> ManagerClient::devices() const
{
    QVector<NMDevice *> shown;
    const GPtrArray *all = nm_client_get_devices(get());
    for (guint i = 0; all && i < all->len; ++i) {
        auto *device = static_cast<NMDevice *>(all->pdata[i]);
        if (isShown(device))
            shown += device;
    }
    return shown;
}

NMDevice *ManagerClient::device(const QString &interface) const
{
    const QVector<NMDevice *> shown = devices();
    const auto found = std::find_if(shown.begin(), shown.end(),
                                    [&interface](NMDevice *device) { return nameOf(device) == interface; });
    return found == shown.end() ? nullptr : *found;
}

NMDeviceWifi *ManagerClient::radio() const
{
    const GPtrArray *all = nm_client_get_devices(get());
    for (guint i = 0; all && i < all->len; ++i) {
        auto *device = static_cast<NMDevice *>(all->pdata[i]);
        if (NM_IS_DEVICE_WIFI(device) && isShown(device))
            return NM_DEVICE_WIFI(device);
    }
    return nullptr;
}

Refusal ManagerClient::refusesToTouch(const QString &interface) const
{
    if (!m_only.isEmpty() && !m_only.contains(interface) && !knows(interface))
        return {Refusal::Protected, QStringLiteral("\"%1\" is not among what --only names").arg(interface)};
    if (m_protected.contains(interface))
        return {Refusal::Protected,
                QStringLiteral("\"%1\" carries your remote session: --force has it touched").arg(interface)};
    return {};
}

Refusal ManagerClient::refusesToTouchRadios() const
{
    const GPtrArray *all = nm_client_get_devices(get());
    for (guint i = 0; all && i < all->len; ++i) {
        auto *device = static_cast<NMDevice *>(all->pdata[i]);
        Refusal refusal = NM_IS_DEVICE_WIFI(device) ? refusesToTouch(device) : Refusal();
        if (refusal)
            return refusal;
    }
    return {};
}

void ManagerClient::setAutoconnect(NMDevice *device, bool autoconnect, QObject *context, const ErrorCall &answer)
{
    const QByteArray path = nm_object_get_path(NM_OBJECT(device));
    Asked &asked = m_autoconnects[path];
    asked.value = autoconnect;
    ++asked.open;
    const QPointer<QObject> owner(context);
    set(path, NM_DBUS_INTERFACE_DEVICE, "Autoconnect", autoconnect, this,
        [this, path, owner, answer](const GError *error) {
            if (--m_autoconnects[path].open == 0)
                m_autoconnects.remove(path);
            if (owner)
                answer(error);
        });
}

bool ManagerClient::autoconnect(NMDevice *device) const
{
    const auto asked = m_autoconnects.find(nm_object_get_path(NM_OBJECT(device)));
    return asked == m_autoconnects.end() ? bool(nm_device_get_autoconnect(device)) : asked->value;
}

void ManagerClient::setPower(bool on, QObject *context, const ErrorCall &answer)
{
    set(NM_DBUS_PATH, NM_DBUS_INTERFACE, "WirelessEnabled", on, context, answer);
}

void ManagerClient::set(const char *path, const char *interface, const char *property, bool value, QObject *context,
                        const ErrorCall &answer)
{
    const auto ended = [answer](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        nm_client_dbus_set_property_finish(NM_CLIENT(source), result, &error);
        answer(error.get());
    };
    nm_client_dbus_set_property(get(), path, interface, property, g_variant_new_boolean(value), -1, nullptr,
                                AsyncCall::ready, AsyncCall::make(context, ended));
}

QString ManagerClient::nameOf(NMDevice *device)
{
    // A modem's own name is that of its control port.
    const char *name = nm_device_get_ip_iface(device);
    return QString::fromUtf8(name ? name : nm_device_get_iface(device));
}

QString ManagerClient::profileOf(NMDevice *device)
{
    NMActiveConnection *active = nm_device_get_active_connection(device);
    return active ? QString::fromUtf8(nm_active_connection_get_uuid(active)) : QString();
}

GVariant *ManagerClient::volatileOptions(bool bound)
{
    GVariantDict options;
    g_variant_dict_init(&options, nullptr);
    g_variant_dict_insert(&options, "persist", "s", "volatile");
    if (bound)
        g_variant_dict_insert(&options, "bind-activation", "s", "dbus-client");
    return g_variant_dict_end(&options);
}

bool ManagerClient::isMeant(NMDevice *device) const
{
    return m_only.isEmpty()
        || std::any_of(m_only.begin(), m_only.end(), [device](const QString &name) { return isCalled(device, name); });
}

bool ManagerClient::isShown(NMDevice *device) const
{
    return isKnownKind(device) && ZopPath::isObjectName(nameOf(device).toUtf8()) && isMeant(device);
}

void ManagerClient::ring()
{
    if (!m_bell.isActive())
        m_bell.start();
}

/*! Hears whatever is there now, and nothing else any more. */
void ManagerClient::watchAll()
{
    std::map<GObject *, Watch> kept;
    const GPtrArray *all = nm_client_get_devices(get());
    for (guint i = 0; all && i < all->len; ++i) {
        auto *device = static_cast<NMDevice *>(all->pdata[i]);
        watch(&kept, device);
        watch(&kept, nm_device_get_ip4_config(device));
        watch(&kept, nm_device_get_ip6_config(device));
        watch(&kept, nm_device_get_active_connection(device));
    }
    m_watches = std::move(kept);
}

void ManagerClient::watch(std::map<GObject *, Watch> *kept, void *object)
{
    if (!object)
        return;
    auto *key = G_OBJECT(object);
    if (const auto known = m_watches.find(key); known != m_watches.end()) {
        if (kept != &m_watches)
            (*kept)[key] = std::move(known->second);
        return;
    }
    Watch &watch = (*kept)[key];
    watch.notify = SignalConnection::make<GParamSpec *>(object, "notify", [this](GParamSpec *) { ring(); });
    if (!NM_IS_DEVICE(object))
        return;
    watch.state = SignalConnection::make<guint, guint, guint>(
        object, "state-changed", [this, object](guint now, guint before, guint reason) {
            Q_EMIT stateChanged(NM_DEVICE(object), NMDeviceState(now), NMDeviceState(before),
                                NMDeviceStateReason(reason));
        });
}

} // namespace morvek
