// SPDX-License-Identifier: Apache-2.0
#include "wifiunit.h"

using namespace morvek;

/*! Joining networks: what is chosen, every way in which it ends, and that nothing of it is in the way of the next. */
class WifiControllerJoinTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_unit = std::make_unique<WifiUnit>(); }
    void cleanup() { m_unit.reset(); }

    void joins_data();
    void joins();
    void joinsOneAfterTheOther();
    void tellsTheSteps();
    void isInvalid_data();
    void isInvalid();
    void possiblePasskeys_data();
    void possiblePasskeys();
    void securityOfNewerKinds_data();
    void securityOfNewerKinds();
    void openWithWps();
    void unsupportedWithAnOpenTwin();

    void isNotInRange();
    void goesOutOfRangeMeanwhile();
    void isGoneWhenItDoesNotAnswer();
    void passkeyIsWrong();
    void isNotLetIn_data();
    void isNotLetIn();
    void isNotLetInWithoutScans_data();
    void isNotLetInWithoutScans();
    void isLetInAfterAll();
    void openOneLetsNobodyIn();
    void isRefused_data();
    void isRefused();

    void scanIsRefusedAtFirst();
    void scanIsNeverAnswered();
    void takesTooLong();
    void takesTooLongWhileConnected();
    void isCancelledBeforeAnythingWasAsked();
    void isCancelled();
    void isCancelledWhileConnected();

    void isBusy();
    void isOvertakenByLeaving();
    void isOvertakenByAnotherNetwork();
    void isOvertakenByAnOpenTwin();
    void isOvertakenByTheRadio();
    void isOvertakenByTheRadioWhileConnected();
    void daemonDies_data();
    void daemonDies();
    void deathIsNoRefusal();
    void whatADeadDaemonWasAskedIsNotInTheWay();
    void controllerIsDeletedMeanwhile();

private:
    WifiController &wifi() const { return *m_unit->wifi; }
    bool act(const char *what, const QVariantMap &keys = {}) const
    {
        return m_unit->unit.act(QLatin1String(what), keys);
    }
    bool fault(const char *what, const char *message, QVariantMap keys = {}) const
    {
        keys.insert(QStringLiteral("message"), QLatin1String(message));
        return act(what, keys);
    }
    bool waitFor(const char *message) const { return m_unit->unit.waitForRequest(QLatin1String(message)).isValid(); }
    NetworkRequest *join(const char *ssid, const char *passkey = "") const
    {
        return wifi().join(QString::fromUtf8(ssid), QString::fromUtf8(passkey));
    }
    /*! Begins to join a network that never answers, and waits until the station has left the present one for it. */
    NetworkRequest *joinMute()
    {
        if (!m_unit->start(QStringLiteral("town")))
            return nullptr;
        NetworkRequest *request = join("Mute", "silence is golden");
        const bool hasLeft = m_unit->unit.waitUntil([this] { return !wifi().isConnected(); });
        return hasLeft && waitFor("wnet_select") ? request : nullptr;
    }
    /*! Begins to join a network of which the daemon never hears, so that the station stays where it is. */
    NetworkRequest *joinInVain()
    {
        if (!m_unit->start(QStringLiteral("town")) || !fault("no-reply", "wnet_new", {{QStringLiteral("times"), 1}}))
            return nullptr;
        NetworkRequest *request = join("Garage", "open sesame 42");
        return waitFor("wnet_new") ? request : nullptr;
    }

    std::unique_ptr<WifiUnit> m_unit;
};

void WifiControllerJoinTest::joins_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<QString>("state");
    const auto row = [](const char *name, const char *ssid, const char *passkey, const char *state) {
        QTest::newRow(name) << QString::fromUtf8(ssid) << QString::fromUtf8(passkey) << QString::fromUtf8(state);
    };
    row("WPA2", "Garage", "open sesame 42", "Connected on Garage/03");
    row("WPA", "Attic", "open sesame 42", "Connected on Attic/05");
    row("open", "Café ☕", "", "Connected on Café ☕/06");
    row("protected twin", "Twins", "correct horse 7", "Connected on Twins/08");
    row("level that is not known", "No level", "", "Connected on No level/10");
    row("the present network anew", "Home", "correct horse 7", "Connected on Home/01");
}

