// SPDX-License-Identifier: Apache-2.0
#include "hotspotproviderfixture.h"
#include "logcapture.h"

#include <QtTest/QtTest>

#include <functional>
#include <new>

using namespace morvek;
using namespace TetheringDaemon;

namespace {

/*! Sends one request and keeps its operation. */
using Request = std::function<std::unique_ptr<AsyncOperationBase>(HotspotProvider &provider)>;

/*! The last update that was written, each attribute as "NAME ENCODING BYTES". */
QStringList lastWrite()
{
    const ZopDouble::Write write = ZopDouble::writes().last();
    QStringList texts;
    for (auto it = write.changes.assignments.begin(); it != write.changes.assignments.end(); ++it)
        texts.append(QStringLiteral("%1 %2 ").arg(it.key(), QString::fromLatin1(it->encoding())) + it->toString());
    for (const QString &name : write.changes.removals)
        texts.append(QLatin1String("without ") + name);
    return texts;
}

/*! The same without the identifier, which is a plain number. */
QStringList lastRequest()
{
    QStringList texts = lastWrite();
    return texts.removeOne(QStringLiteral("id number %1").arg(lastId())) ? texts : QStringList();
}

} // namespace

Q_DECLARE_METATYPE(Request)

class TestHotspotProviderRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void countsFromOne(); // nobody may have asked before

    void sendsRequests_data() { requestRows(); }
    void sendsRequests();
    void startsWithTheFetchedProfile();
    void sendsAnEmptyProfile_data();
    void sendsAnEmptyProfile();
    void waitsBeforeItWrites_data() { requestRows(); }
    void waitsBeforeItWrites();
    void cannotWrite_data() { requestRows(); }
    void cannotWrite();
    void forgetsWhatFailsByException_data() { requestRows(); }
    void forgetsWhatFailsByException();
    void failsBeforeItLogs_data() { requestRows(); }
    void failsBeforeItLogs();
    void leavesOperationsOpen_data() { requestRows(); }
    void leavesOperationsOpen();
    void endsNothingByItself_data() { requestRows(); }
    void endsNothingByItself();

private:
    void requestRows();
};

// All providers of a process share the count, and none starts anew.
void TestHotspotProviderRequests::countsFromOne()
{
    auto first = std::make_unique<HotspotProviderZop>();
    HotspotProviderZop second;
    const EnablePointer tooEarly = switchOn(*first); // 1: there is no control object
    QVERIFY(tooEarly->hasError());
    LogCapture log(7);
    const ConfigPointer neverWritten = update(*first); // 2
    QCOMPARE(log.take(), QStringList());
    start();
    const EnablePointer on = switchOn(*first);
    QCOMPARE(lastWrite(), lines({"dat json {}", "id number 3", "msg text start"}));
    const ConfigPointer read = fetch(second);
    QCOMPARE(lastWrite(),
             lines({R"(dat json {"lan_type":"wlanap","type":"lan"})", "id number 4", "msg text retrieve_profile"}));
    const EnablePointer off = switchOff(*first);
    QCOMPARE(lastWrite(), lines({"id number 5", "msg text stop"}));
    first.reset();
    const HotspotProviderFixture third;
    const ConfigPointer profile = update(*third.provider, WifiHotspot());
    QCOMPARE(lastWrite(), lines({"dat json {}", "id number 6", "msg text update_profile"}));
    QCOMPARE(ZopDouble::writes().size(), 4);
}

void TestHotspotProviderRequests::requestRows()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<QStringList>("written");
    QTest::newRow("retrieve_profile") << Request([](HotspotProvider &provider) {
        return fetch(provider);
    }) << lines({R"(dat json {"lan_type":"wlanap","type":"lan"})", "msg text retrieve_profile"});
    QTest::newRow("update_profile") << Request([](HotspotProvider &provider) { return update(provider); })
                                    << QStringList {QLatin1String("dat json ") + QLatin1String(CarWritten),
                                                    QStringLiteral("msg text update_profile")};
    QTest::newRow("start") << Request([](HotspotProvider &provider) { return switchOn(provider); })
                           << lines({"dat json {}", "msg text start"});
    QTest::newRow("stop") << Request([](HotspotProvider &provider) { return switchOff(provider); })
                          << lines({"msg text stop"});
}

