// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <testunit.h>

using namespace morvek;

/*! Wi-Fi, used by touch, keys and clicks; each outcome is told where it happened. */
class tst_WifiPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void joinsWithAPasskeyByTouch();
    void joinsAnOpenNetworkWithTheKnob();
    void tellsAWrongPasskeyInTheDialogAndAtTheRow();
    void tellsThatAPasskeyIsMissing();
    void tellsWhatGoesOutOfRange();
    void tellsWhatIsRefused();
    void tellsWhatMayComeOfACancelledAttempt();
    void leaves();
    void saysThatItCouldNotLeave();
    void saysWhatCannotBeJoined();
    void saysThatAnOpenTwinIsNotTaken();
    void showsNamesAsPlainText();
    void saysThatANameCannotBeRead();
    void manyNetworksAreNoBurden();
    void switchesTheRadio();
    void saysThatTheSwitchWasNotHeard();
    void saysThatTheServiceIsAway();
    void looksForNetworksOnlyWhileItIsShown();
    void aListThatIsTouchedStandsStill();
    void aRowThatMovesKeepsTheFocus();

private:
    bool begin(const char *scenario);
    /*! The controller of the page. */
    QObject *wifi() const;
    /*! Has the station look for networks, and waits for what it has found. */
    bool scan();
    int rowOf(const char *ssid) const;

    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<Screen> m_screen;
};

void tst_WifiPage::init()
{
    m_unit = std::make_unique<TestUnit>();
}