void WifiControllerJoinTest::joins()
{
    QFETCH(QString, ssid);
    QFETCH(QString, passkey);
    QFETCH(QString, state);
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *request = wifi().join(ssid, passkey);
    QCOMPARE(request->deadline(), 45000);
    QCOMPARE(request->subject(), ssid);
    QVERIFY(request->isRunning());
    QString atTheEnd;
    connect(request, &NetworkRequest::finished, this, [&] { atTheEnd = ToldStates::line(wifi()); });
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
    QCOMPARE(atTheEnd, state);
    QCOMPARE(m_unit->listed().constFirst(), ssid);
    QCOMPARE(m_unit->told(ssid, WifiNetworkModel::InUseRole), QVariant(true));
    QCOMPARE(m_unit->asked(),
             QStringList({QStringLiteral("scan"), QStringLiteral("wnet_new"), QStringLiteral("wnet_select")}));
}

void WifiControllerJoinTest::joinsOneAfterTheOther()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(join("Attic", "open sesame 42")), QStringLiteral("done"));
    QCOMPARE(m_unit->asked(),
             QStringList({QStringLiteral("scan"), QStringLiteral("wnet_new"), QStringLiteral("wnet_select"),
                          QStringLiteral("scan"), QStringLiteral("wnet_new"), QStringLiteral("wnet_select")}));
}

void WifiControllerJoinTest::tellsTheSteps()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    ToldStates told(wifi());
    NetworkRequest *request = join("Garage", "open sesame 42");
    QCOMPARE(ToldStates::line(wifi()), QStringLiteral("Joining on Home/01 joining Garage"));
    QCOMPARE(plain(wifi().stateText()), QString::fromUtf8("Connecting to “Garage”."));
    QCOMPARE(told.take(), QStringList()); // from the event loop only
    connect(request, &NetworkRequest::finished, this, [&] { told.lines += QStringLiteral("finished"); });
    bool wasJoining = false;
    connect(wifi().networks(), &QAbstractItemModel::dataChanged, this,
            [&] { wasJoining |= m_unit->told(QStringLiteral("Garage"), WifiNetworkModel::JoiningRole).toBool(); });
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
    told.lines.removeAll(QStringLiteral("Joining on joining Garage")); // when it is seen in between
    QCOMPARE(told.take(),
             QStringList({QStringLiteral("Joining on Home/01 joining Garage"), QStringLiteral("Connected on Garage/03"),
                          QStringLiteral("finished")}));
    QVERIFY(wasJoining);
    QCOMPARE(m_unit->told(QStringLiteral("Garage"), WifiNetworkModel::JoiningRole), QVariant(false));
}

