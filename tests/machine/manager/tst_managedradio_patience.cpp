// SPDX-License-Identifier: Apache-2.0
#include "managedradiocase.h"

#include <QtCore/QElapsedTimer>

using namespace morvek;

namespace {

const char Passkey[] = "a passkey of House";
const QString NotFound = QStringLiteral("last_event=CTRL-EVENT-NETWORK-NOT-FOUND ");

} // namespace

/*! What the daemon does when nothing happens for a while. */
class ManagedRadioPatienceTest : public ManagedRadioCase
{
    Q_OBJECT

private Q_SLOTS:
    void scansThatDoNotEnd();
    void radioThatDoesNotGetReady();

private:
    /*! So many scans are asked for, and not after less than \a seconds, as a coarse timer has it, nor after twice. */
    bool scansAfter(int seconds, int count = 1);
    QElapsedTimer m_since;
};

bool ManagedRadioPatienceTest::scansAfter(int seconds, int count)
{
    return m_manager->waitForCalls(QStringLiteral("RequestScan"), count, seconds * 2000)
        && m_since.elapsed() > seconds * 900;
}

/*! What has not been seen by a scan after the failure has not refused the passkey. */
void ManagedRadioPatienceTest::scansThatDoNotEnd()
{
    startDaemons();
    Connect connect(connectTo("House", Passkey));
    join();
    m_manager->setState(m_wifi, 50);
    m_since.start();
    fail(53);
    QVERIFY(m_manager->waitForCalls(QStringLiteral("RequestScan")));
    QVERIFY(QTest::qWaitFor([this] { return !m_status->lines().isEmpty(); }, 25000));
    QCOMPARE(m_status->lines(), QStringList {NotFound});
    QVERIFY(m_since.elapsed() > 13500);
    QVERIFY(connect.isOpen());
    // It is looked for again.
    m_manager->removeAccessPoint(m_house);
    m_since.start();
    QVERIFY(scansAfter(20, 2));
    QVERIFY(connect.isOpen());
    m_house = addAccessPoint("House", 2, FakeManager::Wpa2);
    m_manager->finishScan(m_wifi);
    QCOMPARE(join(2).pathAt(2), m_house);
}

/*! Every request is answered. */
void ManagedRadioPatienceTest::radioThatDoesNotGetReady()
{
    m_manager->setState(m_wifi, 20);
    startDaemons();
    m_since.start();
    Connect connect(connectTo("House", Passkey));
    QCOMPARE(connect.outcome(), QStringLiteral("-1 the radio is not ready"));
    QVERIFY(m_since.elapsed() > 9000);
    // In time it is joined.
    Connect next(connectTo("House", Passkey));
    QCOMPARE(request("wnet_new", "{'ssid':'Guest','key_mgmt':'NONE'}"), QStringLiteral("ok"));
    m_manager->finishScan(m_wifi);
    QVERIFY(told(1).constLast().contains(QStringLiteral("scan_results=")));
    QVERIFY(next.isOpen());
    m_manager->setState(m_wifi, 30);
    QCOMPARE(join().pathAt(2), m_house);
}

QTEST_GUILESS_MAIN(ManagedRadioPatienceTest)

#include "tst_managedradio_patience.moc"
