// SPDX-License-Identifier: Apache-2.0
#include "hotspotproviderfixture.h"
#include "localencoding.h"
#include "logcapture.h"

#include <QtTest/QtTest>

using namespace morvek;
using namespace TetheringDaemon;

namespace {

const QString Res = QStringLiteral("res");
const QString Id = QStringLiteral("id");
const QString Err = QStringLiteral("err");
const QString ErrMsg = QStringLiteral("errmsg");
const QString Dat = QStringLiteral("dat");

void endRow(const QByteArray &title, const char *request, const ZopDouble::Values &reply, const char *end,
            const QStringList &log, const QStringList &events)
{
    QTest::newRow(QByteArray(request) + ", " + title)
        << QString::fromLatin1(request) << reply << QString::fromLatin1(end) << log << events;
}

} // namespace

class TestHotspotProviderReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void ends_data();
    void ends();
    void failsBeforeItWarns_data();
    void failsBeforeItWarns();

    void selectsByIdAlone_data();
    void selectsByIdAlone();
    void nobodyWaits_data();
    void nobodyWaits();
    void dropsWhatIsNoReply_data();
    void dropsWhatIsNoReply();
    void repliesOnce_data();
    void repliesOnce();
    void repliesInAnyOrder();
    void twoProvidersHearEachOther();

private:
    void fetchRows();
    void otherRows();
};

void TestHotspotProviderReplies::ends_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<ZopDouble::Values>("reply");
    QTest::addColumn<QString>("end");
    QTest::addColumn<QStringList>("log");
    QTest::addColumn<QStringList>("events");
    fetchRows();
    otherRows();
}

// Fetching does not look at "err".
void TestHotspotProviderReplies::fetchRows()
{
    const char *const fetch = "retrieve_profile";
    const auto fetched = [&](const QByteArray &title, const ZopDouble::Values &reply, const char *name) {
        endRow(title, fetch, reply, name[0] ? "success Car" : "success ", {},
               {QLatin1String("profile ") + QLatin1String(name)});
    };
    fetched("0", {{Err, text("0")}, {Dat, json(CarProfile)}}, "Car");
    fetched("no errors", {{Dat, json(CarProfile)}}, "Car");
    fetched("5", {{Err, text("5")}, {ErrMsg, text("")}, {Dat, json(CarProfile)}}, "Car");
    fetched("names itself", {{QStringLiteral("msg"), text("start")}, {Dat, json(CarProfile)}}, "Car");
    fetched("unknown attributes",
            {{QStringLiteral("Err"), text("1")},
             {QStringLiteral("zzz"), text("1")},
             {QStringLiteral("DAT"), text("1")},
             {Dat, json(CarProfile)}},
            "Car");
    fetched("empty object", {{Dat, json("{}")}}, "");
    fetched("array", {{Dat, json("[]")}}, "");
    fetched("no JSON that says it is", {{Dat, json("{")}}, "");
    fetched("nothing that says it is JSON", {{Dat, json("")}}, "");
    const auto notFetched = [&](const QByteArray &title, const ZopDouble::Values &reply, bool refused) {
        const char *reason = refused ? "Failed to retrieve WifiHotspot config." : "Empty or malformatted config.";
        endRow(title, fetch, reply, QByteArray(QByteArray("failure -1 ") + reason).constData(),
               {QLatin1String("warning 1300 ") + QLatin1String(reason)}, {});
    };
    notFetched("refused", {{Err, text("5")}, {ErrMsg, text("Busy 100%s")}, {Dat, json(CarProfile)}}, true);
    notFetched("refused with 0", {{Err, text("0")}, {ErrMsg, text(" ")}, {Dat, json(CarProfile)}}, true);
    notFetched("refused without data", {{ErrMsg, text("Busy")}}, true);
    notFetched("no data", {{Err, text("0")}}, false);
    notFetched("invalid data", {{Dat, ZopVariant()}}, false);
    notFetched("text", {{Dat, text(CarProfile)}}, false);
    notFetched("another encoding", {{Dat, ZopVariant(CarProfile, "JSON")}}, false);
    notFetched("encoding with a tail", {{Dat, ZopVariant(CarProfile, "json2")}}, false);
    notFetched("no encoding", {{Dat, ZopVariant(CarProfile, "")}}, false);
}