void WifiControllerJoinTest::isInvalid_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<bool>("scans");
    const auto row = [](const char *name, const QString &ssid, const QString &passkey, const char *sentence,
                        bool scans) { QTest::newRow(name) << ssid << passkey << QString::fromUtf8(sentence) << scans; };
    const QString garage = QStringLiteral("Garage");
    const QString cafe = QString::fromUtf8("Café ☕");
    row("no name", QString(), QString(), "A network is joined by its name, and there is none.", false);
    row("no UTF-8", QString(QChar(0xfffd)) + garage, QString(),
        "The name of this network cannot be read, so it cannot be joined.", false);
    const char *form = "A passkey has 8 to 63 plain letters, digits, blanks and signs, or 64 hexadecimal digits.";
    row("too short", garage, QStringLiteral("sesame7"), form, false);
    row("too long", garage, QString(64, QLatin1Char('g')), form, false);
    row("too many digits", garage, QString(65, QLatin1Char('7')), form, false);
    row("no ASCII", garage, QString::fromUtf8("open sésame"), form, false);
    row("no passkey", garage, QString(), "“Garage” needs a passkey.", true);
    row("no passkey, with an open twin", QStringLiteral("Twins"), QString(),
        "“Twins” needs a passkey. The open network of that name is not taken for it.", true);
    row("open", cafe, QStringLiteral("open sesame 42"),
        "“Café ☕” is open: join it without a passkey, if that is what you want.", true);
    row("enterprise", QStringLiteral("Office"), QStringLiteral("open sesame 42"),
        "“Office” cannot be joined. Its security: WPA2 Enterprise.", true);
    row("enterprise without a passkey", QStringLiteral("Office"), QString(),
        "“Office” cannot be joined. Its security: WPA2 Enterprise.", true);
    row("of several kinds", QStringLiteral("Museum"), QString(),
        "“Museum” cannot be joined. Its security: WEP + WPA2 Enterprise.", true);
    row("WPA3", QStringLiteral("Future"), QStringLiteral("open sesame 42"),
        "“Future” cannot be joined. Its security: WPA3.", true);
}

void WifiControllerJoinTest::isInvalid()
{
    QFETCH(QString, ssid);
    QFETCH(QString, passkey);
    QFETCH(QString, sentence);
    QFETCH(bool, scans);
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *request = wifi().join(ssid, passkey);
    QVERIFY(request->isRunning());
    QCOMPARE(wifi().state(), scans ? WifiController::Joining : WifiController::Connected);
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Invalid: ") + sentence);
    QCOMPARE(ToldStates::line(wifi()), QStringLiteral("Connected on Home/01"));
    // What follows is asked, and nothing was before but the scan.
    QCOMPARE(m_unit->endOf(wifi().setPowered(false)), QStringLiteral("done"));
    QStringList asked {QStringLiteral("wifi_power")};
    if (scans)
        asked.prepend(QStringLiteral("scan"));
    QCOMPARE(m_unit->asked(), asked);
}

void WifiControllerJoinTest::possiblePasskeys_data()
{
    QTest::addColumn<QString>("passkey");
    QTest::newRow("shortest") << QStringLiteral(" \"~sam~ ");
    QTest::newRow("longest") << QString(63, QLatin1Char('g'));
    QTest::newRow("digits") << QStringLiteral("0123456789abcdefABCDEF0123456789abcdefABCDEF0123456789abcdefABCD");
}

void WifiControllerJoinTest::possiblePasskeys()
{
    QFETCH(QString, passkey);
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QCOMPARE(m_unit->endOf(wifi().join(QStringLiteral("Garage"), passkey)),
             QString::fromUtf8("WrongPasskey: The passkey of “Garage” is wrong."));
}

void WifiControllerJoinTest::securityOfNewerKinds_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("end");
    QTest::newRow("WPA3") << "New" << QString::fromUtf8("Invalid: “New” cannot be joined. Its security: WPA3.");
    QTest::newRow("WPA3 with an open twin")
        << "Twins"
        << QString::fromUtf8("Invalid: “Twins” cannot be joined. The open network of that name is not taken for it.");
    QTest::newRow("OWE") << "Encrypted"
                         << QString::fromUtf8("Invalid: “Encrypted” cannot be joined. Its security: OWE.");
    QTest::newRow("OWE with an open twin")
        << "Lounge"
        << QString::fromUtf8("Invalid: “Lounge” cannot be joined. The open network of that name is not taken for it.");
    QTest::newRow("unknown protection with an open twin")
        << "Strange"
        << QString::fromUtf8("Invalid: “Strange” cannot be joined. The open network of that name is not taken for it.");
    QTest::newRow("WPA2 and WPA3") << "Both" << QStringLiteral("done");
    QTest::newRow("WPA2 in other words") << "Plain" << QStringLiteral("done");
}