void tst_WifiPage::cleanup()
{
    m_screen.reset();
    m_unit.reset();
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

bool tst_WifiPage::begin(const char *scenario)
{
    if (!m_unit->start(QLatin1String(scenario)))
        return false;
    m_screen = std::make_unique<Screen>();
    return m_screen->isThere() && m_screen->open(1);
}

QObject *tst_WifiPage::wifi() const
{
    return m_screen->property("wifiPage", "controller").value<QObject *>();
}

bool tst_WifiPage::scan()
{
    QObject *request = nullptr;
    const auto find = [&] { return wifi()->findChildren<QObject *>(); };
    const QList<QObject *> before = find();
    if (!QMetaObject::invokeMethod(wifi(), "scan"))
        return false;
    for (QObject *child : find()) {
        if (!before.contains(child) && child->inherits("morvek::NetworkRequest"))
            request = child;
    }
    return request && m_unit->endOf(request) == QLatin1String("done");
}

int tst_WifiPage::rowOf(const char *ssid) const
{
    int row = -1;
    QMetaObject::invokeMethod(wifi()->property("networks").value<QObject *>(), "rowOf", Q_RETURN_ARG(int, row),
                              Q_ARG(QString, QString::fromUtf8(ssid)));
    return row;
}

void tst_WifiPage::joinsWithAPasskeyByTouch()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->touch("network_Garage"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    m_screen->type(QStringLiteral("open sesame 42"));
    QCOMPARE(m_screen->property("passkeyInput", "displayText").toString(), QString(14, QChar(0x25cf)));
    QVERIFY(m_screen->touch("showPasskey"));
    QCOMPARE(m_screen->property("passkeyInput", "displayText").toString(), QStringLiteral("open sesame 42"));
    QVERIFY(m_screen->touch("dialogAction"));
    QVERIFY(m_screen->waitForEnd("dialogAction"));
    QTRY_COMPARE(m_screen->property("network_Garage", "stateText").toString(), QStringLiteral("Connected"));
    QCOMPARE(m_screen->property("network_Home", "stateText").toString(), QString());
    QVERIFY(!m_screen->item("outcome_Garage"));
    QCOMPARE(m_unit->published("/zop/services/wifi/status", "wifi_status").toObject().value("ssid").toString(),
             "Garage");
    QTRY_COMPARE(m_screen->property("wifiSwitch", "stateText").toString().remove(QChar(0x2068)).remove(QChar(0x2069)),
                 QStringLiteral("Connected to “Garage”."));

    // What was typed is not there any more.
    QVERIFY(m_screen->touch("network_Home"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    QCOMPARE(m_screen->text("passkeyInput"), QString());
    QCOMPARE(m_screen->property("passkeyInput", "echoMode").toInt(), 2);
}

void tst_WifiPage::joinsAnOpenNetworkWithTheKnob()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("network_Café am Markt"));
    QVERIFY(m_screen->turnTo("network_Café am Markt"));
    m_screen->key(Qt::Key_Return);
    QVERIFY(m_screen->waitForText("openNote", "This network is open: others can read what you send."));
    QVERIFY(!m_screen->item("passkeyInput"));
    QVERIFY(m_screen->turnTo("dialogAction"));
    m_screen->key(Qt::Key_Enter);
    QVERIFY(m_screen->waitForEnd("dialogAction"));
    QTRY_COMPARE(m_screen->property("network_Café am Markt", "stateText").toString(), QStringLiteral("Connected"));
    QTRY_VERIFY2(m_screen->item("network_Café am Markt")->hasActiveFocus(), qPrintable(m_screen->focused()));
}

void tst_WifiPage::tellsAWrongPasskeyInTheDialogAndAtTheRow()
{
    const char *const sentence = "The passkey of “Garage” is wrong.";
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->click("network_Garage"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    m_screen->type(QStringLiteral("wrong one"));
    m_screen->key(Qt::Key_Return);
    QVERIFY(m_screen->waitForText("dialogOutcome", sentence));
    QCOMPARE(m_screen->text("dialogAction"), QStringLiteral("Connect"));
    QCOMPARE(m_screen->text("passkeyInput"), QStringLiteral("wrong one")); // to be put right
    m_screen->key(Qt::Key_Escape);
    QVERIFY(m_screen->waitForEnd("dialogAction"));
    QVERIFY(m_screen->waitForText("outcome_Garage", sentence));
    QVERIFY(!m_screen->item("outcome_Office"));

    // The next attempt takes it away.
    QVERIFY(m_screen->click("network_Garage"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    m_screen->type(QStringLiteral("open sesame 42"));
    m_screen->key(Qt::Key_Return);
    QVERIFY(m_screen->waitForEnd("dialogAction"));
    QVERIFY(m_screen->waitForEnd("outcome_Garage"));
}

void tst_WifiPage::tellsThatAPasskeyIsMissing()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->click("network_Garage"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitForText("dialogOutcome", "“Garage” needs a passkey."));
    QVERIFY(m_screen->click("passkeyInput"));
    m_screen->type(QStringLiteral("short"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitForText(
        "dialogOutcome", "A passkey has 8 to 63 plain letters, digits, blanks and signs, or 64 hexadecimal digits."));
}

void tst_WifiPage::tellsWhatGoesOutOfRange()
{
    const char *const sentence = "“Garage” is not in range.";
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->click("network_Garage"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    QVERIFY(m_unit->act("out-of-range", {{"bssid", "02:00:00:00:20:03"}}));
    m_screen->type(QStringLiteral("open sesame 42"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitForText("dialogOutcome", sentence));
    QVERIFY(m_screen->click("dialogClose"));
    // There is no row any more to tell it.
    QVERIFY(m_screen->waitForEnd("network_Garage"));
    QVERIFY(m_screen->waitForText("joinOutcome", sentence));
    QVERIFY(m_unit->act("in-range", {{"bssid", "02:00:00:00:20:03"}}));
    QVERIFY(scan());
    QVERIFY(m_screen->waitForText("outcome_Garage", sentence));
    QVERIFY(!m_screen->item("joinOutcome"));
}

void tst_WifiPage::tellsWhatIsRefused()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("refuse", {{"message", "wnet_new"}, {"err", 28}, {"errmsg", "no room"}}));
    QVERIFY(m_screen->click("network_Café am Markt"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(
        m_screen->waitForText("dialogOutcome", "“Café am Markt” was not joined: the Wi-Fi service has refused it."));
    QVERIFY(m_screen->click("dialogClose"));
    QVERIFY(m_screen->waitFor("outcome_Café am Markt"));
    // Somebody else joins it.
    QVERIFY(m_unit->act("faults-end"));
    QVERIFY(QMetaObject::invokeMethod(wifi(), "join", Q_ARG(QString, QStringLiteral("Café am Markt")),
                                      Q_ARG(QString, QString())));
    QTRY_COMPARE(m_screen->property("network_Café am Markt", "stateText").toString(), QStringLiteral("Connected"));
    QVERIFY(!m_screen->item("outcome_Café am Markt"));
}

void tst_WifiPage::tellsWhatMayComeOfACancelledAttempt()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("no-reply", {{"message", "wnet_new"}}));
    QVERIFY(m_screen->click("network_Café am Markt"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitForText("dialogAction", "Cancel"));
    QVERIFY(m_unit->waitForRequest("wnet_new").isValid());
    QVERIFY(!m_screen->item("dialogOutcome"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitFor("dialogOutcome"));
    QVERIFY2(m_screen->text("dialogOutcome").startsWith("Cancelled."), qPrintable(m_screen->text("dialogOutcome")));
    QCOMPARE(m_screen->property("dialogOutcome", "kind").toInt(), 2); // not a fault
    QCOMPARE(m_screen->text("dialogAction"), QStringLiteral("Connect"));
}

void tst_WifiPage::leaves()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->click("network_Home"));
    QVERIFY(m_screen->waitForText("dialogAction", "Disconnect"));
    QVERIFY(!m_screen->item("passkeyInput"));
    QVERIFY(m_screen->touch("dialogAction"));
    QVERIFY(m_screen->waitForEnd("dialogAction"));
    QTRY_COMPARE(m_screen->property("wifiSwitch", "stateText").toString(), QStringLiteral("Not connected."));
    QCOMPARE(m_screen->property("network_Home", "stateText").toString(), QString());
}

void tst_WifiPage::saysThatItCouldNotLeave()
{
    const char *const sentence = "“Home” has not been left in time; the request may have been refused.";
    QVERIFY(begin("headunit"));
    // That it was left and joined before is old.
    QVERIFY(m_screen->click("network_Home"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitForEnd("dialogAction"));
    QTRY_COMPARE(m_screen->property("network_Home", "stateText").toString(), QString());
    QVERIFY(m_screen->click("network_Home"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    m_screen->type(QStringLiteral("correct horse 7"));
    m_screen->key(Qt::Key_Return);
    QVERIFY(m_screen->waitForEnd("dialogAction"));

    QVERIFY(m_unit->act("refuse", {{"message", "wnet_disableall"}, {"err", 16}, {"errmsg", "busy"}}));
    QVERIFY(m_screen->click("network_Home"));
    QVERIFY(m_screen->click("dialogAction"));
    QVERIFY(m_screen->waitForText("dialogAction", "Cancel"));
    QVERIFY(m_screen->property("wifiPage", "leaving").value<QObject *>()->setProperty("deadline", 1));
    QVERIFY(m_screen->waitForText("dialogOutcome", sentence));
    QVERIFY(m_screen->waitForText("dialogAction", "Disconnect"));
    QVERIFY(m_screen->click("dialogClose"));
    QVERIFY(m_screen->waitForText("outcome_Home", sentence));
    QVERIFY(m_screen->click("network_Garage"));
    QVERIFY(m_screen->waitFor("passkeyInput"));
    QVERIFY(!m_screen->item("dialogOutcome")); // it is told where it happened only
}

void tst_WifiPage::saysWhatCannotBeJoined()
{
    QVERIFY(begin("headunit"));
    for (const char *row : {"network_Office", "network_Future", "network_Old Router"}) {
        QVERIFY(m_screen->click(row));
        QVERIFY(m_screen->waitForText("unjoinable", "This car cannot join a network with this protection."));
        QVERIFY(!m_screen->item("dialogAction"));
        QVERIFY(!m_screen->item("passkeyInput"));
        QVERIFY(!m_screen->item("openNote"));
        QVERIFY(m_screen->item("dialogClose")->hasActiveFocus());
        m_screen->key(Qt::Key_Space);
        QVERIFY(m_screen->waitForEnd("dialogClose"));
    }
}

void tst_WifiPage::saysThatAnOpenTwinIsNotTaken()
{
    QVERIFY(begin("wifi-security"));
    QVERIFY(m_screen->click("network_Twins"));
    QVERIFY(m_screen->waitForText("twinNote", "An open network has the same name. It will not be used."));
    QVERIFY(m_screen->waitFor("passkeyInput"));
}

void tst_WifiPage::showsNamesAsPlainText()
{
    QVERIFY(m_unit->start(QStringLiteral(R"({
        "interfaces": [{ "name": "wlan0", "type": "wifi", "up": false }],
        "wifi": { "interface": "wlan0", "access_points": [
            { "bssid": "02:00:00:00:00:01", "ssid": "<b>bold</b>", "frequency": 2412, "signal_level": -50,
              "flags": ["ESS"] },
            { "bssid": "02:00:00:00:00:02", "ssid": "abc\u202edef", "frequency": 2412, "signal_level": -60,
              "flags": ["ESS"] },
            { "bssid": "02:00:00:00:00:03", "ssid": "two\nlines", "frequency": 2412, "signal_level": -70,
              "flags": ["ESS"] },
            { "bssid": "02:00:00:00:00:04", "ssid": "", "frequency": 2412, "signal_level": -75, "flags": ["ESS"] },
            { "bssid": "02:00:00:00:00:05", "ssid": "WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW", "frequency": 2412,
              "signal_level": -80, "flags": ["ESS"] }
        ] } })")));
    Screen::Options options;
    options.size = {800, 480};
    m_screen = std::make_unique<Screen>(options);
    QVERIFY(m_screen->open(1));
    QVERIFY(m_screen->waitFor("network_<b>bold</b>"));
    QCOMPARE(m_screen->property("wifiList", "count").toInt(), 4);
    int checked = 0;
    for (const QString &name : {QStringLiteral("<b>bold</b>"), QStringLiteral("abc\u202edef"),
                                QStringLiteral("two\nlines"), QString(32, QLatin1Char('W'))}) {
        QVERIFY(m_screen->turnTo(qPrintable(QStringLiteral("network_") + name)));
        const QQuickItem *row = m_screen->item(QStringLiteral("network_") + name);
        for (const QQuickItem *item : m_screen->items()) {
            if (!item->inherits("QQuickText") || !row->isAncestorOf(item)
                || item->property("text") != row->property("text"))
                continue;
            ++checked;
            QCOMPARE(item->property("textFormat").toInt(), int(Qt::PlainText));
            const QString shown = item->property("text").toString();
            QVERIFY(!shown.contains(QChar(0x202e)) && !shown.contains(QLatin1Char('\n')));
            QVERIFY(shown.startsWith(QChar(0x2068)) && shown.endsWith(QChar(0x2069)));
            QVERIFY(!item->property("truncated").toBool());
            QVERIFY(item->property("contentWidth").toReal() <= item->width() + 1);
        }
    }
    QCOMPARE(checked, 4);
}

void tst_WifiPage::saysThatANameCannotBeRead()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("network_Garage"));
    // Somebody else finds what the station was refused to look for.
    QVERIFY(m_unit->act("refuse", {{"message", "scan"}, {"err", 5}, {"errmsg", "no"}}));
    QVERIFY(QMetaObject::invokeMethod(wifi(), "scan"));
    QVERIFY(m_unit->waitForRequest("scan", {}).isValid());
    QByteArray results;
    for (const char *byte : {"\xff", "\x80"}) {
        results += results.isEmpty() ? '[' : ',';
        results += R"({"bssid":"02:00:00:00:66:)" + QByteArray(byte).toHex() + R"(","ssid":")"
            + QByteArray(byte).repeated(32) + R"(","signal_level":"-50","frequency":"2412","flags":["ESS"]})";
    }
    const QVariantMap bytes {{"base64", QString::fromLatin1((results + ']').toBase64())}};
    QVERIFY(m_unit->act("set", {{"object", "wifi/status"}, {"attributes", QVariantMap {{"scan_results", bytes}}}}));
    const QByteArray row = "network_" + QString(32, QChar(0xfffd)).toUtf8();
    QVERIFY(m_screen->waitFor(row.constData()));
    QVERIFY(m_screen->waitForEnd("network_Garage"));
    QVERIFY(m_screen->click(row.constData()));
    QVERIFY(m_screen->waitForText("unjoinable", "The name of this network cannot be read, so it cannot be joined."));
    QVERIFY(!m_screen->item("dialogAction"));
    m_screen->key(Qt::Key_Space);
    QVERIFY(m_screen->waitForEnd("dialogClose"));
    QVERIFY(m_unit->act("faults-end"));
    QVERIFY(scan());
    QVERIFY(m_screen->waitFor("network_Garage"));
}

void tst_WifiPage::manyNetworksAreNoBurden()
{
    QJsonArray accessPoints;
    for (int i = 0; i < 2000; ++i) {
        accessPoints += QJsonObject {{"bssid",
                                      QStringLiteral("02:00:00:00:%1:%2")
                                          .arg(i / 256, 2, 16, QLatin1Char('0'))
                                          .arg(i % 256, 2, 16, QLatin1Char('0'))},
                                     {"ssid", QStringLiteral("Network %1").arg(i, 4, 10, QLatin1Char('0'))},
                                     {"frequency", 2412},
                                     {"signal_level", -30 - i / 40},
                                     {"flags", QJsonArray {"ESS"}}};
    }
    const QJsonObject scenario {
        {"interfaces", QJsonArray {QJsonObject {{"name", "wlan0"}, {"type", "wifi"}, {"up", false}}}},
        {"wifi", QJsonObject {{"interface", "wlan0"}, {"access_points", accessPoints}}}};
    QVERIFY(m_unit->start(QString::fromUtf8(QJsonDocument(scenario).toJson())));
    m_screen = std::make_unique<Screen>();
    QVERIFY(m_screen->open(1));
    QTRY_COMPARE(m_screen->property("wifiList", "count").toInt(), 2000);
    m_screen->picture();
    // Only what is in sight, and a little around it, is made.
    const auto rows = [&] {
        const QVector<QQuickItem *> items = m_screen->items();
        return std::count_if(items.cbegin(), items.cend(), [](const QQuickItem *item) {
            return item->objectName().startsWith(QLatin1String("network_"));
        });
    };
    QVERIFY(rows() > 5 && rows() < 40);
    QVERIFY(m_screen->turnTo("network_Network 0030"));
    QVERIFY(rows() < 40);
    QVERIFY(scan());
    m_screen->picture();
    QVERIFY(m_screen->item("network_Network 0030")->hasActiveFocus());
}

void tst_WifiPage::switchesTheRadio()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("network_Home"));
    QVERIFY(m_screen->property("wifiSwitch", "on").toBool());
    QVERIFY(m_screen->touch("wifiSwitch"));
    QTRY_COMPARE(m_screen->property("wifiSwitch", "on").toBool(), false);
    QTRY_COMPARE(m_screen->property("wifiSwitch", "stateText").toString(), QStringLiteral("Wi-Fi is off."));
    QCOMPARE(m_unit->published("/zop/services/wifi/status", "wifi_power").toString(), "off");
    QVERIFY(m_screen->waitForEnd("network_Home"));
    QVERIFY(!m_screen->item("emptyText"));

    QVERIFY(m_screen->turnTo("wifiSwitch"));
    m_screen->key(Qt::Key_Space);
    QTRY_VERIFY(m_screen->property("wifiSwitch", "on").toBool());
    QVERIFY(m_screen->waitFor("network_Home"));

    // Somebody else does it.
    QVERIFY(m_unit->act("radio-off"));
    QTRY_COMPARE(m_screen->property("wifiSwitch", "on").toBool(), false);
    QVERIFY(m_unit->act("radio-on"));
    QTRY_VERIFY(m_screen->property("wifiSwitch", "on").toBool());
}

void tst_WifiPage::saysThatTheSwitchWasNotHeard()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("refuse", {{"message", "wifi_power"}, {"err", 5}, {"errmsg", "no"}}));
    QVERIFY(m_screen->click("wifiSwitch"));
    QTRY_VERIFY(m_screen->property("wifiSwitch", "busy").toBool());
    auto *request = m_screen->property("wifiPage", "powering").value<QObject *>();
    QVERIFY(m_unit->waitForRequest("wifi_power").isValid());
    QVERIFY(request->setProperty("deadline", 1));
    QVERIFY(
        m_screen->waitForText("powerOutcome", "Wi-Fi has not gone off in time; the request may have been refused."));
    QVERIFY(m_screen->property("wifiSwitch", "on").toBool());
    QVERIFY(!m_screen->property("wifiSwitch", "busy").toBool());
    QVERIFY(m_unit->act("radio-off")); // late
    QTRY_VERIFY(!m_screen->property("wifiSwitch", "on").toBool());
    QVERIFY(!m_screen->item("powerOutcome"));
}