// The others look at "err" and "errmsg".
void TestHotspotProviderReplies::otherRows()
{
    struct Kind
    {
        const char *request;
        const char *end;
        const char *reason;
        QStringList events;
        bool tellsMore;
    };
    const QList<Kind> kinds {
        // Nothing has been fetched.
        {"update_profile", "success ", "Failed to update WifiHotspot config.", {QStringLiteral("profile ")}, true},
        {"start", "success true", "Failed to enable config.", {}, false},
        {"stop", "success false", "Failed to disable config.", {}, false},
    };
    for (const Kind &kind : kinds) {
        const auto good = [&](const QByteArray &title, const ZopDouble::Values &reply) {
            endRow(title, kind.request, reply, kind.end, {}, kind.events);
        };
        good("0", {{Err, text("0")}});
        good("the number 0", {{Err, ZopVariant(0)}});
        good("0 and no text", {{Err, text("0")}, {ErrMsg, text("")}});
        good("data of any kind", {{Err, text("0")}, {Dat, text("no JSON")}});
        const QByteArray failure = QByteArray("failure -1 ") + kind.reason;
        const auto bad = [&](const QByteArray &title, const ZopDouble::Values &reply, const char *more) {
            endRow(title, kind.request, reply, failure.constData(),
                   {QLatin1String("warning 1300 ") + QLatin1String(kind.reason)
                    + QString::fromUtf8(kind.tellsMore ? more : "")},
                   {});
        };
        bad("no errors", {}, "");
        bad("empty", {{Err, text("")}, {ErrMsg, text("")}}, "");
        bad("1", {{Err, text("1")}}, "");
        bad("-0", {{Err, text("-0")}}, "");
        bad("00", {{Err, text("00")}}, "");
        bad("0 and a blank", {{Err, text("0 ")}}, "");
        bad("0 and a zero", {{Err, raw(QByteArray("0\0", 2))}}, "");
        bad("0 and a text", {{Err, text("0")}, {ErrMsg, text("Disk full 100%s")}}, "Disk full 100%s");
        bad("28 and a text", {{Err, text("28")}, {ErrMsg, text("Voll\xc3\xa4")}}, "Voll\xc3\xa4");
        bad("data", {{Err, text("1")}, {Dat, json(CarProfile)}}, "");
    }
}

void TestHotspotProviderReplies::ends()
{
    QFETCH(QString, request);
    QFETCH(ZopDouble::Values, reply);
    QFETCH(QString, end);
    QFETCH(QStringList, log);
    QFETCH(QStringList, events);
    const LocalEncoding encoding("UTF-8");
    for (const int verbosity : {2, 3}) {
        ZopDouble::reset();
        const HotspotProviderFixture fixture;
        const Pending pending(*fixture.provider, request);
        LogCapture capture(verbosity);
        reply.insert(Res, ZopVariant(request));
        reply.insert(Id, ZopVariant(pending.id));
        tell(reply);
        QCOMPARE(fixture.events->take(), events);
        QCOMPARE(capture.take(), verbosity < 3 ? QStringList() : log);
        QCOMPARE(pending.operation()->hasError(), end.startsWith(QLatin1String("failure")));
        QCOMPARE(pending.end(), end);
        QVERIFY(fixture.events->take().isEmpty());
        QCOMPARE(requests().size(), 1);
        // It is not looked at again.
        KrelLogger::setVerbosity(3);
        tell(reply);
        QCOMPARE(capture.take(), unknownId(pending.id));
        QCOMPARE(pending.end(), end);
    }
}

void TestHotspotProviderReplies::failsBeforeItWarns_data()
{
    QTest::addColumn<QString>("request");
    for (const char *request : {"retrieve_profile", "update_profile", "start", "stop"})
        QTest::newRow(request) << QString::fromLatin1(request);
}

void TestHotspotProviderReplies::failsBeforeItWarns()
{
    QFETCH(QString, request);
    const HotspotProviderFixture fixture;
    const QByteArray name = request.toLatin1();
    for (const bool withText : {true, false}) {
        const Pending pending(*fixture.provider, request);
        const LogCapture log(3);
        QList<bool> failed;
        KrelLogger::setSink([&](KrelLogger::Level, unsigned short, const QString &) {
            failed.append(pending.operation()->hasError());
        });
        tell({{Res, text(name)},
              {Id, ZopVariant(pending.id)},
              {Err, text("1")},
              {ErrMsg, text(withText ? "Not now" : "")}});
        QCOMPARE(failed, QList<bool> {true});
    }
}