void WifiControllerJoinTest::securityOfNewerKinds()
{
    QFETCH(QString, ssid);
    QFETCH(QString, end);
    QVERIFY(m_unit->start(QStringLiteral("newer")));
    QCOMPARE(m_unit->endOf(wifi().join(ssid, QStringLiteral("correct horse 7"))), end);
    if (end != QLatin1String("done"))
        QCOMPARE(m_unit->endOf(wifi().join(ssid)), end);
}

/*! WPS protects nothing by itself. */
void WifiControllerJoinTest::openWithWps()
{
    QVERIFY(m_unit->start(QStringLiteral("air")));
    QCOMPARE(m_unit->endOf(wifi().join(QStringLiteral("Button"), QStringLiteral("correct horse 7"))),
             QString::fromUtf8("Invalid: “Button” is open: join it without a passkey, if that is what you want."));
    QCOMPARE(m_unit->endOf(wifi().join(QStringLiteral("Button"))), QStringLiteral("done"));
}

void WifiControllerJoinTest::unsupportedWithAnOpenTwin()
{
    QVERIFY(m_unit->start(QStringLiteral("office-twin")));
    QCOMPARE(
        m_unit->endOf(join("Office")),
        QString::fromUtf8("Invalid: “Office” cannot be joined. The open network of that name is not taken for it."));
}

void WifiControllerJoinTest::isNotInRange()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QCOMPARE(m_unit->endOf(join("garage", "open sesame 42")),
             QString::fromUtf8("OutOfRange: “garage” is not in range."));
    const QString longest(40, QLatin1Char('m'));
    QCOMPARE(m_unit->endOf(wifi().join(longest)),
             QString::fromUtf8("OutOfRange: “%1…” is not in range.").arg(longest.left(31)));
    NetworkRequest *strange = join("gar\nage");
    QCOMPARE(m_unit->endOf(strange), QString::fromUtf8("OutOfRange: “gar␊age” is not in range."));
    QVERIFY(strange->sentence().contains(QChar(0x2068)) && strange->sentence().contains(QChar(0x2069)));
    QCOMPARE(ToldStates::line(wifi()), QStringLiteral("Connected on Home/01"));
    QCOMPARE(m_unit->asked(), QStringList({QStringLiteral("scan"), QStringLiteral("scan"), QStringLiteral("scan")}));
}

/*! The daemon tells that it finds no such network. */
void WifiControllerJoinTest::goesOutOfRangeMeanwhile()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(fault("late", "wnet_new", {{QStringLiteral("delay"), 1000}}));
    NetworkRequest *request = join("Attic", "open sesame 42");
    QVERIFY(waitFor("wnet_new"));
    QVERIFY(act("out-of-range", {{QStringLiteral("bssid"), QStringLiteral("02:00:00:00:70:05")}}));
    QVERIFY(m_unit->unit.pass(1000));
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("OutOfRange: “Attic” is not in range."));
    // It is withdrawn: when it comes back, it is not joined.
    QVERIFY(waitFor("wnet_disableall"));
    QVERIFY(act("in-range", {{QStringLiteral("bssid"), QStringLiteral("02:00:00:00:70:05")}}));
    QCOMPARE(m_unit->endOf(wifi().scan()), QStringLiteral("done"));
    QCOMPARE(wifi().state(), WifiController::Disconnected);
}

/*! Nothing tells, so it is looked for once more. */
void WifiControllerJoinTest::isGoneWhenItDoesNotAnswer()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    QVERIFY(act("out-of-range", {{QStringLiteral("bssid"), QStringLiteral("02:00:00:00:70:0e")}}));
    request->setDeadline(1200);
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("OutOfRange: “Mute” is not in range."));
    QVERIFY(waitFor("wnet_disableall"));
}

