// SPDX-License-Identifier: Apache-2.0
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtTest/QtTest>

#include <functional>

using namespace morvek;
using namespace WifiDaemon;

namespace {

const char *const Invalid = "failure -1 Wifi Configuration provided is not valid";
const char *const Busy = "failure -1 Another connect operation in progress.";
const char *const Cancelled = "failure -1 Cancelling connect operation, due to issued disconnect command";
const char *const TooLate = "warning 1300 Connect operation was cancelled due to disconnect attempt";

/*! Brings a pending connect as far as the reply to "wnet_new", and to "wnet_select" too. */
void acceptNew()
{
    ZopDouble::answer(lastCommand(), text("7"));
}

void acceptBoth()
{
    acceptNew();
    ZopDouble::answer(lastCommand());
}

void failByEvent()
{
    change("last_event", text("CTRL-EVENT-SSID-TEMP-DISABLED id=7"));
}

} // namespace

class TestWifiProviderJoining : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void oneConnectAtATime();
    void invalidIsToldBeforeBusy();

    void connects();
    void identifiers_data();
    void identifiers();
    void refusedNew_data();
    void refusedNew();
    void refusedSelect();
    void disconnectCancels_data();
    void disconnectCancels();
    void lateReplies_data();
    void lateReplies();
    void lateRepliesMeetANewConnect();

    void deletedConnectStillBlocks_data();
    void deletedConnectStillBlocks();
    void passkeyIsNotLogged();
};
void TestWifiProviderJoining::oneConnectAtATime()
{
    const WifiProviderFixture fixture;
    const ConnectPointer first = fixture.join();
    LogCapture log(7);
    const ConnectPointer second = fixture.join();
    const ConnectPointer third = fixture.join(WifiConnectionConfig());
    QVERIFY(log.take().isEmpty());
    const ConnectEnd firstEnd(first.get());
    const ConnectEnd secondEnd(second.get());
    const ConnectEnd thirdEnd(third.get());
    QCOMPARE(secondEnd.text(), QString::fromLatin1(Busy));
    QCOMPARE(thirdEnd.text(), QString::fromLatin1(Busy));
    QCOMPARE(firstEnd.text(), QString());
    QCOMPARE(sent(), lines({NewHome}));
    change("wifi_status", connection());
    QCOMPARE(firstEnd.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QCOMPARE(secondEnd.text(), QString::fromLatin1(Busy));
    const ConnectPointer next = fixture.join();
    QCOMPARE(ZopDouble::commands().size(), 2);
    QVERIFY(!next->hasError());
}

void TestWifiProviderJoining::invalidIsToldBeforeBusy()
{
    const WifiProviderFixture fixture;
    const ConnectPointer first = fixture.join();
    const ConnectPointer second = fixture.join(wifiConfig(QString(), QString(), 0x2, 0x8));
    const ConnectEnd end(second.get());
    QCOMPARE(end.text(), QString::fromLatin1(Invalid));
    QVERIFY(!first->hasError());
}

void TestWifiProviderJoining::connects()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ConnectEnd end(operation.get());
    LogCapture log(7);
    QCOMPARE(sent(), lines({NewHome}));
    ZopDouble::answer(0, text("7"));
    QCOMPARE(sent(), lines({NewHome, "wnet_select 7"}));
    ZopDouble::answer(1);
    QVERIFY(log.take().isEmpty());
    QCOMPARE(end.text(), QString());
    QVERIFY(fixture.events->take().isEmpty());
    change("wifi_status", connection());
    QCOMPARE(fixture.events->take(), lines({"connected"}));
    QCOMPARE(operation->results().size(), 1);
    QVERIFY(operation->results().first() == fixture.provider->connectedAccessPoint());
    QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QCOMPARE(ZopDouble::commands().size(), 2);
    QCOMPARE(ZopDouble::journal(),
             lines({
                 "command /zop/services/wifi/control parent morvek::WifiProviderZop",
                 "start wnet_new 1 connected finished",
                 "command /zop/services/wifi/control parent morvek::WifiProviderZop",
                 "start wnet_select 2 connected finished",
             }));
    // Neither the same connection told again nor a failure of it ends the operation once more.
    change("wifi_status", connection());
    failByEvent();
    QCOMPARE(end.text(), QStringLiteral("success 02:00:00:00:01:0a"));
    QCOMPARE(operation->results().size(), 1);
    QVERIFY(!operation->hasError());
}

void TestWifiProviderJoining::identifiers_data()
{
    QTest::addColumn<ZopVariant>("identifier");
    QTest::addColumn<QString>("selected");
    const auto row = [](const char *title, const ZopVariant &identifier, const QString &selected) {
        QTest::newRow(title) << identifier << selected;
    };
    row("number", ZopVariant(7), QStringLiteral("7"));
    row("leading zeros", text("007"), QStringLiteral("007"));
    row("words", text(" a b "), QStringLiteral(" a b "));
    row("outside ASCII", text("\xc3\xa9"), QString::fromUtf8("\xc3\xa9"));
    row("JSON text", json("\"7\""), QStringLiteral("\"7\""));
    row("JSON object", json("{}"), QStringLiteral("{}"));
    row("empty", text(""), QString());
    row("none", ZopVariant(), QString());
}

