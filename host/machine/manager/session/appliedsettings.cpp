// SPDX-License-Identifier: Apache-2.0
#include "appliedsettings.h"

namespace morvek {

namespace {

Variant parse(const QByteArray &ipv4, GError **error)
{
    return Variant(g_variant_parse(G_VARIANT_TYPE_VARDICT, ipv4.constData(), nullptr, nullptr, error));
}

/*! \a connection with \a ipv4 in place of its own settings. */
GRef<NMConnection> withIpv4(NMConnection *connection, const QByteArray &ipv4, GError **error)
{
    const Variant settings = parse(ipv4, error);
    if (!settings)
        return nullptr;
    const Variant all(g_variant_ref_sink(nm_connection_to_dbus(connection, NM_CONNECTION_SERIALIZE_ALL)));
    GVariantBuilder builder;
    g_variant_builder_init(&builder, NM_VARIANT_TYPE_CONNECTION);
    GVariantIter iterator;
    g_variant_iter_init(&iterator, all.get());
    const char *name = nullptr;
    GVariant *setting = nullptr;
    while (g_variant_iter_next(&iterator, "{&s@a{sv}}", &name, &setting)) {
        const Variant kept(setting);
        if (qstrcmp(name, NM_SETTING_IP4_CONFIG_SETTING_NAME) != 0)
            g_variant_builder_add(&builder, "{s@a{sv}}", name, setting);
    }
    g_variant_builder_add(&builder, "{s@a{sv}}", NM_SETTING_IP4_CONFIG_SETTING_NAME, settings.get());
    const Variant whole(g_variant_ref_sink(g_variant_builder_end(&builder)));
    return GRef<NMConnection>(nm_simple_connection_new_from_dbus(whole.get(), error));
}

using ConnectionTaker = std::function<void(NMConnection *applied, guint64 version, const GError *error)>;

void readConnection(NMDevice *device, QObject *context, const ConnectionTaker &taker)
{
    const auto ended = [taker](GObject *source, GAsyncResult *result) {
        GErrorKeeper error;
        guint64 version = 0;
        const GRef<NMConnection> applied(
            nm_device_get_applied_connection_finish(NM_DEVICE(source), result, &version, &error));
        taker(applied.get(), version, error.get());
    };
    nm_device_get_applied_connection_async(device, 0, nullptr, AsyncCall::ready, AsyncCall::make(context, ended));
}

} // namespace

QByteArray AppliedSettings::ipv4Of(NMConnection *connection)
{
    const Variant all(g_variant_ref_sink(nm_connection_to_dbus(connection, NM_CONNECTION_SERIALIZE_NO_SECRETS)));
    const Variant settings(
        g_variant_lookup_value(all.get(), NM_SETTING_IP4_CONFIG_SETTING_NAME, G_VARIANT_TYPE_VARDICT));
    if (!settings)
        return {};
    const std::unique_ptr<char, decltype(&g_free)> text(g_variant_print(settings.get(), TRUE), g_free);
    return QByteArray(text.get());
}

QStringList AppliedSettings::addressesOf(const QByteArray &ipv4)
{
    QStringList addresses;
    const Variant settings = parse(ipv4, nullptr);
    const Variant list(settings ? g_variant_lookup_value(settings.get(), "address-data", G_VARIANT_TYPE("aa{sv}"))
                                : nullptr);
    for (gsize i = 0; list && i < g_variant_n_children(list.get()); ++i) {
        const Variant entry(g_variant_get_child_value(list.get(), i));
        const char *address = nullptr;
        if (g_variant_lookup(entry.get(), "address", "&s", &address))
            addresses += QString::fromLatin1(address);
    }
    return addresses;
}

bool AppliedSettings::givesAddresses(const QByteArray &ipv4)
{
    const Variant settings = parse(ipv4, nullptr);
    const char *method = nullptr;
    return settings && g_variant_lookup(settings.get(), "method", "&s", &method)
        && qstrcmp(method, NM_SETTING_IP4_CONFIG_METHOD_DISABLED) != 0;
}

void AppliedSettings::read(NMDevice *device, QObject *context, const Taker &taker)
{
    readConnection(device, context, [taker](NMConnection *applied, guint64, const GError *error) {
        taker(applied ? ipv4Of(applied) : QByteArray(), error);
    });
}

void AppliedSettings::replace(NMDevice *device, const QByteArray &ipv4, QObject *context,
                              const std::function<void(const GError *)> &answer)
{
    const auto read = [device = std::shared_ptr<NMDevice>(refTo(device)), ipv4, context,
                       answer](NMConnection *applied, guint64 version, const GError *error) {
        GErrorKeeper failure;
        const GRef<NMConnection> changed = applied ? withIpv4(applied, ipv4, &failure) : nullptr;
        if (!changed) {
            answer(applied ? failure.get() : error);
            return;
        }
        const auto ended = [answer](GObject *source, GAsyncResult *result) {
            GErrorKeeper refusal;
            nm_device_reapply_finish(NM_DEVICE(source), result, &refusal);
            answer(refusal.get());
        };
        // The version: what somebody else has applied since then is not overwritten.
        nm_device_reapply_async(device.get(), changed.get(), version, 0, nullptr, AsyncCall::ready,
                                AsyncCall::make(context, ended));
    };
    readConnection(device, context, read);
}

} // namespace morvek