void WifiControllerJoinTest::passkeyIsWrong()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *request = join("Garage", "open sesame 43");
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("WrongPasskey: The passkey of “Garage” is wrong."));
    QCOMPARE(request->code(), 0);
    QTRY_COMPARE(wifi().state(), WifiController::Disconnected);
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
    // The daemon has given it up itself, and needs no looking around to tell.
    QCOMPARE(m_unit->asked(),
             QStringList({QStringLiteral("scan"), QStringLiteral("wnet_new"), QStringLiteral("wnet_select"),
                          QStringLiteral("scan"), QStringLiteral("wnet_new"), QStringLiteral("wnet_select")}));
}

void WifiControllerJoinTest::isNotLetIn_data()
{
    QTest::addColumn<QString>("event");
    QTest::addColumn<bool>("isInRange");
    QTest::addColumn<QString>("end");
    const QString unknown = QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=1 ssid=\"Mute\" auth_failures=1 "
                                           "duration=10 reason=CONN_FAILED");
    QTest::newRow("in range") << unknown << true
                              << QString::fromUtf8(
                                     "WrongPasskey: “Mute” has not let the unit in: the passkey is wrong, as a rule.");
    QTest::newRow("out of range") << unknown << false << QString::fromUtf8("OutOfRange: “Mute” is not in range.");
    QTest::newRow("wrong key, of a network that is hardly in range")
        << QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=1 reason=WRONG_KEY") << false
        << QString::fromUtf8("WrongPasskey: The passkey of “Mute” is wrong.");
}

void WifiControllerJoinTest::isNotLetIn()
{
    QFETCH(QString, event);
    QFETCH(bool, isInRange);
    QFETCH(QString, end);
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    if (!isInRange)
        QVERIFY(act("out-of-range", {{QStringLiteral("bssid"), QStringLiteral("02:00:00:00:70:0e")}}));
    QVERIFY(act("wifi-event", {{QStringLiteral("text"), event}}));
    QCOMPARE(m_unit->endOf(request), end);
    QCOMPARE(request->text(),
             end.startsWith(QLatin1String("Wrong")) ? QStringLiteral("Failed to connect to Access Point") : QString());
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
}

void WifiControllerJoinTest::isNotLetInWithoutScans_data()
{
    QTest::addColumn<int>("deadline");
    QTest::newRow("when there is time") << 1200;
    QTest::newRow("when there is none") << 1;
}

void WifiControllerJoinTest::isNotLetInWithoutScans()
{
    QFETCH(int, deadline);
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    QVERIFY(fault("refuse", "scan", {{QStringLiteral("err"), 16}}));
    const int before = m_unit->askedSoFar();
    QVERIFY(act("wifi-event", {{QStringLiteral("text"), QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=1")}}));
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("scan"), {}, before).isValid());
    request->setDeadline(deadline);
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("WrongPasskey: “Mute” has not let the unit in: the passkey is wrong, as a rule."));
    QCOMPARE(m_unit->endOf(wifi().setPowered(false)), QStringLiteral("done"));
    QCOMPARE(m_unit->asked(before),
             QStringList({QStringLiteral("scan"), QStringLiteral("wnet_disableall"), QStringLiteral("wifi_power")}));
}

/*! The daemon tries again while it is being looked why it has failed. */
void WifiControllerJoinTest::isLetInAfterAll()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    QVERIFY(fault("no-reply", "scan"));
    const int before = m_unit->askedSoFar();
    QVERIFY(act("wifi-event", {{QStringLiteral("text"), QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=1")}}));
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("scan"), {}, before).isValid());
    QVERIFY(m_unit->publishConnection("Mute", "0e", "WPA2-PSK"));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
}

void WifiControllerJoinTest::openOneLetsNobodyIn()
{
    QVERIFY(m_unit->start(QStringLiteral("mute-and-open")));
    NetworkRequest *request = join("Mute");
    QVERIFY(waitFor("wnet_select"));
    QVERIFY(act("wifi-event",
                {{QStringLiteral("text"), QStringLiteral("CTRL-EVENT-SSID-TEMP-DISABLED id=0 reason=WRONG_KEY")}}));
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("Refused: “Mute” has not let the unit in; it may not be open after all."));
}

void WifiControllerJoinTest::isRefused_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("text");
    QTest::newRow("new network") << "new-refused"
                                 << "no room for another network";
    QTest::newRow("selection") << "select-refused"
                               << "the adapter does not answer";
}