// An operation ends as the reply says, with no result of another kind.
void TestHotspotProviderReplies::selectsByIdAlone_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("res");
    QTest::addColumn<QString>("good");
    QTest::addColumn<QString>("bad");
    QTest::addColumn<QStringList>("events");
    const auto row = [](const char *request, const char *res, const char *good, const char *bad,
                        const QStringList &events) {
        QTest::addRow("%s answered as %s", request, res)
            << QString::fromLatin1(request) << QString::fromLatin1(res) << QString::fromLatin1(good)
            << (QLatin1String("failure -1 ") + QLatin1String(bad)) << events;
    };
    const char *const fetchFailed = "Failed to retrieve WifiHotspot config.";
    const char *const updateFailed = "Failed to update WifiHotspot config.";
    const char *const startFailed = "Failed to enable config.";
    const char *const stopFailed = "Failed to disable config.";
    const QStringList fetched {QStringLiteral("profile Van")};
    const QStringList written {QStringLiteral("profile Car")};
    row("retrieve_profile", "update_profile", "success Car", updateFailed, written);
    row("retrieve_profile", "start", "success ", startFailed, {});
    row("retrieve_profile", "stop", "success ", stopFailed, {});
    row("update_profile", "retrieve_profile", "success Van", fetchFailed, fetched);
    row("update_profile", "start", "success ", startFailed, {});
    row("update_profile", "stop", "success ", stopFailed, {});
    row("start", "retrieve_profile", "success ", fetchFailed, fetched);
    row("start", "update_profile", "success ", updateFailed, written);
    row("start", "stop", "success false", stopFailed, {});
    row("stop", "retrieve_profile", "success ", fetchFailed, fetched);
    row("stop", "update_profile", "success ", updateFailed, written);
    row("stop", "start", "success true", startFailed, {});
}

void TestHotspotProviderReplies::selectsByIdAlone()
{
    QFETCH(QString, request);
    QFETCH(QString, res);
    QFETCH(QString, good);
    QFETCH(QString, bad);
    QFETCH(QStringList, events);
    const HotspotProviderFixture fixture;
    fixture.fetchCar();
    const QByteArray name = res.toLatin1();
    const Pending refused(*fixture.provider, request);
    refuse(name.constData(), refused.id);
    QCOMPARE(refused.end(), bad);
    QVERIFY(fixture.events->take().isEmpty());
    const Pending pending(*fixture.provider, request);
    accept(name.constData(), pending.id, json(VanProfile));
    QCOMPARE(fixture.events->take(), events);
    QCOMPARE(pending.end(), good);
    QVERIFY(!pending.operation()->hasError());
    QVERIFY(!fixture.provider->enabled());
    // A fetch has been stored, whoever it was for.
    const Pending next(*fixture.provider, QStringLiteral("start"));
    QCOMPARE(requests().last().contains(QLatin1String("\"ssid\":\"Van\"")), res == QLatin1String("retrieve_profile"));
}

void TestHotspotProviderReplies::nobodyWaits_data()
{
    QTest::addColumn<ZopDouble::Values>("id");
    QTest::addColumn<int>("logged");
    const auto row = [](const char *title, const ZopDouble::Values &id, int logged) {
        QTest::newRow(title) << id << logged;
    };
    row("unknown", {{Id, ZopVariant(987654)}}, 987654);
    row("none", {}, 0);
    row("0", {{Id, ZopVariant(0)}}, 0);
    row("negative", {{Id, ZopVariant(-1)}}, -1);
    row("no number", {{Id, text("seven")}}, 0);
    row("too large", {{Id, text("4294967297")}}, 0);
    row("another attribute", {{QStringLiteral("ID"), ZopVariant(1)}}, 0);
}

void TestHotspotProviderReplies::nobodyWaits()
{
    QFETCH(ZopDouble::Values, id);
    QFETCH(int, logged);
    const HotspotProviderFixture fixture;
    const Pending pending(*fixture.provider, QStringLiteral("start"));
    for (const char *request : {"retrieve_profile", "update_profile", "start", "stop"}) {
        for (const bool refused : {false, true}) {
            ZopDouble::Values reply = id;
            reply.insert(Res, text(request));
            reply.insert(Err, text(refused ? "1" : "0"));
            reply.insert(ErrMsg, text(refused ? "Busy" : ""));
            reply.insert(Dat, json(CarProfile));
            LogCapture log(2);
            tell(reply);
            QVERIFY(log.take().isEmpty());
            KrelLogger::setVerbosity(3);
            tell(reply);
            QCOMPARE(log.take(), unknownId(logged));
        }
    }
    QVERIFY(fixture.events->take().isEmpty());
    QCOMPARE(pending.end(), QString());
}

