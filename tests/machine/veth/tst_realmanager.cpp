// SPDX-License-Identifier: Apache-2.0
#include "patience.h"
#include "realmanager.h"

#include <QtTest/QtTest>

namespace {

bool waitForAddress(const char *interface, const QByteArray &prefix)
{
    const QByteArray look = QByteArray("ip -4 -brief address show dev ") + interface;
    return QTest::qWaitFor([look, prefix] { return shell(look).contains(' ' + prefix); }, Patience);
}

} // namespace

/*! The fixture itself: what is real in it, and that it stays among its own. */
class RealManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void seesItsInterfacesOnly();
    void getsAddresses();
    void comesBackAfterItsDeath();
    void endsWhenItIsKilled();

private:
    std::unique_ptr<RealManager> m_manager;
};

void RealManagerTest::initTestCase()
{
    m_manager = std::make_unique<RealManager>();
    QVERIFY(m_manager->start());
    QVERIFY(m_manager->startServer());
}

void RealManagerTest::seesItsInterfacesOnly()
{
    QCOMPARE(shell("nmcli --terse --fields DEVICE,STATE device"),
             QByteArray("vt0:disconnected\nvt1:disconnected\nlo:unmanaged"));
    QCOMPARE(shell("nmcli --terse --fields NAME connection"), QByteArray());
}

void RealManagerTest::getsAddresses()
{
    shell("nmcli connection add type ethernet ifname vt0 con-name house");
    shell("nmcli connection up house");
    QVERIFY(waitForAddress("vt0", "10.9.0.1"));
    // The profile is kept where the fixture says, and not on the machine.
    QCOMPARE(shell("ls /run/bench/profiles /etc/NetworkManager"),
             QByteArray("/etc/NetworkManager:\n\n/run/bench/profiles:\nhouse.nmconnection"));
}

void RealManagerTest::comesBackAfterItsDeath()
{
    const qint64 before = m_manager->processId();
    m_manager->kill();
    QVERIFY(shell("ip -4 -brief address show dev vt0").contains("10.9.0.1"));
    QVERIFY(m_manager->start());
    QVERIFY(m_manager->processId() != before);
    QCOMPARE(shell("nmcli --terse --fields NAME connection show --active"), QByteArray("house"));
    m_manager->stop();
    QVERIFY(m_manager->start());
    QCOMPARE(shell("nmcli --terse --fields NAME connection show --active"), QByteArray("house"));
}

/*! Namespaces within these, killed as a test is that takes too long: what was started there is gone. */
void RealManagerTest::endsWhenItIsKilled()
{
    ChildProcess outer;
    outer.start(QStringLiteral(NAMESPACES),
                {QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("sleep 3601 & echo begun; wait")});
    QVERIFY(outer.waitForReadyRead(Patience));
    QCOMPARE(outer.readAll(), QByteArray("begun\n"));
    QVERIFY(shell("ps -e -o args").contains("sleep 3601"));
    outer.kill();
    QVERIFY(outer.waitForFinished(Patience));
    QTRY_VERIFY_WITH_TIMEOUT(!shell("ps -e -o args").contains("sleep 3601"), Patience);
    QVERIFY(shell("ip -brief link").contains("vt0"));
}

QTEST_GUILESS_MAIN(RealManagerTest)

#include "tst_realmanager.moc"
