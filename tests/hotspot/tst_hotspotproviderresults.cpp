// SPDX-License-Identifier: Apache-2.0
#include "hotspotproviderfixture.h"
#include "logcapture.h"

#include <QtTest/QtTest>

using namespace morvek;
using namespace TetheringDaemon;

/*! What becomes of a reply: what the provider keeps of it, and when whoever hears of it does something. */
class TestHotspotProviderResults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ZopDouble::reset(); }

    void keepsWhatItFetched();
    void keepsNothingElse();
    void doesNotTakeTheStateFromReplies();

    void tellsTheProfileBeforeTheEnd_data();
    void tellsTheProfileBeforeTheEnd();
    void tellsEachListenerThatProfile_data() { tellsTheProfileBeforeTheEnd_data(); }
    void tellsEachListenerThatProfile();
    void deletedMeanwhile_data();
    void deletedMeanwhile();
    void deletedBeforeItsNotice();
    void deletedInItsSlot();
    void slotAsksAgain();
};

void TestHotspotProviderResults::keepsWhatItFetched()
{
    const HotspotProviderFixture fixture;
    const Pending first(*fixture.provider, QStringLiteral("retrieve_profile"));
    accept("retrieve_profile", first.id, json(CarProfile));
    QVERIFY(fixture.events->profile() == car());
    QCOMPARE(first.end(), QStringLiteral("success Car"));
    QVERIFY(first.config->results().first() == car());
    fixture.events->take();

    // What is written does not count, what is fetched does.
    const Pending written(*fixture.provider, QStringLiteral("update_profile"));
    WifiHotspot van = car();
    van.setName(QStringLiteral("Van"));
    const ConfigPointer other = update(*fixture.provider, van);
    const ConfigEnd otherEnd(other.get());
    accept("update_profile", lastId(), json(VanProfile));
    QCOMPARE(fixture.events->take(), lines({"profile Car"}));
    QVERIFY(fixture.events->profile() == car());
    QCOMPARE(otherEnd.text(), QStringLiteral("success Car"));
    QVERIFY(other->results().first() == car());

    const Pending second(*fixture.provider, QStringLiteral("retrieve_profile"));
    accept("retrieve_profile", second.id, json(VanProfile));
    accept("update_profile", written.id);
    QCOMPARE(fixture.events->take(), lines({"profile Van", "profile Van"}));
    QCOMPARE(written.end(), QStringLiteral("success Van"));
    // The results of the first are as they were.
    QCOMPARE(first.config->results().size(), 1);
    QVERIFY(first.config->results().first() == car());
}

void TestHotspotProviderResults::keepsNothingElse()
{
    const HotspotProviderFixture fixture;
    fixture.fetchCar();
    const Pending refused(*fixture.provider, QStringLiteral("retrieve_profile"));
    tell({{QStringLiteral("res"), text("retrieve_profile")},
          {QStringLiteral("id"), ZopVariant(refused.id)},
          {QStringLiteral("errmsg"), text("Busy")},
          {QStringLiteral("dat"), json(VanProfile)}});
    const Pending malformed(*fixture.provider, QStringLiteral("retrieve_profile"));
    accept("retrieve_profile", malformed.id, text(VanProfile));
    const Pending on(*fixture.provider, QStringLiteral("start"));
    accept("start", on.id, json(VanProfile));
    accept("retrieve_profile", 0, json(VanProfile));
    QVERIFY(fixture.events->take().isEmpty());
    const Pending again(*fixture.provider, QStringLiteral("start"));
    QCOMPARE(requests().last(), QLatin1String("start ") + QLatin1String(CarWritten));
    // An answer without a profile is a profile.
    const Pending empty(*fixture.provider, QStringLiteral("retrieve_profile"));
    accept("retrieve_profile", empty.id, json("{}"));
    QVERIFY(fixture.events->profile() == WifiHotspot());
    const Pending last(*fixture.provider, QStringLiteral("start"));
    QCOMPARE(requests().last(), QStringLiteral("start {}"));
}

