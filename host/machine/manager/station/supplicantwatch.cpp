// SPDX-License-Identifier: Apache-2.0
#include "supplicantwatch.h"

namespace morvek {

namespace {

constexpr auto Supplicant = "fi.w1.wpa_supplicant1";
constexpr auto SupplicantPath = "/fi/w1/wpa_supplicant1";
constexpr auto Interface = "fi.w1.wpa_supplicant1.Interface";
constexpr auto AccessPoint = "fi.w1.wpa_supplicant1.BSS";
constexpr auto Properties = "org.freedesktop.DBus.Properties";
// What an access point answers to who does not know its passkey, when that is told before the association.
constexpr int UnspecifiedFailure = 1;

} // namespace

SupplicantWatch::SupplicantWatch(GDBusConnection *bus, QObject *parent)
    : QObject(parent),
      m_bus(refTo(bus))
{
    hear(Interface, "BSSAdded", nullptr, [this](const QByteArray &, GVariant *arguments) {
        if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(oa{sv})")))
            return;
        const char *path = nullptr;
        GVariant *properties = nullptr;
        g_variant_get(arguments, "(&o@a{sv})", &path, &properties);
        take(path, Variant(properties).get());
    });
    hear(Interface, "BSSRemoved", nullptr, [this](const QByteArray &, GVariant *arguments) {
        if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(o)")))
            m_levels.remove(
                m_bssids.take(g_variant_get_string(Variant(g_variant_get_child_value(arguments, 0)).get(), nullptr)));
    });
    hear(Properties, "PropertiesChanged", AccessPoint, [this](const QByteArray &path, GVariant *arguments) {
        if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{sv}as)")))
            take(path, Variant(g_variant_get_child_value(arguments, 1)).get());
    });
    hear(Properties, "PropertiesChanged", Interface, [this](const QByteArray &, GVariant *arguments) {
        gint32 code = 0;
        if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sa{sv}as)"))
            && g_variant_lookup(Variant(g_variant_get_child_value(arguments, 1)).get(), "AuthStatusCode", "i", &code)
            && code == UnspecifiedFailure)
            Q_EMIT refused();
    });
    askAll();
}

SupplicantWatch::~SupplicantWatch()
{
    for (const guint subscription : std::as_const(m_subscriptions))
        g_dbus_connection_signal_unsubscribe(m_bus.get(), subscription);
}

void SupplicantWatch::hear(const char *interface, const char *signal, const char *firstArgument, const Heard &heard)
{
    const auto called = [](GDBusConnection *, const char *, const char *path, const char *, const char *,
                           GVariant *arguments, void *data) { (*static_cast<Heard *>(data))(path, arguments); };
    const auto ended = [](void *data) { delete static_cast<Heard *>(data); };
    m_subscriptions +=
        g_dbus_connection_signal_subscribe(m_bus.get(), Supplicant, interface, signal, nullptr, firstArgument,
                                           G_DBUS_SIGNAL_FLAGS_NONE, called, new Heard(heard), ended);
}

/*! Nothing comes of it when the supplicant does not answer, or another thing than was asked for. */
void SupplicantWatch::ask(const QByteArray &path, const char *interface, const char *property,
                          const std::function<void(GVariant *answer)> &answered)
{
    GVariant *arguments = property ? g_variant_new("(ss)", interface, property) : g_variant_new("(s)", interface);
    g_dbus_connection_call(
        m_bus.get(), Supplicant, path.constData(), Properties, property ? "Get" : "GetAll", arguments,
        property ? G_VARIANT_TYPE("(v)") : G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
        AsyncCall::ready, AsyncCall::make(this, [answered](GObject *bus, GAsyncResult *result) {
            const Variant answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
            if (answer)
                answered(Variant(g_variant_get_child_value(answer.get(), 0)).get());
        }));
}

void SupplicantWatch::askAll()
{
    ask(SupplicantPath, Supplicant, "Interfaces", [this](GVariant *interfaces) {
        askForEach(interfaces, [this](const QByteArray &interface) {
            ask(interface, Interface, "BSSs", [this](GVariant *accessPoints) {
                askForEach(accessPoints, [this](const QByteArray &path) {
                    ask(path, AccessPoint, nullptr, [this, path](GVariant *properties) { take(path, properties); });
                });
            });
        });
    });
}

void SupplicantWatch::askForEach(GVariant *paths, const std::function<void(const QByteArray &path)> &function)
{
    const Variant list(g_variant_get_variant(paths));
    if (!g_variant_is_of_type(list.get(), G_VARIANT_TYPE("ao")))
        return;
    for (gsize i = 0; i < g_variant_n_children(list.get()); ++i)
        function(g_variant_get_string(Variant(g_variant_get_child_value(list.get(), i)).get(), nullptr));
}

/*! What is told later of an access point names it no more. */
void SupplicantWatch::take(const QByteArray &path, GVariant *properties)
{
    if (const Variant address {g_variant_lookup_value(properties, "BSSID", G_VARIANT_TYPE("ay"))}) {
        const auto *bytes = static_cast<const char *>(g_variant_get_data(address.get()));
        m_bssids.insert(path,
                        QString::fromLatin1(QByteArray(bytes, int(g_variant_get_size(address.get()))).toHex(':')));
    }
    gint16 level = 0;
    if (m_bssids.contains(path) && g_variant_lookup(properties, "Signal", "n", &level))
        m_levels.insert(m_bssids.value(path), level);
}

} // namespace morvek