void TestWifiProviderJoining::identifiers()
{
    QFETCH(ZopVariant, identifier);
    QFETCH(QString, selected);
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    ZopDouble::answer(0, identifier);
    QCOMPARE(ZopDouble::commands().size(), 2);
    const ZopDouble::Command command = ZopDouble::commands().last();
    QCOMPARE(command.message, QStringLiteral("wnet_select"));
    QVERIFY(command.dat == ZopVariant(selected));
    QCOMPARE(command.dat.encoding(), QByteArray("text"));
    QVERIFY(!operation->hasError());
}

void TestWifiProviderJoining::refusedNew_data()
{
    QTest::addColumn<QString>("error");
    QTest::addColumn<ZopVariant>("dat");
    QTest::addColumn<QString>("selected");
    QTest::newRow("without identifier") << QStringLiteral("Too many networks") << ZopVariant() << QString();
    QTest::newRow("with identifier") << QStringLiteral("%1 100%s") << text("7") << QStringLiteral("7");
    QTest::newRow("without a reason") << QString() << text("") << QString();
}

void TestWifiProviderJoining::refusedNew()
{
    QFETCH(QString, error);
    QFETCH(ZopVariant, dat);
    QFETCH(QString, selected);
    for (const bool selectionIsRefused : {false, true}) {
        ZopDouble::reset();
        const WifiProviderFixture fixture;
        const ConnectPointer operation = fixture.join();
        const ConnectEnd end(operation.get());
        LogCapture log(7);
        ZopDouble::answerError(0, 28, error, dat);
        QVERIFY(log.take().isEmpty());
        QVERIFY(operation->hasError());
        QCOMPARE(end.text(), QLatin1String("failure -1 ") + error);
        QCOMPARE(sent(), QStringList({QString::fromLatin1(NewHome), QLatin1String("wnet_select ") + selected}));
        QVERIFY(ZopDouble::commands().last().dat == ZopVariant(selected));
        if (selectionIsRefused)
            ZopDouble::answerError(1, 2, QStringLiteral("No such network"));
        else
            ZopDouble::answer(1);
        QCOMPARE(log.take(), lines({TooLate}));
        QCOMPARE(end.text(), QLatin1String("failure -1 ") + error);
        QCOMPARE(ZopDouble::commands().size(), 2);
    }
}

void TestWifiProviderJoining::refusedSelect()
{
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ConnectEnd end(operation.get());
    acceptNew();
    LogCapture log(7);
    ZopDouble::answerError(1, 2, QStringLiteral("No such network"));
    QVERIFY(log.take().isEmpty());
    QCOMPARE(end.text(), QStringLiteral("failure -1 No such network"));
    QCOMPARE(ZopDouble::commands().size(), 2);
    change("wifi_status", connection());
    QCOMPARE(end.text(), QStringLiteral("failure -1 No such network"));
    QVERIFY(operation->results().isEmpty());
}

void TestWifiProviderJoining::disconnectCancels_data()
{
    QTest::addColumn<int>("accepted");
    QTest::newRow("before the reply to the first request") << 0;
    QTest::newRow("before the reply to the second request") << 1;
    QTest::newRow("before the outcome") << 2;
}

void TestWifiProviderJoining::disconnectCancels()
{
    QFETCH(int, accepted);
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    const ConnectEnd end(operation.get());
    if (accepted > 0)
        acceptNew();
    if (accepted > 1)
        ZopDouble::answer(1);
    LogCapture log(7);
    fixture.provider->disconnectAccessPoint();
    QCOMPARE(sent().last(), QStringLiteral("wnet_disableall"));
    QVERIFY(operation->hasError());
    QCOMPARE(end.text(), QString::fromLatin1(Cancelled));
    QVERIFY(log.take().isEmpty());
    const int before = ZopDouble::commands().size();
    if (accepted == 0) {
        ZopDouble::answer(0, text("7"));
        QCOMPARE(sent().last(), QStringLiteral("wnet_select 7"));
        QVERIFY(log.take().isEmpty());
        ZopDouble::answer(lastCommand());
        QCOMPARE(log.take(), lines({TooLate}));
    } else if (accepted == 1) {
        ZopDouble::answer(1);
        QCOMPARE(log.take(), lines({TooLate}));
    }
    QCOMPARE(ZopDouble::commands().size(), accepted == 0 ? before + 1 : before);
    change("wifi_status", connection());
    QCOMPARE(end.text(), QString::fromLatin1(Cancelled));
    QVERIFY(operation->results().isEmpty());
    fixture.provider->disconnectAccessPoint();
    QCOMPARE(end.text(), QString::fromLatin1(Cancelled));
}

void TestWifiProviderJoining::lateReplies_data()
{
    QTest::addColumn<bool>("refused");
    QTest::newRow("accepted") << false;
    QTest::newRow("refused") << true;
}