void WifiControllerJoinTest::isRefused()
{
    QFETCH(QString, scenario);
    QFETCH(QString, text);
    QVERIFY(m_unit->start(scenario));
    NetworkRequest *request = join("Home", "correct horse 7");
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("Refused: “Home” was not joined: the Wi-Fi service has refused it."));
    QCOMPARE(request->text(), text);
    QCOMPARE(request->code(), 0); // of which the library tells nothing
    QVERIFY(!m_unit->asked().contains(QStringLiteral("wnet_disableall")));
}

void WifiControllerJoinTest::scanIsRefusedAtFirst()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(fault("refuse", "scan", {{QStringLiteral("err"), 16}, {QStringLiteral("times"), 2}}));
    NetworkRequest *request = join("Garage", "open sesame 42");
    request->setDeadline(2000);
    QVERIFY(m_unit->unit.waitForRequest(QStringLiteral("scan")).isValid());
    request->setDeadline(4000);
    QCOMPARE(m_unit->endOf(request), QStringLiteral("done"));
    QCOMPARE(m_unit->asked().count(QStringLiteral("scan")), 3);
}

void WifiControllerJoinTest::scanIsNeverAnswered()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(fault("no-reply", "scan"));
    NetworkRequest *request = join("Garage", "open sesame 42");
    request->setDeadline(300);
    QCOMPARE(m_unit->endOf(request),
             QStringLiteral("TimedOut: The search for networks has not ended in time; it may have been refused."));
    QVERIFY(!wifi().isScanning());
    QCOMPARE(wifi().state(), WifiController::Connected);
}

void WifiControllerJoinTest::takesTooLong()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    request->setDeadline(800);
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("TimedOut: Not joined in time. “Mute” may still be joined."));
    // Otherwise it would be joined some time.
    QVERIFY(waitFor("wnet_disableall"));
    QVERIFY(m_unit->asked().count(QStringLiteral("scan")) > 1); // it is still in range
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
}

/*! What it was to leave would be lost when it were withdrawn; and it must not be in the way of the next. */
void WifiControllerJoinTest::takesTooLongWhileConnected()
{
    NetworkRequest *request = joinInVain();
    QVERIFY(request);
    request->setDeadline(300);
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8(
                 "TimedOut: Not joined in time. The unit is still connected to “Home”, and may yet leave it."));
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
    QCOMPARE(ToldStates::line(wifi()), QStringLiteral("Connected on Garage/03"));
    QStringList asked = m_unit->asked();
    QVERIFY(asked.indexOf(QStringLiteral("wnet_disableall")) > asked.lastIndexOf(QStringLiteral("scan")));
    asked.removeAll(QStringLiteral("scan"));
    QCOMPARE(asked,
             QStringList({QStringLiteral("wnet_new"), QStringLiteral("wnet_disableall"), QStringLiteral("wnet_new"),
                          QStringLiteral("wnet_select")}));
}

void WifiControllerJoinTest::isCancelledBeforeAnythingWasAsked()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    NetworkRequest *request = join("Garage", "open sesame 42");
    request->cancel();
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Cancelled: Cancelled. Nothing has changed."));
    QCOMPARE(m_unit->endOf(wifi().setPowered(false)), QStringLiteral("done"));
    QCOMPARE(m_unit->asked(), QStringList({QStringLiteral("scan"), QStringLiteral("wifi_power")}));
}

void WifiControllerJoinTest::isCancelled()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    request->cancel();
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("Cancelled: Cancelled. “Mute” may still be joined."));
    QVERIFY(waitFor("wnet_disableall"));
    QCOMPARE(wifi().state(), WifiController::Disconnected);
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
}

