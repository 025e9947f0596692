// SPDX-License-Identifier: Apache-2.0
#include "hotspotstations.h"

#include "managerrefusal.h"

namespace morvek {

namespace {

const char SupplicantName[] = "fi.w1.wpa_supplicant1";
const char SupplicantPath[] = "/fi/w1/wpa_supplicant1";
const char SupplicantInterface[] = "fi.w1.wpa_supplicant1.Interface";
const char PropertiesInterface[] = "org.freedesktop.DBus.Properties";

} // namespace

HotspotStations::HotspotStations(const QString &interface, QObject *parent)
    : QObject(parent),
      m_interface(interface)
{
}

HotspotStations::~HotspotStations()
{
    for (const guint subscription : m_subscriptions)
        g_dbus_connection_signal_unsubscribe(m_bus.get(), subscription);
}

void HotspotStations::watch()
{
    GErrorKeeper failure;
    m_bus.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &failure)); // the one that the manager is heard on
    if (!m_bus) {
        Q_EMIT unreadable(refusalOf(failure.get()).text);
        return;
    }
    call(QLatin1String(SupplicantPath), SupplicantName, "GetInterface",
         g_variant_new("(s)", qUtf8Printable(m_interface)), [this](GVariant *reply) {
             const char *path = nullptr;
             g_variant_get(reply, "(&o)", &path);
             m_path = QString::fromUtf8(path);
             listen();
             count();
         });
}

void HotspotStations::call(const QString &path, const char *interface, const char *method, GVariant *arguments,
                           const std::function<void(GVariant *)> &onReply)
{
    const auto onEnd = [this, onReply](GObject *source, GAsyncResult *result) {
        GErrorKeeper failure;
        const Variant reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &failure));
        if (reply)
            onReply(reply.get());
        else
            Q_EMIT unreadable(refusalOf(failure.get()).text);
    };
    g_dbus_connection_call(m_bus.get(), SupplicantName, qUtf8Printable(path), interface, method, arguments, nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, AsyncCall::ready,
                           AsyncCall::make(this, onEnd));
}

void HotspotStations::listen()
{
    const auto onSignal = [](GDBusConnection *, const char *, const char *, const char *, const char *, GVariant *,
                             gpointer stations) { static_cast<HotspotStations *>(stations)->count(); };
    for (const char *signal : {"StaAuthorized", "StaDeauthorized", "StationAdded", "StationRemoved"}) {
        m_subscriptions.push_back(g_dbus_connection_signal_subscribe(
            m_bus.get(), SupplicantName, SupplicantInterface, signal, qUtf8Printable(m_path), nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr));
    }
}

/*! What the supplicant has now, and not what its signals add up to: one of them may have come before the first count.
 */
void HotspotStations::count()
{
    call(m_path, PropertiesInterface, "Get", g_variant_new("(ss)", SupplicantInterface, "Stations"),
         [this](GVariant *reply) {
             GVariant *value = nullptr;
             g_variant_get(reply, "(v)", &value);
             const Variant stations(value);
             if (g_variant_is_of_type(value, G_VARIANT_TYPE_OBJECT_PATH_ARRAY))
                 Q_EMIT counted(int(g_variant_n_children(value)));
             else
                 Q_EMIT unreadable(QStringLiteral("no list of stations"));
         });
}

} // namespace morvek