void TestWifiProviderJoining::lateReplies()
{
    QFETCH(bool, refused);
    const WifiProviderFixture fixture;
    const ConnectPointer operation = fixture.join();
    fixture.provider->disconnectAccessPoint();
    const auto reply = [refused](int command) {
        if (refused)
            ZopDouble::answerError(command, 2, QStringLiteral("Too late"));
        else
            ZopDouble::answer(command, text("7"));
    };
    LogCapture log(2);
    reply(0);
    QCOMPARE(sent().last(), QLatin1String("wnet_select ") + QLatin1String(refused ? "" : "7"));
    reply(2);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    reply(2);
    QCOMPARE(log.take(), lines({TooLate}));
    QCOMPARE(ZopDouble::commands().size(), 3);
    QCOMPARE(operation->error().message(),
             QStringLiteral("Cancelling connect operation, due to issued disconnect command"));
}

// A reply tells nothing of the connect that it belongs to: it meets whichever is pending.
void TestWifiProviderJoining::lateRepliesMeetANewConnect()
{
    const WifiProviderFixture fixture;
    const ConnectPointer first = fixture.join();
    fixture.provider->disconnectAccessPoint();
    const ConnectPointer second = fixture.join();
    const ConnectEnd secondEnd(second.get());
    LogCapture log(7);
    ZopDouble::answerError(0, 2, QStringLiteral("Of the first"));
    QCOMPARE(secondEnd.text(), QStringLiteral("failure -1 Of the first"));
    const ConnectPointer third = fixture.join();
    const ConnectEnd thirdEnd(third.get());
    ZopDouble::answer(2, text("8"));
    QCOMPARE(sent(), lines({NewHome, "wnet_disableall", NewHome, "wnet_select ", NewHome, "wnet_select 8"}));
    ZopDouble::answer(5);
    QCOMPARE(thirdEnd.text(), QString());
    ZopDouble::answerError(3, 2, QStringLiteral("Of the first, too"));
    QCOMPARE(thirdEnd.text(), QStringLiteral("failure -1 Of the first, too"));
    QVERIFY(log.take().isEmpty());
}

namespace {

const QList<std::function<void()>> &outcomes()
{
    static const QList<std::function<void()>> all {
        [] { ZopDouble::answerError(0, 2, QStringLiteral("Refused")); },
        [] {
            acceptNew();
            ZopDouble::answerError(lastCommand(), 2, QStringLiteral("Refused"));
        },
        [] {
            acceptBoth();
            failByEvent();
        },
        [] {
            acceptBoth();
            change("wifi_status", connection());
        },
        [] { change("wifi_status", connection()); },
        [] { failByEvent(); },
    };
    return all;
}

} // namespace

void TestWifiProviderJoining::deletedConnectStillBlocks_data()
{
    QTest::addColumn<int>("outcome");
    QTest::newRow("first request refused") << 0;
    QTest::newRow("second request refused") << 1;
    QTest::newRow("failed") << 2;
    QTest::newRow("connected") << 3;
    QTest::newRow("connected without any reply") << 4;
    QTest::newRow("failed without any reply") << 5;
    QTest::newRow("disconnected") << 6;
}

void TestWifiProviderJoining::deletedConnectStillBlocks()
{
    QFETCH(int, outcome);
    const WifiProviderFixture fixture;
    fixture.join().reset();
    const ConnectPointer second = fixture.join();
    const ConnectEnd secondEnd(second.get());
    QCOMPARE(secondEnd.text(), QString::fromLatin1(Busy));
    QCOMPARE(sent(), lines({NewHome}));
    LogCapture log(3);
    if (outcome < outcomes().size())
        outcomes().at(outcome)();
    else
        fixture.provider->disconnectAccessPoint();
    const bool connected = outcome == 3 || outcome == 4;
    QCOMPARE(log.take().size(), connected ? 1 : 0);
    const ConnectPointer third = fixture.join();
    const ConnectEnd thirdEnd(third.get());
    QCOMPARE(sent().last(), QString::fromLatin1(NewHome));
    change("wifi_status", connection("02:00:00:00:01:0b"));
    QCOMPARE(thirdEnd.text(), QStringLiteral("success 02:00:00:00:01:0b"));
    QCOMPARE(secondEnd.text(), QString::fromLatin1(Busy));
}

void TestWifiProviderJoining::passkeyIsNotLogged()
{
    const WifiProviderFixture fixture;
    LogCapture log(7);
    const ConnectPointer refused = fixture.join();
    ZopDouble::answerError(0, 1, QStringLiteral("No"));
    ZopDouble::answer(1);
    const ConnectPointer invalid =
        fixture.join(wifiConfig(QStringLiteral("Home"), QStringLiteral("correct horse"), 0x2, 0x2));
    const ConnectPointer accepted = fixture.join();
    acceptBoth();
    change("wifi_status", connection());
    const ConnectPointer disconnected = fixture.join();
    fixture.provider->disconnectAccessPoint();
    ZopDouble::answerError(lastCommand(), 1, QStringLiteral("No"));
    const QStringList logged = log.take();
    QVERIFY(logged.size() >= 5);
    QVERIFY(logged.filter(QStringLiteral("horse")).isEmpty());
}

QTEST_GUILESS_MAIN(TestWifiProviderJoining)
#include "tst_wifiproviderjoining.moc"