void TestHotspotProviderReplies::dropsWhatIsNoReply_data()
{
    QTest::addColumn<ZopDouble::Values>("values");
    QTest::addColumn<QSet<QString>>("removals");
    const auto row = [](const char *title, const ZopDouble::Values &values, const QSet<QString> &removals = {}) {
        QTest::newRow(title) << values << removals;
    };
    row("nothing", {});
    row("unknown attributes", {{QStringLiteral("RES"), text("start")}, {QStringLiteral("peer"), text("start")}});
    row("removals", {}, {Res, Id, Err});
    row("no res", {{Err, text("0")}});
    row("a request", {{QStringLiteral("msg"), text("start")}, {Err, text("0")}});
    for (const char *res : {"", "Start", "start ", "starts", "status", "retrieve", "wifi_power"})
        row(QByteArray(QByteArray("res ") + res).constData(), {{Res, text(res)}, {Err, text("0")}});
}

void TestHotspotProviderReplies::dropsWhatIsNoReply()
{
    QFETCH(ZopDouble::Values, values);
    QFETCH(QSet<QString>, removals);
    const HotspotProviderFixture fixture;
    const Pending pending(*fixture.provider, QStringLiteral("start"));
    LogCapture log(7);
    ZopDouble::publish(QLatin1String(Control), values, removals);
    values.insert(Id, ZopVariant(pending.id));
    ZopDouble::publish(QLatin1String(Control), values, removals);
    QCOMPARE(pending.end(), QString());
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
    // It still waits.
    accept("start", pending.id);
    QCOMPARE(pending.end(), QStringLiteral("success true"));
}

void TestHotspotProviderReplies::repliesOnce_data()
{
    failsBeforeItWarns_data();
}

void TestHotspotProviderReplies::repliesOnce()
{
    QFETCH(QString, request);
    const QByteArray name = request.toLatin1();
    const HotspotProviderFixture fixture;
    const Pending pending(*fixture.provider, request);
    LogCapture log(7);
    refuse(name.constData(), pending.id);
    log.take();
    accept(name.constData(), pending.id, json(CarProfile));
    QCOMPARE(log.take(), unknownId(pending.id));
    refuse(name.constData(), pending.id);
    QCOMPARE(log.take(), unknownId(pending.id));
    QVERIFY(pending.end().startsWith(QLatin1String("failure")));
    QVERIFY(!pending.end().contains(QLatin1Char('/')));
    QVERIFY(fixture.events->take().isEmpty());
}

void TestHotspotProviderReplies::repliesInAnyOrder()
{
    const HotspotProviderFixture fixture;
    const Pending read(*fixture.provider, QStringLiteral("retrieve_profile"));
    const Pending on(*fixture.provider, QStringLiteral("start"));
    const Pending off(*fixture.provider, QStringLiteral("stop"));
    const Pending second(*fixture.provider, QStringLiteral("retrieve_profile"));
    accept("stop", off.id);
    QCOMPARE(off.end(), QStringLiteral("success false"));
    refuse("start", on.id);
    QCOMPARE(on.end(), QStringLiteral("failure -1 Failed to enable config."));
    accept("retrieve_profile", second.id, json(VanProfile));
    QCOMPARE(read.end(), QString());
    // The number may also come as a text.
    tell({{Res, text("retrieve_profile")}, {Id, ZopVariant(QString::number(read.id))}, {Dat, json(CarProfile)}});
    QCOMPARE(read.end(), QStringLiteral("success Car"));
    QCOMPARE(second.end(), QStringLiteral("success Van"));
    QCOMPARE(fixture.events->take(), lines({"profile Van", "profile Car"}));
}

void TestHotspotProviderReplies::twoProvidersHearEachOther()
{
    const HotspotProviderFixture first;
    const HotspotProviderFixture second;
    const Pending on(*first.provider, QStringLiteral("start"));
    const Pending read(*second.provider, QStringLiteral("retrieve_profile"));
    LogCapture log(3);
    accept("start", on.id);
    QCOMPARE(log.take(), unknownId(on.id)); // of the second
    accept("retrieve_profile", read.id, json(CarProfile));
    QCOMPARE(log.take(), unknownId(read.id));
    QCOMPARE(on.end(), QStringLiteral("success true"));
    QCOMPARE(read.end(), QStringLiteral("success Car"));
    QVERIFY(first.events->take().isEmpty());
    QCOMPARE(second.events->take(), lines({"profile Car"}));
}

QTEST_GUILESS_MAIN(TestHotspotProviderReplies)
#include "tst_hotspotproviderreplies.moc"