void tst_WifiPage::saysThatTheServiceIsAway()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("network_Home"));
    QVERIFY(!m_screen->item("wifiAway"));
    QVERIFY(m_unit->act("daemon-dies", {{"daemon", "wifi"}}));
    QVERIFY(m_screen->waitForText("wifiAway", "The Wi-Fi service has stopped."));
    QVERIFY(m_screen->click("wifiSwitch"));
    QVERIFY(m_screen->waitForText("powerOutcome", "The Wi-Fi service has stopped."));
    QVERIFY(m_unit->act("daemon-back", {{"daemon", "wifi"}}));
    QVERIFY(m_screen->waitForEnd("wifiAway"));
    QVERIFY(!m_screen->item("powerOutcome"));

    m_screen.reset();
    QVERIFY(m_unit->stop());
    m_unit->setWithout({QStringLiteral("wifi")});
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitForText("wifiAway", "The Wi-Fi service has not started yet."));
}

void tst_WifiPage::looksForNetworksOnlyWhileItIsShown()
{
    QVERIFY(begin("headunit"));
    QVERIFY(wifi()->property("looking").toBool());
    QObject *const controller = wifi();
    QVERIFY(m_screen->open(0));
    QVERIFY(!controller->property("looking").toBool());
    QVERIFY(m_screen->open(1));
    QVERIFY(controller->property("looking").toBool());
}