void TestHotspotProviderResults::doesNotTakeTheStateFromReplies()
{
    const HotspotProviderFixture fixture;
    const Pending on(*fixture.provider, QStringLiteral("start"));
    accept("start", on.id);
    QCOMPARE(on.end(), QStringLiteral("success true"));
    QVERIFY(!fixture.provider->enabled());
    change("state", text("ACTIVE"));
    const Pending off(*fixture.provider, QStringLiteral("stop"));
    accept("stop", off.id);
    QCOMPARE(off.end(), QStringLiteral("success false"));
    QVERIFY(fixture.provider->enabled());
    change("state", text("INACTIVE"));
    QCOMPARE(fixture.events->take(), lines({"on", "off"}));
}

void TestHotspotProviderResults::tellsTheProfileBeforeTheEnd_data()
{
    QTest::addColumn<QString>("request");
    QTest::newRow("fetched") << QStringLiteral("retrieve_profile");
    QTest::newRow("written") << QStringLiteral("update_profile");
}

// The operation has its result by then, and the provider the profile.
void TestHotspotProviderResults::tellsTheProfileBeforeTheEnd()
{
    QFETCH(QString, request);
    const HotspotProviderFixture fixture;
    fixture.fetchCar();
    const Pending pending(*fixture.provider, request);
    QStringList seen;
    EnablePointer on;
    QObject::connect(fixture.provider.get(), &HotspotProvider::configurationChanged, [&](const WifiHotspot &profile) {
        seen.append(QStringLiteral("%1 %2").arg(profile.name(), pending.config->results().value(0).name()));
        on = switchOn(*fixture.provider);
        seen.append(requests().last().contains(QLatin1String("\"Van\"")) ? QStringLiteral("new")
                                                                         : QStringLiteral("old"));
    });
    QObject::connect(pending.config.get(), &AsyncHotspotConfigOperation::success,
                     [&] { seen.append(QStringLiteral("success")); });
    accept(request.toLatin1().constData(), pending.id, json(VanProfile));
    QCOMPARE(pending.config->results().size(), 1);
    const bool fetched = request == QLatin1String("retrieve_profile");
    const QStringList told = fetched ? lines({"Van Van", "new"}) : lines({"Car Car", "old"});
    QCOMPARE(seen, told);
    runQueued();
    QCOMPARE(seen, told + lines({"success"}));
}

// A slot may run an event loop, in which the next reply comes.
void TestHotspotProviderResults::tellsEachListenerThatProfile()
{
    QFETCH(QString, request);
    const HotspotProviderFixture fixture;
    fixture.fetchCar();
    const Pending first(*fixture.provider, request);
    const Pending second(*fixture.provider, QStringLiteral("retrieve_profile"));
    QStringList heard;
    bool nested = false;
    QObject::connect(fixture.provider.get(), &HotspotProvider::configurationChanged, [&](const WifiHotspot &profile) {
        heard.append(QLatin1String("one ") + profile.name());
        if (nested)
            return;
        nested = true;
        accept("retrieve_profile", second.id, json(VanProfile));
        heard.append(QLatin1String("one ") + profile.name());
    });
    QObject::connect(fixture.provider.get(), &HotspotProvider::configurationChanged,
                     [&](const WifiHotspot &profile) { heard.append(QLatin1String("two ") + profile.name()); });
    accept(request.toLatin1().constData(), first.id, json(TetheringDaemon::CarProfile));
    QCOMPARE(heard, lines({"one Car", "one Van", "two Van", "one Car", "two Car"}));
}

void TestHotspotProviderResults::deletedMeanwhile_data()
{
    QTest::addColumn<QString>("request");
    for (const char *request : {"retrieve_profile", "update_profile", "start", "stop"})
        QTest::newRow(request) << QString::fromLatin1(request);
}

