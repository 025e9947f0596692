// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "zopcontrolcommand.h"

#include <memory>

using namespace morvek;

class ControlTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRequestReachesTheDaemonAndItsReplyTheClient();
    void twoObjectsOfOneProcessAreTwoClients();
    void anOrderlyEndIsSeen();
    void onlyAReplySettlesARequest();
    void aReplyToNobodyFails();
};

void ControlTest::aRequestReachesTheDaemonAndItsReplyTheClient()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
    const Events requests(&daemon);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY2(client.isValid(), qPrintable(client.errorString()));
    QCOMPARE(client.errorString(), QString());
    client.setAttributeCacheEnabled(true);
    const Events replies(&client);
    QVERIFY(set(client, QStringLiteral("msg=start id=5 dat=x")));
    QVERIFY(waitUntil([&requests] { return !requests.updates().isEmpty(); }));
    const QString peer = requests.updates().first().section(QStringLiteral("peer="), 1).chopped(1);
    QVERIFY(!peer.isEmpty());
    QCOMPARE(requests.lines,
             QStringList({"dat=x", "id=5", "msg=start", "peer=" + peer, "{dat=x id=5 msg=start peer=" + peer + "}"}));
    QVERIFY(set(daemon, QStringLiteral("res=start id=5 dat=y peer=") + peer));
    QVERIFY(replies.wait(QStringLiteral("{dat=y id=5 res=start}")));
    QCOMPARE(replies.lines, QStringList({"dat=y", "id=5", "res=start", "{dat=y id=5 res=start}"}));
}

void ControlTest::twoObjectsOfOneProcessAreTwoClients()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    ZopObject first(testPath("control"), ZopObject::ReadWrite, false);
    ZopObject second(testPath("control"), ZopObject::ReadWrite, false);
    const Events ofFirst(&first);
    const Events ofSecond(&second);
    QVERIFY(set(first, QStringLiteral("msg=a id=1")));
    QVERIFY(set(second, QStringLiteral("msg=b id=1")));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 2; }));
    QVERIFY(set(daemon, QStringLiteral("res=a id=1 peer=") + peerOf(requests.updates(), QStringLiteral("a"))));
    QVERIFY(ofFirst.wait(QStringLiteral("{id=1 res=a}")));
    QVERIFY(set(daemon, QStringLiteral("res=b id=1 peer=") + peerOf(requests.updates(), QStringLiteral("b"))));
    QVERIFY(ofSecond.wait(QStringLiteral("{id=1 res=b}")));
    QCOMPARE(ofFirst.updates(), QStringList({"{id=1 res=a}"}));
    QCOMPARE(ofSecond.updates(), QStringList({"{id=1 res=b}"}));
}

void ControlTest::anOrderlyEndIsSeen()
{
    auto daemon = std::make_unique<ZopObject>(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand command(&client);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("x"));
    command.start();
    daemon.reset();
    QVERIFY(finished.wait());
    QVERIFY(command.hasError());
    const ZopObject later(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(!later.isValid());
    QVERIFY(!set(client, QStringLiteral("msg=x id=1")));
}

void ControlTest::onlyAReplySettlesARequest()
{
    auto daemon = std::make_unique<ZopObject>(testPath("control"), ZopObject::Publish, true);
    ZopVariant peer;
    connect(daemon.get(), &ZopObject::attributesChanged, this,
            [&peer](const ZopChangeset &request) { peer = request.assignments.value(QStringLiteral("peer")); });
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QList<ZopChangeset> told;
    connect(&client, &ZopObject::attributesChanged, this,
            [&told](const ZopChangeset &changes) { told.append(changes); });
    QVERIFY(set(client, QStringLiteral("msg=slow id=1")));
    QVERIFY(waitUntil([&peer] { return peer.isValid(); }));
    ZopChangeset progress;
    progress.assignments = {{QStringLiteral("id"), 1}, {QStringLiteral("peer"), peer}, {QStringLiteral("done"), 50}};
    QVERIFY(daemon->setAttributes(progress));
    QVERIFY(waitUntil([&told] { return told.size() == 1; }));
    daemon.reset();
    QVERIFY(waitUntil([&told] { return told.size() == 2; }));
    QCOMPARE(told.last().assignments.value(QStringLiteral("res")).toString(), QStringLiteral("slow"));
    QCOMPARE(told.last().assignments.value(QStringLiteral("err")).toInt(), -1);
}

void ControlTest::aReplyToNobodyFails()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    for (const char *reply : {"res=x id=1 peer=999", "res=x id=1 peer=junk", "res=x id=1 peer=-1"}) {
        QVERIFY(!set(daemon, QLatin1String(reply)));
        QVERIFY(!daemon.errorString().isEmpty());
    }
}

CONTRACT_TEST_MAIN(ControlTest)

#include "tst_control.moc"
