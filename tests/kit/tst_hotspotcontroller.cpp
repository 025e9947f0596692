// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hotspotfixture.h"

using namespace morvek;

/*! What an application sees of the hotspot, and what is asked of the daemon for it. */
class HotspotControllerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void fetchesWhenItBecomesReady();

private:
    std::unique_ptr<HotspotFixture> m;
};

void HotspotControllerTest::init()
{
    m = std::make_unique<HotspotFixture>();
}

void HotspotControllerTest::cleanup()
{
    m.reset();
    PlayedDaemon::forgetAll();
}

void HotspotControllerTest::fetchesWhenItBecomesReady()
{
    QVERIFY(!m->controller.isProfileKnown());
    QVERIFY(m->controller.name().isEmpty());
    QCOMPARE(stateOf(m->controller), QStringLiteral("NotReady"));
    QVERIFY(m->waitForProfile());
    QCOMPARE(m->controller.name(), QStringLiteral("Morvek Car"));
    QCOMPARE(m->controller.form()->name(), QStringLiteral("Morvek Car"));
    QCOMPARE(stateOf(m->controller), QStringLiteral("Off"));
    QCOMPARE(m->daemon.requests, QStringList({QStringLiteral("retrieve_profile")}));
}

CONTRACT_TEST_MAIN(HotspotControllerTest)
#include "tst_hotspotcontroller.moc"
