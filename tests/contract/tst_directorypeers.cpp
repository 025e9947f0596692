// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "peer.h"

using namespace morvek;

class DirectoryPeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hearsOfOtherProcesses();
    void aControlObjectIsThereWhileItIsServed();
    void aControlObjectThatIsServedAgainGoesAndComes();
};

void DirectoryPeersTest::hearsOfOtherProcesses()
{
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    Peer peer;
    QVERIFY(peer.ask(QStringLiteral("watch w ") + testFolder(), QStringLiteral("w watching")));
    QVERIFY(peer.ask(QStringLiteral("create %1 a=1").arg(testPath("a")), QStringLiteral("created")));
    QVERIFY(peer.ask(QStringLiteral("remove ") + testPath("a"), QStringLiteral("removed")));
    QVERIFY(peer.ask(QStringLiteral("open o %1 3").arg(testPath("b")), QStringLiteral("o open")));
    QVERIFY(events.wait(QStringLiteral("+b")));
    QVERIFY(peer.wait(QStringLiteral("w +b")));
    peer.kill(); // a state object stays
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QVERIFY(!events.lines.contains(QStringLiteral("-b")));
}

void DirectoryPeersTest::aControlObjectIsThereWhileItIsServed()
{
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    Peer daemon;
    QVERIFY(daemon.ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    QVERIFY(events.wait(QStringLiteral("+control")));
    QVERIFY(daemon.quit());
    QVERIFY(events.wait(QStringLiteral("-control")));
    QCOMPARE(events.lines, QStringList({"+control", "-control"}));

    Peer killed;
    QVERIFY(killed.ask(QStringLiteral("serve s ") + testPath("killed"), QStringLiteral("s open")));
    killed.kill();
    QVERIFY(publish(testPath("state"), QString()));
    ZopDirWatcher later(testFolder());
    const Events ofLater(&later);
    later.setNameCacheEnabled(true);
    QCOMPARE(ofLater.lines, QStringList({"+state"}));
}

void DirectoryPeersTest::aControlObjectThatIsServedAgainGoesAndComes()
{
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    Peer daemons[2];
    QVERIFY(daemons[0].ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    QVERIFY(events.wait(QStringLiteral("+control")));
    daemons[0].kill();
    QVERIFY(daemons[1].ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+control", "-control", "+control", "+end"}));
}

CONTRACT_TEST_MAIN(DirectoryPeersTest)

#include "tst_directorypeers.moc"