void tst_WifiPage::aListThatIsTouchedStandsStill()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("network_Café am Markt"));
    m_screen->picture();
    QCOMPARE(rowOf("Café am Markt"), 3);
    const QPoint spot = m_screen->placeOf(m_screen->item("network_Office")).center().toPoint();
    QTest::mousePress(m_screen->window(), Qt::LeftButton, Qt::NoModifier, spot);
    QVERIFY(m_unit->act("signal", {{"bssid", "02:00:00:00:20:04"}, {"signal_level", -30}}));
    QVERIFY(scan());
    QCOMPARE(m_screen->property("network_Café am Markt", "bars").toInt(), 4);
    QCOMPARE(rowOf("Café am Markt"), 3);
    QTest::mouseRelease(m_screen->window(), Qt::LeftButton, Qt::NoModifier, spot);
    QTRY_COMPARE(rowOf("Café am Markt"), 1);
    QVERIFY(m_screen->waitForText("dialogName", "Office")); // what was under the finger
    QVERIFY(m_screen->click("dialogClose"));

    static QTouchDevice *const device = QTest::createTouchDevice();
    QTest::touchEvent(m_screen->window(), device).press(0, spot, m_screen->window());
    QVERIFY(m_unit->act("signal", {{"bssid", "02:00:00:00:20:04"}, {"signal_level", -90}}));
    QVERIFY(scan());
    QCOMPARE(rowOf("Café am Markt"), 1);
    QTest::touchEvent(m_screen->window(), device).release(0, spot, m_screen->window());
    QTRY_VERIFY(rowOf("Café am Markt") > 3);
}

void tst_WifiPage::aRowThatMovesKeepsTheFocus()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("network_Café am Markt"));
    QVERIFY(m_screen->turnTo("network_Café am Markt"));
    const QQuickItem *const row = m_screen->item("network_Café am Markt");
    QVERIFY(m_unit->act("signal", {{"bssid", "02:00:00:00:20:04"}, {"signal_level", -30}}));
    QVERIFY(scan());
    QCOMPARE(rowOf("Café am Markt"), 1);
    m_screen->picture();
    QCOMPARE(m_screen->item("network_Café am Markt"), row);
    QVERIFY(row->hasActiveFocus());
    m_screen->key(Qt::Key_Up);
    QVERIFY(m_screen->item("network_Home")->hasActiveFocus());
}

MORVEK_SCREEN_TEST(tst_WifiPage)
#include "tst_wifipage.moc"