// Its application does not wait any more; the reply counts all the same.
void TestHotspotProviderResults::deletedMeanwhile()
{
    QFETCH(QString, request);
    const QByteArray name = request.toLatin1();
    const HotspotProviderFixture fixture;
    fixture.fetchCar();
    auto accepted = std::make_unique<Pending>(*fixture.provider, request);
    auto refused = std::make_unique<Pending>(*fixture.provider, request);
    const int acceptedId = accepted->id;
    const int refusedId = refused->id;
    accepted.reset();
    refused.reset();
    LogCapture log(3);
    accept(name.constData(), acceptedId, json(VanProfile));
    QVERIFY(log.take().isEmpty());
    const QStringList told = request == QLatin1String("retrieve_profile") ? lines({"profile Van"})
        : request == QLatin1String("update_profile")                      ? lines({"profile Car"})
                                                                          : QStringList();
    QCOMPARE(fixture.events->take(), told);
    const Pending next(*fixture.provider, QStringLiteral("start"));
    QCOMPARE(requests().last().contains(QLatin1String("\"ssid\":\"Van\"")),
             request == QLatin1String("retrieve_profile"));
    refuse(name.constData(), refusedId);
    QCOMPARE(log.take().filter(QStringLiteral("warning 1300 Failed to")).size(), 1);
    accept(name.constData(), acceptedId);
    QCOMPARE(log.take(), unknownId(acceptedId));
    runQueued();
    QVERIFY(fixture.events->take().isEmpty());
}

void TestHotspotProviderResults::deletedBeforeItsNotice()
{
    const HotspotProviderFixture fixture;
    auto gone = std::make_unique<Pending>(*fixture.provider, QStringLiteral("retrieve_profile"));
    const Pending kept(*fixture.provider, QStringLiteral("start"));
    QSignalSpy success(gone->config.get(), &AsyncHotspotConfigOperation::success);
    accept("retrieve_profile", gone->id, json(CarProfile));
    gone.reset();
    accept("start", kept.id);
    QCOMPARE(kept.end(), QStringLiteral("success true"));
    QCOMPARE(success.size(), 0);
}

void TestHotspotProviderResults::deletedInItsSlot()
{
    const HotspotProviderFixture fixture;
    auto *read = fetch(*fixture.provider).release();
    const QPointer<AsyncHotspotConfigOperation> alive(read);
    QObject::connect(read, &AsyncHotspotConfigOperation::success,
                     [](AsyncHotspotConfigOperation *asyncop) { delete asyncop; });
    accept("retrieve_profile", lastId(), json(CarProfile));
    QVERIFY(alive);
    runQueued();
    QVERIFY(!alive);
    // In the slot of the provider it is complete already.
    Pending second(*fixture.provider, QStringLiteral("retrieve_profile"));
    QObject::connect(fixture.provider.get(), &HotspotProvider::configurationChanged, [&] { second.config.reset(); });
    accept("retrieve_profile", second.id, json(VanProfile));
    runQueued();
    QVERIFY(!second.config);
    QCOMPARE(fixture.events->take(), lines({"profile Car", "profile Van"}));
}

void TestHotspotProviderResults::slotAsksAgain()
{
    const HotspotProviderFixture fixture;
    const Pending read(*fixture.provider, QStringLiteral("retrieve_profile"));
    EnablePointer on;
    std::unique_ptr<EnableEnd> onEnd;
    QObject::connect(read.config.get(), &AsyncHotspotConfigOperation::success, [&] {
        on = switchOn(*fixture.provider);
        onEnd = std::make_unique<EnableEnd>(on.get());
    });
    accept("retrieve_profile", read.id, json(CarProfile));
    QCOMPARE(read.end(), QStringLiteral("success Car"));
    QCOMPARE(requests().last(), QLatin1String("start ") + QLatin1String(CarWritten));
    accept("start", lastId());
    QCOMPARE(onEnd->text(), QStringLiteral("success true"));
}

QTEST_GUILESS_MAIN(TestHotspotProviderResults)
#include "tst_hotspotproviderresults.moc"
