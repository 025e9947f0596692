// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <testunit.h>

using namespace morvek;

/*! The screen in each of the shipped scenarios: it stays usable, and says what is the matter. */
class tst_ScreenScenarios : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void staysUsable_data();
    void staysUsable();
    void staysUsableInAFlood();
    void interfacesComeAndGo();
    void interfacesAreRefused();
    void interfacesAreNotAnswered();
    void networkingDies();
    void wifiRoams();
    void wifiIsOutOfRange();
    void wifiIsRefused();
    void wifiIsNotAnswered();
    void wifiDies();
    void wifiTellsGarbage();
    void hotspotIsRefused();
    void hotspotIsNeverActive();
    void hotspotStopsByItself();
    void hotspotDies();
    void hotspotIsNotAnswered();
    void hotspotTellsGarbage();

private:
    bool begin(const char *scenario, int page);
    QString state(const char *name) const
    {
        return m_screen->property(name, "stateText").toString().remove(QChar(0x2068)).remove(QChar(0x2069));
    }
    /*! The address by hand of the interface that is shown, and what comes of it. */
    bool setAddress(const char *address);
    bool join(const char *network, const char *passkey);

    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<Screen> m_screen;
};

void tst_ScreenScenarios::init()
{
    m_unit = std::make_unique<TestUnit>();
}

