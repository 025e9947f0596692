// SPDX-License-Identifier: Apache-2.0
#include "fakemanager.h"
#include "privatebus.h"

#include <QtTest/QTest>

#undef signals // GLib's headers use this word
#include <NetworkManager.h>

#include <memory>

namespace {

struct Unref
{
    void operator()(void *object) const { g_object_unref(object); }
};

/*! How an asynchronous call has ended. */
struct Outcome
{
    bool done = false;
    QString error;

    void end(GError *given)
    {
        done = true;
        if (given == nullptr)
            return;
        g_dbus_error_strip_remote_error(given);
        error = QString::fromUtf8(given->message);
        g_error_free(given);
    }
};

QByteArray name(NMAccessPoint *point)
{
    GBytes *const ssid = nm_access_point_get_ssid(point);
    gsize size = 0;
    const auto *data = ssid != nullptr ? static_cast<const char *>(g_bytes_get_data(ssid, &size)) : nullptr;
    return {data, int(size)};
}

} // namespace

/*! The manager's own client library takes it for a manager. */
class TestFakeManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void devices();
    void accessPointsComeAndGo();
    void scanEnds();
    void statesWithReasons();
    void volatileConnectionEndsWithItsFailure();
    void boundConnectionEndsWithItsClient();
    void addressesAndLease();
    void refusal();
    void callThatDoesNotReturn();
    void restart();

private:
    void connectClient();
    NMDevice *device(const char *interface) { return nm_client_get_device_by_iface(m_client.get(), interface); }
    void addAndActivate(Outcome *outcome);

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeManager> m_manager;
    std::unique_ptr<NMClient, Unref> m_client;
    QString m_wired;
    QString m_wifi;
};

void TestFakeManager::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY2(m_bus->errorString().isEmpty(), qPrintable(m_bus->errorString()));
}

void TestFakeManager::init()
{
    m_manager = std::make_unique<FakeManager>();
    m_wired = m_manager->addEthernet(QStringLiteral("eth0"),
                                     {{QStringLiteral("HwAddress"), QStringLiteral("02:11:22:33:44:55")}});
    m_wifi = m_manager->addWifi(QStringLiteral("wlan0"));
    QVERIFY(m_manager->start());
    connectClient();
}

void TestFakeManager::cleanup()
{
    m_client.reset();
    m_manager.reset();
}

void TestFakeManager::connectClient()
{
    GError *error = nullptr;
    m_client.reset(nm_client_new(nullptr, &error));
    QVERIFY2(m_client, error != nullptr ? error->message : "");
}

void TestFakeManager::addAndActivate(Outcome *outcome)
{
    NMConnection *const connection = nm_simple_connection_new();
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "persist", g_variant_new_string("volatile"));
    g_variant_builder_add(&options, "{sv}", "bind-activation", g_variant_new_string("dbus-client"));
    nm_client_add_and_activate_connection2(
        m_client.get(), connection, device("wlan0"), nullptr, g_variant_builder_end(&options), nullptr,
        [](GObject *client, GAsyncResult *result, gpointer data) {
            GError *error = nullptr;
            NMActiveConnection *active =
                nm_client_add_and_activate_connection2_finish(NM_CLIENT(client), result, nullptr, &error);
            g_clear_object(&active);
            static_cast<Outcome *>(data)->end(error);
        },
        outcome);
    g_object_unref(connection);
}

void TestFakeManager::devices()
{
    QCOMPARE(nm_client_get_version(m_client.get()), "1.42.4");
    QCOMPARE(int(nm_client_get_devices(m_client.get())->len), 2);
    QVERIFY(NM_IS_DEVICE_ETHERNET(device("eth0")));
    QCOMPARE(nm_device_get_hw_address(device("eth0")), "02:11:22:33:44:55");
    QCOMPARE(int(nm_device_get_state(device("eth0"))), 30);
    QVERIFY(NM_IS_DEVICE_WIFI(device("wlan0")));

    m_manager->removeDevice(m_wired);
    QTRY_COMPARE(int(nm_client_get_devices(m_client.get())->len), 1);
    m_manager->addEthernet(QStringLiteral("eth1"), {{QStringLiteral("Managed"), false}, {QStringLiteral("Mtu"), 1400}});
    QTRY_VERIFY(device("eth1") != nullptr);
    QCOMPARE(nm_device_get_mtu(device("eth1")), 1400U);
    QVERIFY(!nm_device_get_managed(device("eth1")));
}