void TestHotspotProviderRequests::sendsRequests()
{
    QFETCH(Request, request);
    QFETCH(QStringList, written);
    const HotspotProviderFixture fixture;
    LogCapture log(7);
    const auto operation = request(*fixture.provider);
    QCOMPARE(lastRequest(), written);
    QCOMPARE(ZopDouble::writes().last().path, QString::fromLatin1(Control));
    QCOMPARE(ZopDouble::journal(), lines({"write /zop/services/tethering/control"}));
    const bool isStart = QLatin1String(QTest::currentDataTag()) == QLatin1String("start"); // with no profile yet
    QCOMPARE(log.take(), isStart ? lines({EmptyProfileLine}) : QStringList());
    QVERIFY(fixture.events->take().isEmpty());
}

void TestHotspotProviderRequests::startsWithTheFetchedProfile()
{
    const HotspotProviderFixture fixture;
    fixture.fetchCar();
    WifiHotspot van = car();
    van.setName(QStringLiteral("Van"));
    const ConfigPointer written = update(*fixture.provider, van);
    accept("update_profile", lastId());
    LogCapture log(7);
    const EnablePointer on = switchOn(*fixture.provider);
    QCOMPARE(lastRequest(),
             (QStringList {QLatin1String("dat json ") + QLatin1String(CarWritten), QStringLiteral("msg text start")}));
    QVERIFY(log.take().isEmpty());
    // Another provider has fetched nothing.
    const HotspotProviderFixture second;
    const EnablePointer secondOn = switchOn(*second.provider);
    QCOMPARE(lastRequest(), lines({"dat json {}", "msg text start"}));
}

void TestHotspotProviderRequests::sendsAnEmptyProfile_data()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<QStringList>("written");
    QTest::newRow("update_profile") << Request([](HotspotProvider &provider) {
        WifiHotspot hotspot = car();
        hotspot.setPassphrase(QString());
        return update(provider, hotspot);
    }) << lines({"dat json {}", "msg text update_profile"});
    QTest::newRow("start") << Request([](HotspotProvider &provider) { return switchOn(provider); })
                           << lines({"dat json {}", "msg text start"});
}

void TestHotspotProviderRequests::sendsAnEmptyProfile()
{
    QFETCH(Request, request);
    QFETCH(QStringList, written);
    const HotspotProviderFixture fixture;
    LogCapture log(2);
    const auto first = request(*fixture.provider);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(3);
    const auto second = request(*fixture.provider);
    QCOMPARE(log.take(), lines({EmptyProfileLine}));
    QCOMPARE(lastRequest(), written);
    QVERIFY(!second->hasError());
}

// A reply may come inside the call that writes.
void TestHotspotProviderRequests::waitsBeforeItWrites()
{
    QFETCH(Request, request);
    const HotspotProviderFixture fixture;
    LogCapture log(7);
    ZopDouble::onWrite([](const ZopChangeset &changes) {
        const QByteArray name = changes.assignments.value(QStringLiteral("msg")).bytes();
        refuse(name.constData(), changes.assignments.value(QStringLiteral("id")).toInt());
    });
    const auto operation = request(*fixture.provider);
    QVERIFY(operation->hasError());
    QVERIFY(log.take().filter(QStringLiteral("No operation")).isEmpty());
}