void tst_ScreenScenarios::cleanup()
{
    m_screen.reset();
    m_unit.reset();
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

bool tst_ScreenScenarios::begin(const char *scenario, int page)
{
    if (!m_unit->start(QLatin1String(scenario)))
        return false;
    m_screen = std::make_unique<Screen>();
    return m_screen->isThere() && m_screen->open(page);
}

bool tst_ScreenScenarios::setAddress(const char *address)
{
    if (!m_screen->click("kind0"))
        return false;
    for (const auto &[field, text] : {std::pair("addressInput", address), std::pair("netmaskInput", "255.255.255.0"),
                                      std::pair("gatewayInput", "")}) {
        if (!m_screen->click(field))
            return false;
        m_screen->key(Qt::Key_A, Qt::ControlModifier);
        m_screen->key(Qt::Key_Delete);
        m_screen->type(QLatin1String(text));
    }
    m_screen->type(QLatin1String(address).left(QLatin1String(address).lastIndexOf(QLatin1Char('.')))
                   + QLatin1String(".1"));
    return m_screen->click("apply");
}

bool tst_ScreenScenarios::join(const char *network, const char *passkey)
{
    if (!m_screen->click(network) || !m_screen->waitFor("passkeyInput"))
        return false;
    m_screen->type(QLatin1String(passkey));
    return m_screen->click("dialogAction");
}

void tst_ScreenScenarios::staysUsable_data()
{
    QTest::addColumn<QString>("scenario");
    const QDir folder(QStringLiteral(MORVEK_SCENARIOS));
    const QStringList files = folder.entryList({QStringLiteral("*.json")});
    QCOMPARE(files.size(), 18);
    for (const QString &file : files)
        QTest::addRow("%s", qPrintable(file)) << file.chopped(5);
}

void tst_ScreenScenarios::staysUsable()
{
    QFETCH(const QString, scenario);
    QVERIFY(begin(qPrintable(scenario), 0));
    for (int second = 0; second < 36; ++second) {
        QVERIFY(m_unit->pass(1000));
        if (second % 3 == 0)
            QVERIFY(m_screen->open(second / 3 % 3));
        m_screen->key(Qt::Key_Right);
        const QVector<QQuickItem *> targets = m_screen->targets();
        QVERIFY2(targets.contains(m_screen->window()->activeFocusItem()), qPrintable(m_screen->focused()));
    }
    // What is shown in the end is what is.
    QVERIFY(m_screen->open(0));
    const QJsonObject objects = m_unit->look(QStringLiteral("objects")).toObject();
    const QString prefix = QStringLiteral("/zop/services/networking/all/interfaces/");
    int interfaces = 0;
    for (const QString &path : objects.keys()) {
        if (!path.startsWith(prefix))
            continue;
        ++interfaces;
        QVERIFY(m_screen->waitFor(qPrintable(QStringLiteral("interface_") + path.mid(prefix.size()))));
    }
    QVERIFY(interfaces > 0);
    const QJsonObject wifi = objects.value(QStringLiteral("/zop/services/wifi/status")).toObject();
    QVERIFY(m_screen->open(1));
    QTRY_COMPARE(m_screen->property("wifiSwitch", "on").toBool(), wifi.value("wifi_power").toString() == "on");
    const QJsonObject connection = wifi.value("wifi_status").toObject();
    const QString ssid = connection.value("ssid").toString();
    if (connection.value("bssid").isString()) // or it is garbage
        QTRY_COMPARE(state(qPrintable(QStringLiteral("network_") + ssid)), QStringLiteral("Connected"));
    QVERIFY(m_screen->open(2));
    const QJsonObject hotspot = objects.value(QStringLiteral("/zop/services/tethering/status")).toObject();
    QTRY_COMPARE(m_screen->property("hotspotSwitch", "on").toBool(), hotspot.value("state").toString() == "ACTIVE");
}

void tst_ScreenScenarios::staysUsableInAFlood()
{
    QJsonArray events;
    for (int i = 0; i < 3000; ++i) {
        const bool odd = i % 2 == 1;
        QJsonArray results;
        for (int row = 0; row < 8; ++row)
            results += QJsonObject {{"bssid", QStringLiteral("02:00:00:00:77:%1").arg(row + 10)},
                                    {"ssid", QStringLiteral("Flood %1").arg((i + row) % 40)},
                                    {"signal_level", QString::number(-30 - (i * 7 + row * 3) % 60)},
                                    {"frequency", "2412"},
                                    {"flags", QJsonArray {"ESS"}}};
        const QString found = QString::fromUtf8(QJsonDocument(results).toJson(QJsonDocument::Compact));
        const auto set = [&](const char *key, const char *target, const QJsonObject &attributes) {
            events += QJsonObject {{"at", i + 1}, {"event", "set"}, {key, target}, {"attributes", attributes}};
        };
        set("object", "wifi/status", {{"scan_results", found}, {"wifi_power", odd ? "on" : "off"}});
        set("object", "tethering/status", {{"state", odd ? "INACTIVE" : "ACTIVE"}});
        set("interface", "eth0", {{"connected", odd}});
    }
    QFile file(QStringLiteral(MORVEK_SCENARIOS "/headunit.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QJsonObject scenario = QJsonDocument::fromJson(file.readAll()).object();
    QVERIFY(!scenario.isEmpty());
    scenario.insert("timeline", events);
    QVERIFY(begin(QJsonDocument(scenario).toJson(QJsonDocument::Compact).constData(), 0));
    for (int part = 0; part < 30; ++part) {
        QVERIFY(m_unit->pass(100));
        QVERIFY(m_screen->open(part % 3));
        QTRY_COMPARE(m_screen->property("settings", "page").toInt(), part % 3);
        m_screen->key(Qt::Key_Right);
        QVERIFY(m_screen->targets().contains(m_screen->window()->activeFocusItem()));
    }
    QVERIFY(m_screen->open(0));
    QTRY_COMPARE(state("interface_eth0"), QStringLiteral("Connected."));
    QVERIFY(m_screen->open(2));
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is off."));
    QVERIFY(m_screen->open(1));
    QTRY_VERIFY(m_screen->property("wifiSwitch", "on").toBool());
    QVERIFY(m_screen->waitFor("network_Garage")); // the flood is over: what is found is shown
    QVERIFY(join("network_Garage", "open sesame 42"));
    QTRY_COMPARE(state("network_Garage"), QStringLiteral("Connected"));
}

void tst_ScreenScenarios::interfacesComeAndGo()
{
    QVERIFY(begin("come-and-go", 0));
    QTRY_COMPARE(state("interface_wlan0"), QStringLiteral("Connected. Preferred."));
    QVERIFY(m_unit->pass(3000));
    QTRY_COMPARE(state("interface_wlan0"), QStringLiteral("No link: it cannot be used now."));
    QVERIFY(!m_screen->item("interface_usb0"));
    QVERIFY(m_unit->pass(3000));
    QTRY_COMPARE(m_screen->text("interface_usb0"), QStringLiteral("USB"));
    QVERIFY(m_unit->pass(4000));
    QTRY_COMPARE(state("interface_wlan0"), QStringLiteral("Connected."));
    QTRY_COMPARE(state("interface_usb0"), QStringLiteral("Connected. Preferred."));
    QVERIFY(m_unit->pass(4000));
    QVERIFY(m_screen->waitForEnd("interface_cell0"));
    QVERIFY(m_unit->pass(6000));
    QVERIFY(m_screen->waitFor("interface_cell0"));
}

void tst_ScreenScenarios::interfacesAreRefused()
{
    QVERIFY(begin("refused", 0));
    QVERIFY(m_screen->click("interface_wlan0"));
    QVERIFY(setAddress("192.168.43.99"));
    QVERIFY(m_screen->waitForText("detailsOutcome", "wlan0 was refused its new settings. It has no address now."));
    QVERIFY(m_screen->click("back"));
    QVERIFY(m_screen->click("interface_eth0"));
    QVERIFY(setAddress("10.20.0.99"));
    QVERIFY(m_screen->waitForText("detailsOutcome", "eth0 was refused its new settings."));
    QVERIFY(m_screen->click("apply")); // the second attempt
    QTRY_COMPARE(m_screen->text("detailsState"), QStringLiteral("Connected."));
    QVERIFY(m_screen->waitForEnd("detailsOutcome"));
}

void tst_ScreenScenarios::interfacesAreNotAnswered()
{
    QVERIFY(begin("no-reply", 0));
    QVERIFY(m_screen->click("interface_eth0"));
    QVERIFY(setAddress("10.20.0.99"));
    QVERIFY(m_screen->waitForText("apply", "Cancel"));
    QVERIFY(m_screen->click("apply"));
    QVERIFY(m_screen->waitFor("detailsOutcome"));
    QVERIFY2(m_screen->text("detailsOutcome").startsWith("Cancelled. eth0 may still "),
             qPrintable(m_screen->text("detailsOutcome")));
}

void tst_ScreenScenarios::networkingDies()
{
    QVERIFY(begin("daemon-restart", 0));
    QVERIFY(m_screen->click("interface_eth0"));
    QVERIFY(setAddress("10.20.0.99"));
    QVERIFY(
        m_screen->waitForText("detailsOutcome", "The network service has stopped. eth0 may be without an address."));
    QVERIFY(m_screen->click("back"));
    QVERIFY(m_screen->waitForText("networksAway", "The network service has stopped."));
    QVERIFY(m_unit->pass(1500));
    QVERIFY(m_screen->waitForEnd("networksAway"));
}

void tst_ScreenScenarios::wifiRoams()
{
    QVERIFY(begin("wifi-roaming", 1));
    QObject *const wifi = m_screen->property("wifiPage", "controller").value<QObject *>();
    for (const auto &[until, bssid] : {std::pair(4000, "02:00:00:00:62:02"), std::pair(6000, "02:00:00:00:62:01"),
                                       std::pair(5000, "02:00:00:00:62:02")}) {
        QVERIFY(m_unit->pass(until));
        QTRY_COMPARE(wifi->property("bssid").toString(), QLatin1String(bssid));
        QCOMPARE(state("network_Home"), QStringLiteral("Connected"));
        QCOMPARE(state("wifiSwitch"), QStringLiteral("Connected to “Home”."));
    }
}

void tst_ScreenScenarios::wifiIsOutOfRange()
{
    QVERIFY(begin("wifi-out-of-range", 1));
    QTRY_COMPARE(state("wifiSwitch"), QStringLiteral("Connected to “Home”."));
    QVERIFY(m_unit->pass(3000));
    QTRY_COMPARE(state("wifiSwitch"), QStringLiteral("Not connected."));
    QVERIFY(m_unit->pass(7000));
    QTRY_COMPARE(state("wifiSwitch"), QStringLiteral("Connected to “Home”."));
    QVERIFY(m_unit->pass(14000));
    QTRY_COMPARE(state("wifiSwitch"), QStringLiteral("Wi-Fi is off."));
    QVERIFY(m_screen->waitForEnd("network_Home"));
    QVERIFY(m_unit->pass(6000));
    QTRY_COMPARE(state("wifiSwitch"), QStringLiteral("Connected to “Home”."));
}

void tst_ScreenScenarios::wifiIsRefused()
{
    QVERIFY(begin("wifi-refused", 1));
    QVERIFY(m_screen->click("wifiSwitch"));
    QVERIFY(m_unit->waitForRequest("wifi_power").isValid());
    QVERIFY(m_screen->property("wifiPage", "powering").value<QObject *>()->setProperty("deadline", 1));
    QVERIFY(
        m_screen->waitForText("powerOutcome", "Wi-Fi has not gone off in time; the request may have been refused."));
    // The first search is refused, too: the network that is in use is there all the same.
    QVERIFY(m_screen->click("network_Home"));
    QVERIFY(m_screen->waitForText("dialogAction", "Disconnect"));
}

void tst_ScreenScenarios::wifiIsNotAnswered()
{
    QVERIFY(begin("wifi-no-reply", 1));
    QVERIFY(join("network_Silent", "speech is silver"));
    QVERIFY(m_unit->waitForRequest("wnet_new").isValid());
    QCOMPARE(m_screen->text("dialogAction"), QStringLiteral("Cancel"));
    QVERIFY(m_screen->click("dialogClose")); // it goes on, and the row says so
    QVERIFY(m_screen->waitForEnd("dialogClose"));
    QTRY_COMPARE(state("network_Silent"), QStringLiteral("Connecting …"));
    QVERIFY(m_screen->click("network_Silent"));
    QVERIFY(m_screen->waitForText("dialogAction", "Cancel"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitFor("dialogOutcome"));
    QVERIFY(m_screen->click("dialogClose"));
    QVERIFY(m_screen->waitFor("outcome_Silent"));
    QVERIFY(join("network_Echo", "hello hello"));
    QTRY_COMPARE(state("network_Echo"), QStringLiteral("Connected"));
}

void tst_ScreenScenarios::wifiDies()
{
    QVERIFY(begin("wifi-daemon-restart", 1));
    QVERIFY(join("network_Garage", "open sesame 42"));
    QVERIFY(m_screen->waitForText("dialogOutcome",
                                  "The Wi-Fi service has stopped; “Garage” may have been joined all the same."));
    QVERIFY(m_screen->click("dialogClose"));
    QVERIFY(m_screen->waitForText("wifiAway", "The Wi-Fi service has stopped."));
    QVERIFY(m_unit->pass(1500));
    QVERIFY(m_screen->waitForEnd("wifiAway"));
}

void tst_ScreenScenarios::wifiTellsGarbage()
{
    QVERIFY(begin("wifi-garbage", 1));
    QVERIFY(m_screen->waitFor("network_Home"));
    QVERIFY(m_unit->pass(12000));
    QTRY_VERIFY(m_screen->property("wifiSwitch", "on").toBool());
    QVERIFY(m_screen->click("wifiSwitch"));
    QTRY_COMPARE(state("wifiSwitch"), QStringLiteral("Wi-Fi is off."));
}

void tst_ScreenScenarios::hotspotIsRefused()
{
    QVERIFY(begin("hotspot-refused", 2));
    if (!m_screen->item("hotspotNameInput"))
        QVERIFY(m_screen->click("fetch"));
    QVERIFY(m_screen->waitFor("hotspotNameInput"));
    QVERIFY(m_screen->waitForEnd("fetch"));
    QVERIFY(m_screen->click("clientsLess"));
    QVERIFY(m_screen->click("hotspotApply"));
    QVERIFY(m_screen->waitForText("applyOutcome", "The hotspot service refuses these settings."));
    QVERIFY(m_screen->click("hotspotApply"));
    QVERIFY(m_screen->waitForEnd("hotspotApply"));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QVERIFY(m_screen->waitFor("switchOutcome"));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is on."));
    QVERIFY(!m_screen->item("switchOutcome"));
}

void tst_ScreenScenarios::hotspotIsNeverActive()
{
    QVERIFY(begin("hotspot-never-active", 2));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QVERIFY(m_unit->waitForRequest("start").isValid());
    QVERIFY(m_screen->property("hotspotPage", "switching").value<QObject *>()->setProperty("deadline", 1000));
    QVERIFY(m_screen->waitForText("switchOutcome", "The hotspot has not come on in time. It still may."));
    QCOMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is off."));
    QVERIFY(m_unit->act("set", {{"object", "tethering/status"}, {"attributes", QVariantMap {{"state", "ACTIVE"}}}}));
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is on."));
    QVERIFY(!m_screen->item("switchOutcome"));
}

void tst_ScreenScenarios::hotspotStopsByItself()
{
    QVERIFY(begin("hotspot-inactivity", 2));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is on."));
    QVERIFY(m_unit->pass(5000));
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is off."));
}

void tst_ScreenScenarios::hotspotDies()
{
    QVERIFY(begin("hotspot-daemon-restart", 2));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QVERIFY(m_screen->waitFor("switchOutcome"));
    QVERIFY2(m_screen->text("switchOutcome").startsWith("The hotspot service has stopped."),
             qPrintable(m_screen->text("switchOutcome")));
    QVERIFY(m_screen->waitForText("hotspotAway", "The hotspot service has stopped."));
    QVERIFY(m_unit->pass(1500));
    QVERIFY(m_screen->waitForEnd("hotspotAway"));
}

void tst_ScreenScenarios::hotspotIsNotAnswered()
{
    QVERIFY(begin("hotspot-no-reply", 2));
    QVERIFY(!m_screen->item("hotspotNameInput")); // the first question is not answered
    QVERIFY(m_screen->click("hotspotSwitch"));    // "start" is answered twice
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is on."));
    QVERIFY(m_screen->click("hotspotSwitch")); // "stop" is done, and not answered
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is off."));
    QVERIFY(!m_screen->item("switchOutcome"));
}

void tst_ScreenScenarios::hotspotTellsGarbage()
{
    QVERIFY(begin("hotspot-garbage", 2));
    // Whatever it was told, it can be asked again until it makes sense.
    auto *controller = m_screen->property("hotspotPage", "controller").value<QObject *>();
    for (int i = 0; i < 10; ++i) {
        QVERIFY(QMetaObject::invokeMethod(controller, "fetch"));
        QTRY_VERIFY_WITH_TIMEOUT(!controller->property("busy").toBool(), 20000);
    }
    QCOMPARE(m_screen->text("hotspotNameInput"), QStringLiteral("Morvek Car"));
    QVERIFY(m_unit->pass(7000));
    QTRY_COMPARE(state("hotspotSwitch"), QStringLiteral("The hotspot is off."));
}

MORVEK_SCREEN_TEST(tst_ScreenScenarios)
#include "tst_screenscenarios.moc"