void TestFakeManager::accessPointsComeAndGo()
{
    const QString first = m_manager->addAccessPoint(
        m_wifi, "caf\xE9", {{QStringLiteral("Strength"), 71}, {QStringLiteral("RsnFlags"), FakeManager::Wpa2}});
    m_manager->addAccessPoint(m_wifi, "second");
    const auto points = [this] { return nm_device_wifi_get_access_points(NM_DEVICE_WIFI(device("wlan0"))); };
    QTRY_COMPARE(int(points()->len), 2);
    NMAccessPoint *const point =
        nm_device_wifi_get_access_point_by_path(NM_DEVICE_WIFI(device("wlan0")), qPrintable(first));
    QCOMPARE(name(point), QByteArray("caf\xE9"));
    QCOMPARE(int(nm_access_point_get_strength(point)), 71);
    QCOMPARE(int(nm_access_point_get_rsn_flags(point)), 0x188);

    m_manager->change(first, {{QStringLiteral("Strength"), 12}});
    QTRY_COMPARE(int(nm_access_point_get_strength(point)), 12);
    m_manager->removeAccessPoint(first);
    QTRY_COMPARE(int(points()->len), 1);
    QCOMPARE(name(static_cast<NMAccessPoint *>(points()->pdata[0])), QByteArray("second"));
}

void TestFakeManager::scanEnds()
{
    NMDeviceWifi *const wifi = NM_DEVICE_WIFI(device("wlan0"));
    QCOMPARE(int(nm_device_wifi_get_last_scan(wifi)), -1);
    m_manager->finishScan(m_wifi);
    QTRY_VERIFY(nm_device_wifi_get_last_scan(wifi) > 0);
    const auto before = nm_device_wifi_get_last_scan(wifi);
    m_manager->finishScan(m_wifi);
    QTRY_VERIFY(nm_device_wifi_get_last_scan(wifi) > before);
}

void TestFakeManager::statesWithReasons()
{
    struct Change
    {
        static void note(NMDevice *, guint now, guint before, guint reason, gpointer data)
        {
            static_cast<QVector<QVector<uint>> *>(data)->append({now, before, reason});
        }
    };
    QVector<QVector<uint>> changes;
    const auto handler = g_signal_connect(device("wlan0"), "state-changed", G_CALLBACK(Change::note), &changes);
    m_manager->setState(m_wifi, 50);
    m_manager->setState(m_wifi, 120, 7);
    QTRY_COMPARE(changes.size(), 2);
    QCOMPARE(changes, (QVector<QVector<uint>> {{50, 30, 0}, {120, 50, 7}}));
    QCOMPARE(int(nm_device_get_state_reason(device("wlan0"))), 7);
    g_signal_handler_disconnect(device("wlan0"), handler);
}

void TestFakeManager::volatileConnectionEndsWithItsFailure()
{
    Outcome outcome;
    addAndActivate(&outcome);
    QTRY_VERIFY(outcome.done);
    QCOMPARE(outcome.error, QString());
    const BusCall call = m_manager->calls(QStringLiteral("AddAndActivateConnection2")).first();
    QCOMPARE(call.path, QStringLiteral("/org/freedesktop/NetworkManager"));
    QCOMPARE(call.interface, QStringLiteral("org.freedesktop.NetworkManager"));
    QCOMPARE(call.pathAt(1), m_wifi);
    QCOMPARE(call.map(3).value(QStringLiteral("persist")).toString(), QStringLiteral("volatile"));
    QCOMPARE(int(nm_device_get_state(device("wlan0"))), 40);
    QCOMPARE(int(nm_client_get_connections(m_client.get())->len), 1);

    m_manager->activate(m_wifi);
    QTRY_COMPARE(int(nm_device_get_state(device("wlan0"))), 100);
    QCOMPARE(int(nm_active_connection_get_state(nm_device_get_active_connection(device("wlan0")))), 2);
    m_manager->setState(m_wifi, 120, 8);
    QTRY_COMPARE(int(nm_client_get_connections(m_client.get())->len), 0);
    QVERIFY(nm_device_get_active_connection(device("wlan0")) == nullptr);
}