void TestHotspotProviderRequests::cannotWrite()
{
    QFETCH(Request, request);
    const HotspotProviderFixture fixture;
    const auto before = switchOff(*fixture.provider);
    const int id = lastId();
    ZopDouble::refuseWrites(QLatin1String(Control), QStringLiteral(": no room 100%s"));
    LogCapture log(1);
    const auto first = request(*fixture.provider);
    QVERIFY(log.take().isEmpty());
    KrelLogger::setVerbosity(2);
    const auto second = request(*fixture.provider);
    QCOMPARE(log.take(), lines({"error 1300 Unable to write to vantor zop: no room 100%s"}));
    for (const AsyncOperationBase *operation : {first.get(), second.get()}) {
        QCOMPARE(operation->error().code(), -1);
        QCOMPARE(operation->error().message(), QStringLiteral("Unable to write to vantor zop"));
    }
    QCOMPARE(ZopDouble::writes().size(), 1);
    // Nobody waits for a reply.
    KrelLogger::setVerbosity(3);
    accept("stop", id + 1);
    accept("stop", id + 2);
    QCOMPARE(log.take(),
             QStringList({QStringLiteral("warning 1300 No operation for message with id:%1").arg(id + 1),
                          QStringLiteral("warning 1300 No operation for message with id:%1").arg(id + 2)}));
    accept("stop", id);
    QVERIFY(log.take().isEmpty());
    QVERIFY(fixture.events->take().isEmpty());
}

void TestHotspotProviderRequests::forgetsWhatFailsByException()
{
    QFETCH(Request, request);
    const HotspotProviderFixture fixture;
    ZopDouble::onWrite([](const ZopChangeset &) { throw std::bad_alloc(); });
    QVERIFY_EXCEPTION_THROWN(request(*fixture.provider), std::bad_alloc);
    LogCapture log(3);
    accept("stop", lastId());
    QCOMPARE(log.take(), unknownId(lastId()));
}

void TestHotspotProviderRequests::failsBeforeItLogs()
{
    QFETCH(Request, request);
    const HotspotProviderFixture fixture;
    ZopDouble::refuseWrites(QLatin1String(Control), QStringLiteral("no room"));
    const LogCapture log(2);
    // Whoever is queued while the line is written comes after the notice.
    QStringList seen;
    KrelLogger::setSink([&](KrelLogger::Level, unsigned short, const QString &) {
        QMetaObject::invokeMethod(
            qApp, [&seen] { seen.append(QStringLiteral("logged")); }, Qt::QueuedConnection);
    });
    const auto operation = request(*fixture.provider);
    const auto tell = [&seen] { seen.append(QStringLiteral("failed")); };
    if (auto *config = qobject_cast<AsyncHotspotConfigOperation *>(operation.get()))
        connect(config, &AsyncHotspotConfigOperation::failure, tell);
    else if (auto *enable = qobject_cast<AsyncHotspotEnableOperation *>(operation.get()))
        connect(enable, &AsyncHotspotEnableOperation::failure, tell);
    runQueued();
    QCOMPARE(seen, lines({"failed", "logged"}));
}

void TestHotspotProviderRequests::leavesOperationsOpen()
{
    HotspotProviderFixture fixture;
    const Pending pending(*fixture.provider, QString::fromLatin1(QTest::currentDataTag()));
    const int id = lastId();
    fixture.provider.reset();
    QVERIFY(ZopDouble::objects(QLatin1String(Control)).isEmpty());
    QVERIFY(ZopDouble::objects(QLatin1String(Status)).isEmpty());
    accept(QTest::currentDataTag(), id, json(CarProfile));
    QCOMPARE(pending.end(), QString());
    QVERIFY(fixture.events->take().isEmpty());
}

void TestHotspotProviderRequests::endsNothingByItself()
{
    QFETCH(Request, request);
    const HotspotProviderFixture fixture;
    const auto operation = request(*fixture.provider);
    change("state", text("ACTIVE"));
    change("state", text("INACTIVE"));
    runQueued();
    QVERIFY(!operation->hasError());
    QCOMPARE(fixture.events->take(), lines({"on", "off"}));
    QVERIFY(!operation->parent());
    // Its own request comes back from nobody, but might.
    ZopDouble::publish(QLatin1String(Control), ZopDouble::writes().last().changes.assignments);
    runQueued();
    QVERIFY(!operation->hasError());
    refuse(QTest::currentDataTag(), lastId());
    QVERIFY(operation->hasError());
}

QTEST_GUILESS_MAIN(TestHotspotProviderRequests)
#include "tst_hotspotproviderrequests.moc"