void WifiControllerJoinTest::isCancelledWhileConnected()
{
    NetworkRequest *request = joinInVain();
    QVERIFY(request);
    request->cancel();
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("Cancelled: Cancelled. The unit is still connected to “Home”, and may yet leave it."));
    QCOMPARE(m_unit->endOf(join("Café ☕")), QStringLiteral("done"));
    QVERIFY(m_unit->asked().indexOf(QStringLiteral("wnet_disableall")) > 2); // with the next one only
}

void WifiControllerJoinTest::isBusy()
{
    NetworkRequest *first = joinMute();
    QVERIFY(first);
    WifiController other(m_unit->services.get());
    const int before = m_unit->askedSoFar();
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")),
             QString::fromUtf8("Busy: “Mute” is being joined: wait for that, or cancel it."));
    QCOMPARE(m_unit->endOf(other.join(QStringLiteral("Garage"), QStringLiteral("open sesame 42"))),
             QString::fromUtf8("Busy: “Mute” is being joined: wait for that, or cancel it."));
    QVERIFY(first->isRunning());
    QCOMPARE(wifi().joiningSsid(), QStringLiteral("Mute"));
    QCOMPARE(m_unit->asked(before), QStringList());
    // The way is free as soon as it is cancelled, also for another controller.
    first->cancel();
    QCOMPARE(m_unit->endOf(other.join(QStringLiteral("Garage"), QStringLiteral("open sesame 42"))),
             QStringLiteral("done"));
}

void WifiControllerJoinTest::isOvertakenByLeaving()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    WifiController other(m_unit->services.get());
    NetworkRequest *leaving = other.leave();
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Overtaken: Leaving the network was asked for meanwhile."));
    QCOMPARE(m_unit->endOf(leaving), QStringLiteral("done"));
    QCOMPARE(m_unit->asked().count(QStringLiteral("wnet_disableall")), 1);

    NetworkRequest *early = join("Garage", "open sesame 42"); // which has asked nothing yet
    QCOMPARE(m_unit->endOf(wifi().leave()), QStringLiteral("done"));
    QCOMPARE(m_unit->endOf(early), QStringLiteral("Overtaken: Leaving the network was asked for meanwhile."));
    QCOMPARE(m_unit->asked().count(QStringLiteral("wnet_new")), 1);
}

void WifiControllerJoinTest::isOvertakenByAnotherNetwork()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    QVERIFY(m_unit->publishConnection("Home", "01", "WPA2-PSK"));
    QCOMPARE(m_unit->endOf(request), QString::fromUtf8("Overtaken: The unit has connected to “Home” instead."));
    QCOMPARE(ToldStates::line(wifi()), QStringLiteral("Connected on Home/01"));
    QVERIFY(!m_unit->asked().contains(QStringLiteral("wnet_disableall")));
}

void WifiControllerJoinTest::isOvertakenByAnOpenTwin()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    QVERIFY(m_unit->publishConnection("Mute", "99", "NONE"));
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("Overtaken: The unit has connected to an open network of the name “Mute”."));
}

void WifiControllerJoinTest::isOvertakenByTheRadio()
{
    NetworkRequest *request = joinMute();
    QVERIFY(request);
    NetworkRequest *off = wifi().setPowered(false);
    QCOMPARE(wifi().state(), WifiController::SwitchingOff);
    QCOMPARE(wifi().joiningSsid(), QString());
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Overtaken: Wi-Fi was switched off meanwhile."));
    QCOMPARE(m_unit->endOf(off), QStringLiteral("done"));
    QVERIFY(waitFor("wnet_disableall")); // or it would be joined when the radio is on again
}