void TestFakeManager::boundConnectionEndsWithItsClient()
{
    Outcome outcome;
    addAndActivate(&outcome);
    QTRY_VERIFY(outcome.done);
    m_manager->activate(m_wifi);
    // The bus is told to forget the caller, whose connection is GLib's for the whole process: played by hand.
    Q_EMIT m_manager->senderGone(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).first().sender);
    QTRY_COMPARE(int(nm_device_get_state(device("wlan0"))), 30);
    QTRY_COMPARE(int(nm_client_get_connections(m_client.get())->len), 0);
}

void TestFakeManager::addressesAndLease()
{
    const QString profile = m_manager->addProfile(
        {{QStringLiteral("connection"), {{QStringLiteral("type"), QStringLiteral("802-3-ethernet")}}}});
    m_manager->beginActivation(m_wired, profile);
    m_manager->activate(m_wired);
    m_manager->setLease(m_wired, {{QStringLiteral("ip_address"), QStringLiteral("10.0.0.2")}});
    m_manager->setIp4(m_wired, {QStringLiteral("10.0.0.2/24"), QStringLiteral("10.0.0.3/24")},
                      QStringLiteral("10.0.0.1"), 600);
    const auto configuration = [this] { return nm_device_get_ip4_config(device("eth0")); };
    QTRY_VERIFY(configuration() != nullptr);
    QCOMPARE(int(nm_ip_config_get_addresses(configuration())->len), 2);
    QCOMPARE(nm_ip_config_get_gateway(configuration()), "10.0.0.1");
    GPtrArray *const routes = nm_ip_config_get_routes(configuration());
    QCOMPARE(int(routes->len), 3);
    QCOMPARE(nm_ip_route_get_dest(static_cast<NMIPRoute *>(routes->pdata[2])), "0.0.0.0");
    QCOMPARE(nm_ip_route_get_metric(static_cast<NMIPRoute *>(routes->pdata[2])), gint64(600));
    QCOMPARE(nm_dhcp_config_get_one_option(nm_device_get_dhcp4_config(device("eth0")), "ip_address"), "10.0.0.2");
    m_manager->setLease(m_wired, {});
    m_manager->setIp4(m_wired, {});
    QTRY_VERIFY(configuration() == nullptr);
    QVERIFY(nm_device_get_dhcp4_config(device("eth0")) == nullptr);
}

void TestFakeManager::refusal()
{
    m_manager->refuse(QStringLiteral("AddAndActivateConnection2"),
                      QStringLiteral("org.freedesktop.NetworkManager.PermissionDenied"),
                      QStringLiteral("Not authorized"), 1);
    Outcome refused;
    addAndActivate(&refused);
    QTRY_VERIFY(refused.done);
    QCOMPARE(refused.error, QStringLiteral("Not authorized"));
    Outcome accepted;
    addAndActivate(&accepted);
    QTRY_VERIFY(accepted.done);
    QCOMPARE(accepted.error, QString());
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 2);
}

void TestFakeManager::callThatDoesNotReturn()
{
    m_manager->hold(QStringLiteral("AddAndActivateConnection2"));
    Outcome late;
    addAndActivate(&late);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("AddAndActivateConnection2")));
    m_manager->finishScan(m_wifi);
    QTRY_VERIFY(nm_device_wifi_get_last_scan(NM_DEVICE_WIFI(device("wlan0"))) > 0);
    QVERIFY(!late.done);
    m_manager->release(QStringLiteral("AddAndActivateConnection2"));
    QTRY_VERIFY(late.done);
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).size(), 1);

    m_manager->hold(QStringLiteral("AddAndActivateConnection2"));
    Outcome cut;
    addAndActivate(&cut);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("AddAndActivateConnection2"), 2));
    m_manager->stop();
    QTRY_VERIFY(cut.done);
    QVERIFY(!cut.error.isEmpty());
}

void TestFakeManager::restart()
{
    m_manager->stop();
    QTRY_VERIFY(!nm_client_get_nm_running(m_client.get()));
    QCOMPARE(int(nm_client_get_devices(m_client.get())->len), 0);
    m_manager->removeDevice(m_wired);
    QVERIFY(m_manager->start());
    QTRY_VERIFY(nm_client_get_nm_running(m_client.get()));
    QCOMPARE(int(nm_client_get_devices(m_client.get())->len), 1);
    m_manager->setState(m_wifi, 20, 2);
    QTRY_COMPARE(int(nm_device_get_state(device("wlan0"))), 20);
}

QTEST_GUILESS_MAIN(TestFakeManager)
#include "tst_fakemanager.moc"