/*! It costs the present network, too. */
void WifiControllerJoinTest::isOvertakenByTheRadioWhileConnected()
{
    NetworkRequest *request = joinInVain();
    QVERIFY(request);
    QVERIFY(act("radio-off"));
    QCOMPARE(m_unit->endOf(request), QStringLiteral("Overtaken: Wi-Fi was switched off meanwhile."));
    QCOMPARE(m_unit->endOf(wifi().setPowered(true)), QStringLiteral("done"));
    QCOMPARE(m_unit->asked().count(QStringLiteral("wnet_disableall")), 1);
}

void WifiControllerJoinTest::daemonDies_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("backAfter");
    QTest::addColumn<QString>("end");
    const QString joined =
        QString::fromUtf8("Lost: The Wi-Fi service has stopped; “Home” may have been joined all the same.");
    for (const char *message : {"wnet_new", "wnet_select"}) {
        QTest::addRow("%s", message) << message << -1 << joined;
        QTest::addRow("%s, and is back at once", message) << message << 0 << joined;
    }
    QTest::addRow("scan") << "scan" << -1 << "Lost: The service has stopped meanwhile.";
}

void WifiControllerJoinTest::daemonDies()
{
    QFETCH(QString, message);
    QFETCH(int, backAfter);
    QFETCH(QString, end);
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVariantMap keys {{QStringLiteral("times"), 1}};
    if (backAfter >= 0)
        keys.insert(QStringLiteral("back_after"), backAfter);
    QVERIFY(fault("die", message.toLatin1().constData(), keys));
    NetworkRequest *request = join("Home", "correct horse 7");
    if (backAfter >= 0) {
        QVERIFY(m_unit->unit.waitForRequest(message).isValid());
        QVERIFY(m_unit->unit.pass(backAfter));
    }
    QCOMPARE(m_unit->endOf(request), end);
    QVERIFY(request->text().isEmpty());
    if (backAfter < 0)
        QVERIFY(act("daemon-back", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QVERIFY(m_unit->unit.waitForReady(&wifi()));
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
}

/*! The library tells both in the same way, and a daemon that is killed is not missed at once. */
void WifiControllerJoinTest::deathIsNoRefusal()
{
    NetworkRequest *request = joinInVain();
    QVERIFY(request);
    m_unit->services->setWatchPause(500);
    m_unit->unit.kill();
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("Lost: The Wi-Fi service has stopped; “Garage” may have been joined all the same."));
}

/*! The library goes on waiting for what it was asked, and would be busy with that for ever. */
void WifiControllerJoinTest::whatADeadDaemonWasAskedIsNotInTheWay()
{
    QVERIFY(m_unit->start(QStringLiteral("town")));
    QVERIFY(fault("ignore", "wnet_select", {{QStringLiteral("times"), 1}})); // the station stays connected
    NetworkRequest *request = join("Garage", "open sesame 42");
    QVERIFY(waitFor("wnet_select"));
    QVERIFY(act("daemon-dies", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QCOMPARE(m_unit->endOf(request),
             QString::fromUtf8("Lost: The Wi-Fi service has stopped; “Garage” may have been joined all the same."));
    QVERIFY(act("daemon-back", {{QStringLiteral("daemon"), QStringLiteral("wifi")}}));
    QVERIFY(m_unit->unit.waitForReady(&wifi()));
    QCOMPARE(ToldStates::line(wifi()), QStringLiteral("Connected on Home/01"));
    QCOMPARE(m_unit->endOf(join("Garage", "open sesame 42")), QStringLiteral("done"));
}

void WifiControllerJoinTest::controllerIsDeletedMeanwhile()
{
    QVERIFY(joinMute());
    WifiController other(m_unit->services.get());
    m_unit->wifi.reset();
    QCOMPARE(m_unit->endOf(other.join(QStringLiteral("Garage"), QStringLiteral("open sesame 42"))),
             QStringLiteral("done"));
    QVERIFY(waitFor("wnet_disableall"));
}

QTEST_GUILESS_MAIN(WifiControllerJoinTest)
#include "tst_wificontrollerjoin.moc"
