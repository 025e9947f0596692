// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "peer.h"
#include "zopcontrolcommand.h"

#include <memory>

using namespace morvek;

class ControlPeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestsAreToldToTheDaemonAlone();
    void repliesAreToldToTheAskerAlone();
    void cannotBeOpenedWithoutADaemon();
    void openForReadingOnlyItTakesNoRequest();
    void theFlagHasNoEffectOnAClient();
    void aSecondDaemonIsRefused();
    void requestsOfADeadDaemonFailAndTheObjectWorksAgain();
    void writtenRequestsOfADeadDaemonAreRefused();
    void theEndOfOneDaemonRefusesNothingThatTheNextWasAsked();
    void aSlotThatHearsOfADeadDaemonDeletesTheObject();
    void aReplyIsToldThoughTheDaemonDiedAfterIt();
    void aDaemonThatDiesOfARequestFailsIt();
    void aDaemonMayDieManyTimes();
    void aRequestToAnAbsentDaemonFailsAtOnce();
    void aLateOrDoubledReplyIsTold();
    void aReplyToAGoneClientIsHarmless();
    void aDyingClientDisturbsNobody();
    void aClientThatDoesNotReadDisturbsNobody();
    void manyRequestsKeepTheirOrder();
    void largePayloadsPass();
    void nothingIsKept();
    void finishesOnceForADoubledReply();
    void aSlotDeletesItsCommand();
    void aSlotDeletesItsClient_data();
    void aSlotDeletesItsClient();
};

void ControlPeersTest::requestsAreToldToTheDaemonAlone()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer bystander;
    QVERIFY(openClient(bystander));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopObject sibling(testPath("control"), ZopObject::ReadWrite, false);
    const Events ofClient(&client);
    const Events ofSibling(&sibling);
    QVERIFY(set(client, QStringLiteral("msg=mute id=1")));
    QVERIFY(set(client, QStringLiteral("msg=echo id=2")));
    QVERIFY(ofClient.wait(QStringLiteral("{id=2 res=echo}")));
    QCOMPARE(ofClient.updates(), QStringList({"{id=2 res=echo}"}));
    // A round trip of each shows what they have heard before.
    QVERIFY(set(sibling, QStringLiteral("msg=echo id=3")));
    QVERIFY(ofSibling.wait(QStringLiteral("{id=3 res=echo}")));
    QCOMPARE(ofSibling.updates(), QStringList({"{id=3 res=echo}"}));
    QVERIFY(bystander.ask(QStringLiteral("set c msg=echo id=4"), QStringLiteral("c {id=4 res=echo}")));
    QCOMPARE(bystander.heard(QStringLiteral("c {")), QStringList({"id=4 res=echo}"}));
    QCOMPARE(daemon.heard(QStringLiteral("s {")).size(), 4);
}

void ControlPeersTest::repliesAreToldToTheAskerAlone()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    Peer clients[2];
    for (Peer &client : clients)
        QVERIFY(openClient(client));
    clients[0].send(QStringLiteral("ask c first"));
    clients[1].send(QStringLiteral("ask c second"));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 2; }));
    const QString first = peerOf(requests.updates(), QStringLiteral("first"));
    const QString second = peerOf(requests.updates(), QStringLiteral("second"));
    QVERIFY(!first.isEmpty() && !second.isEmpty() && first != second);
    const QStringList ids = clients[0].heard(QStringLiteral("c asked ")) + clients[1].heard(QStringLiteral("c asked "));
    QCOMPARE(ids.size(), 2);
    QVERIFY(requests.lines.contains(QStringLiteral("id=") + ids.at(0)));

    // Both are told under the first one's identifier, whether the two collide or not.
    QVERIFY(set(daemon, QStringLiteral("res=first id=%1 dat=one peer=%2").arg(ids.at(0), first)));
    QVERIFY(set(daemon, QStringLiteral("res=second id=%1 dat=two peer=%2").arg(ids.at(1), second)));
    QVERIFY(clients[0].wait(QStringLiteral("c finished first 0 one")));
    QVERIFY(clients[1].wait(QStringLiteral("c finished second 0 two")));
    QVERIFY(set(daemon, QStringLiteral("end=1 peer=") + first));
    QVERIFY(set(daemon, QStringLiteral("end=1 peer=") + second));
    QVERIFY(clients[0].wait(QStringLiteral("c {end=1}")));
    QVERIFY(clients[1].wait(QStringLiteral("c {end=1}")));
    QCOMPARE(clients[0].heard(QStringLiteral("c {")).size(), 2);
    QCOMPARE(clients[1].heard(QStringLiteral("c {")).size(), 2);
    QCOMPARE(clients[0].heard(QStringLiteral("c finished ")), QStringList({"first 0 one"}));
    QCOMPARE(clients[1].heard(QStringLiteral("c finished ")), QStringList({"second 0 two"}));
}

void ControlPeersTest::cannotBeOpenedWithoutADaemon()
{
    const ZopObject before(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(!before.isValid());
    QVERIFY(!before.errorString().isEmpty());
    Peer daemon;
    QVERIFY(serve(daemon));
    daemon.kill();
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite}) {
        const ZopObject after(testPath("control"), mode, false);
        QVERIFY(!after.isValid());
        QVERIFY(!after.errorString().isEmpty());
    }
}

void ControlPeersTest::openForReadingOnlyItTakesNoRequest()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    ZopObject reader(testPath("control"), ZopObject::Subscribe, false);
    QVERIFY(reader.isValid());
    QVERIFY(!set(reader, QStringLiteral("msg=echo id=1")));
    QVERIFY(!reader.errorString().isEmpty());
}

void ControlPeersTest::theFlagHasNoEffectOnAClient()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, true);
    QVERIFY(client.isValid());
    const Events events(&client);
    QVERIFY(set(client, QStringLiteral("msg=echo id=1")));
    QVERIFY(events.wait(QStringLiteral("{id=1 res=echo}")));
}

void ControlPeersTest::aSecondDaemonIsRefused()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    {
        const ZopObject second(testPath("control"), ZopObject::Publish, true);
        QVERIFY(!second.isValid());
        QVERIFY(!second.errorString().isEmpty());
        QVERIFY(!publish(testPath("control"), QString()));
        QVERIFY(!ZopObject::remove(testPath("control"))); // it is no state object
    }
    Peer client;
    QVERIFY(openClient(client));
    QVERIFY(client.ask(QStringLiteral("ask c echo x"), QStringLiteral("c finished echo 0 x")));

    QVERIFY(publish(testPath("state"), QStringLiteral("a=1")));
    const ZopObject onState(testPath("state"), ZopObject::Publish, true);
    QVERIFY(!onState.isValid());
    QVERIFY(!onState.errorString().isEmpty());
}

void ControlPeersTest::requestsOfADeadDaemonFailAndTheObjectWorksAgain()
{
    auto daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    ZopControlCommand commands[3] = {ZopControlCommand(&client), ZopControlCommand(&client),
                                     ZopControlCommand(&client)};
    int finished = 0;
    for (ZopControlCommand &command : commands) {
        connect(&command, &ZopControlCommand::finished, this, [&finished] { ++finished; });
        command.setMessage(QStringLiteral("mute"));
        command.start();
        QVERIFY(daemon->wait(QStringLiteral("s id=") + command.id()));
    }
    QCOMPARE(finished, 0);
    daemon->kill();
    QVERIFY(waitUntil([&finished] { return finished == 3; }));
    QCOMPARE(events.updates(), QStringList()); // a command's end is told by the command
    for (const ZopControlCommand &command : commands) {
        QVERIFY(command.hasError());
        QCOMPARE(command.errorCode(), -1);
        QVERIFY(!command.errorString().isEmpty());
    }
    QVERIFY(!set(client, QStringLiteral("msg=echo id=1")));
    QVERIFY(!client.errorString().isEmpty());
    QVERIFY(client.isValid());

    daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    QVERIFY(set(client, QStringLiteral("msg=echo id=77")));
    QVERIFY(events.wait(QStringLiteral("{id=77 res=echo}")));
    ZopControlCommand again(&client);
    QSignalSpy answered(&again, &ZopControlCommand::finished);
    again.setMessage(QStringLiteral("echo"));
    again.setDat(ZopVariant(QStringLiteral("x")));
    again.start();
    QVERIFY(answered.wait());
    QVERIFY(!again.hasError());
    QCOMPARE(again.datResponse(), ZopVariant(QStringLiteral("x")));
    QCOMPARE(finished, 3); // each one once
}

void ControlPeersTest::writtenRequestsOfADeadDaemonAreRefused()
{
    auto daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    QVERIFY(set(client, QStringLiteral("msg=mute id=7")));
    QVERIFY(set(client, QStringLiteral("msg=mute")));
    QVERIFY(set(client, QStringLiteral("id=8")));
    QVERIFY(set(client, QStringLiteral("msg=mute-too id=6")));
    QVERIFY(set(client, QStringLiteral("msg=echo id=9")));
    QVERIFY(events.wait(QStringLiteral("{id=9 res=echo}")));

    QList<ZopChangeset> told;
    connect(&client, &ZopObject::attributesChanged, this,
            [&told](const ZopChangeset &changes) { told.append(changes); });
    daemon->kill();
    QVERIFY(waitUntil([&told] { return told.size() == 2; }));
    const QStringList requests {QStringLiteral("mute-too"),
                                QStringLiteral("mute")}; // in the order of their identifiers
    for (int i = 0; i < 2; ++i) {
        QMap<QString, ZopVariant> reply = told[i].assignments;
        QCOMPARE(reply.take(QStringLiteral("res")), ZopVariant(requests[i]));
        QCOMPARE(reply.take(QStringLiteral("id")), ZopVariant(6 + i));
        QCOMPARE(reply.take(QStringLiteral("err")), ZopVariant(-1));
        QVERIFY(!reply.take(QStringLiteral("errmsg")).toString().isEmpty());
        QVERIFY(reply.isEmpty());
        QVERIFY(told[i].removals.isEmpty());
    }

    // Once only, and nothing of what the next daemon is asked.
    daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    QVERIFY(set(client, QStringLiteral("msg=echo id=10")));
    QVERIFY(events.wait(QStringLiteral("{id=10 res=echo}")));
    QCOMPARE(told.size(), 3);
}

void ControlPeersTest::theEndOfOneDaemonRefusesNothingThatTheNextWasAsked()
{
    auto daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    Peer client;
    QVERIFY(openClient(client));
    client.send(QStringLiteral("set c msg=mute id=1"));
    QVERIFY(daemon->wait(QStringLiteral("s id=1")));
    QVERIFY(client.ask(QStringLiteral("hold"), QStringLiteral("held"))); // it does not see the end of the first
    daemon->kill();
    daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    client.send(QStringLiteral("go\nset c msg=mute id=2"));
    QVERIFY(daemon->wait(QStringLiteral("s id=2")));
    QVERIFY(client.ask(QStringLiteral("set c msg=echo id=3"), QStringLiteral("c {id=3 res=echo}")));
    QVERIFY(client.wait(QStringLiteral("c id=1")));
    QCOMPARE(client.heard(QStringLiteral("c {")).size(), 2);
    QVERIFY(client.heard(QStringLiteral("c id=2")).isEmpty());
}

void ControlPeersTest::aSlotThatHearsOfADeadDaemonDeletesTheObject()
{
    auto daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    auto client = std::make_unique<ZopObject>(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(set(*client, QStringLiteral("msg=mute id=1")));
    QVERIFY(set(*client, QStringLiteral("msg=mute id=2")));
    QVERIFY(daemon->wait(QStringLiteral("s id=2")));
    int told = 0;
    connect(client.get(), &ZopObject::attributesChanged, this, [&] {
        ++told;
        client.reset();
    });
    daemon->kill();
    QVERIFY(waitUntil([&client] { return !client; }));
    QCOMPARE(told, 1);
}

void ControlPeersTest::aReplyIsToldThoughTheDaemonDiedAfterIt()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer client;
    QVERIFY(openClient(client));
    QVERIFY(client.ask(QStringLiteral("ask c echo first"), QStringLiteral("c finished echo 0 first")));
    client.send(QStringLiteral("ask c last second"));
    QVERIFY(client.ask(QStringLiteral("hold"), QStringLiteral("held")));
    QVERIFY(daemon.waitForEnd());
    client.send(QStringLiteral("go"));
    QVERIFY(client.wait(QStringLiteral("c finished last 0 second")));
    QVERIFY(client.ask(QStringLiteral("set c msg=echo id=1"), QStringLiteral("c not set")));
    QCOMPARE(client.heard(QStringLiteral("c finished ")), QStringList({"echo 0 first", "last 0 second"}));
}

void ControlPeersTest::aDaemonThatDiesOfARequestFailsIt()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    QVERIFY(daemon.ask(QStringLiteral("hold"), QStringLiteral("held")));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false); // which nobody has welcomed yet
    QVERIFY(client.isValid());
    ZopControlCommand command(&client);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("echo"));
    command.start();
    daemon.kill();
    QVERIFY(finished.wait());
    QCOMPARE(command.errorCode(), -1);
}

void ControlPeersTest::aDaemonMayDieManyTimes()
{
    auto daemon = std::make_unique<Peer>();
    QVERIFY(serve(*daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    for (int n = 1; n <= 5; ++n) {
        QVERIFY(set(client, QStringLiteral("msg=echo id=%1").arg(n)));
        QVERIFY(events.wait(QStringLiteral("{id=%1 res=echo}").arg(n)));
        daemon = std::make_unique<Peer>(); // the client's event loop may not have seen the end of the old one
        QVERIFY(serve(*daemon));
    }
    QCOMPARE(events.updates().size(), 5);
}

void ControlPeersTest::aRequestToAnAbsentDaemonFailsAtOnce()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer client;
    QVERIFY(openClient(client));
    QVERIFY(client.ask(QStringLiteral("hold"), QStringLiteral("held")));
    daemon.kill();
    // The client learns of it while it writes.
    client.send(QStringLiteral("go\nset c msg=echo id=1\nask c echo x"));
    QVERIFY(client.wait(QStringLiteral("c finished echo -1 ")));
    QCOMPARE(client.heard(QStringLiteral("c not set")).size(), 1);
}

void ControlPeersTest::aLateOrDoubledReplyIsTold()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    QVERIFY(set(client, QStringLiteral("msg=twice id=1")));
    QVERIFY(set(client, QStringLiteral("msg=echo id=2")));
    QVERIFY(events.wait(QStringLiteral("{id=2 res=echo}")));
    QCOMPARE(events.updates(), QStringList({"{id=1 res=twice}", "{id=1 res=twice}", "{id=2 res=echo}"}));
}

void ControlPeersTest::aReplyToAGoneClientIsHarmless()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    Peer gone;
    QVERIFY(openClient(gone));
    gone.send(QStringLiteral("set c msg=gone id=1"));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 1; }));
    gone.kill();
    const QString peer = peerOf(requests.updates(), QStringLiteral("gone"));
    // Once its end is known, the daemon is told that nobody gets the reply.
    QVERIFY(waitUntil([&] { return !set(daemon, QStringLiteral("res=gone id=1 peer=") + peer); }));
    QVERIFY(!daemon.errorString().isEmpty());

    Peer next;
    QVERIFY(openClient(next));
    next.send(QStringLiteral("set c msg=next id=1"));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 2; }));
    const QString nextPeer = peerOf(requests.updates(), QStringLiteral("next"));
    QVERIFY(nextPeer != peer); // or it would get what was meant for the other one
    QVERIFY(set(daemon, QStringLiteral("res=next id=1 peer=") + nextPeer));
    QVERIFY(next.wait(QStringLiteral("c {id=1 res=next}")));
    QCOMPARE(next.heard(QStringLiteral("c {")).size(), 1);
}

void ControlPeersTest::aDyingClientDisturbsNobody()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer survivor;
    QVERIFY(openClient(survivor));
    for (int n = 1; n <= 3; ++n) {
        Peer dying;
        QVERIFY(openClient(dying));
        dying.send(QStringLiteral("ask c echo 100000*d\nask c mute"));
        QVERIFY(dying.wait(QStringLiteral("c asked 2")) || dying.heard(QStringLiteral("c asked ")).size() == 2);
        dying.kill();
        const QString dat = QString::number(n);
        QVERIFY(survivor.ask(QStringLiteral("ask c echo ") + dat, QStringLiteral("c finished echo 0 ") + dat));
    }
}

void ControlPeersTest::aClientThatDoesNotReadDisturbsNobody()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer slow;
    QVERIFY(openClient(slow));
    QString requests;
    for (int n = 0; n < 25; ++n)
        requests += QStringLiteral("ask c echo 500000*%1\n").arg(QLatin1Char(char('a' + n % 26)));
    slow.send(requests + QStringLiteral("hold"));
    QVERIFY(slow.wait(QStringLiteral("held")));
    Peer quick;
    QVERIFY(openClient(quick));
    for (int n = 1; n <= 5; ++n) {
        const QString dat = QString::number(n);
        QVERIFY(quick.ask(QStringLiteral("ask c echo ") + dat, QStringLiteral("c finished echo 0 ") + dat));
    }
    slow.send(QStringLiteral("go\nask c echo end"));
    QVERIFY(slow.wait(QStringLiteral("c finished echo 0 end")));
}

void ControlPeersTest::manyRequestsKeepTheirOrder()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    QStringList expected;
    for (int n = 1; n <= 2000; ++n) {
        QVERIFY(set(client, QStringLiteral("msg=echo id=%1").arg(n)));
        expected << QStringLiteral("{id=%1 res=echo}").arg(n);
    }
    QVERIFY(events.wait(expected.last()));
    QCOMPARE(events.updates(), expected);
}

void ControlPeersTest::largePayloadsPass()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    QVERIFY(set(client, QStringLiteral("msg=echo id=1 dat=3000000*x")));
    QVERIFY(events.wait(QStringLiteral("{dat=3000000*x id=1 res=echo}")));
}

void ControlPeersTest::nothingIsKept()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    ZopObject first(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&first);
    QVERIFY(set(first, QStringLiteral("msg=echo id=1 dat=passkey")));
    QVERIFY(events.wait(QStringLiteral("{dat=passkey id=1 res=echo}")));
    ZopObject second(testPath("control"), ZopObject::ReadWrite, false);
    const Events ofSecond(&second);
    second.setAttributeCacheEnabled(true);
    QCOMPARE(ofSecond.lines, QStringList());
    QVERIFY(!second.attribute(QStringLiteral("dat")).isValid());
}

void ControlPeersTest::finishesOnceForADoubledReply()
{
    Peer daemon;
    QVERIFY(daemon.ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand doubled(&client);
    QSignalSpy finished(&doubled, &ZopControlCommand::finished);
    doubled.setMessage(QStringLiteral("twice"));
    doubled.start();
    ZopControlCommand next(&client);
    QSignalSpy nextFinished(&next, &ZopControlCommand::finished);
    next.setMessage(QStringLiteral("echo"));
    next.start();
    QVERIFY(nextFinished.wait());
    QCOMPARE(finished.count(), 1);
}

void ControlPeersTest::aSlotDeletesItsCommand()
{
    Peer daemon;
    QVERIFY(daemon.ask(QStringLiteral("serve s ") + testPath("control"), QStringLiteral("s open")));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    int finished = 0;
    for (const char *msg : {"echo", "twice", "fail", "echo"}) {
        auto *command = new ZopControlCommand(&client);
        connect(command, &ZopControlCommand::finished, this, [&finished](ZopControlCommand *done) {
            ++finished;
            delete done;
        });
        command->setMessage(QLatin1String(msg));
        command->start();
    }
    auto *failing = new ZopControlCommand(nullptr);
    connect(failing, &ZopControlCommand::finished, this, [&finished](ZopControlCommand *done) {
        ++finished;
        delete done;
    });
    failing->start();
    QVERIFY(waitUntil([&finished] { return finished == 5; }));
    ZopControlCommand next(&client);
    QSignalSpy answered(&next, &ZopControlCommand::finished);
    next.setMessage(QStringLiteral("echo"));
    next.start();
    QVERIFY(answered.wait());
    QCOMPARE(finished, 5);
}

void ControlPeersTest::aSlotDeletesItsClient_data()
{
    QTest::addColumn<bool>("inFinished");
    QTest::newRow("in finished") << true;
    QTest::newRow("in attributesChanged") << false;
}

void ControlPeersTest::aSlotDeletesItsClient()
{
    QFETCH(bool, inFinished);
    const QString path = testPath(inFinished ? "one" : "two");
    Peer daemon;
    QVERIFY(daemon.ask(QStringLiteral("serve s ") + path, QStringLiteral("s open")));
    auto *client = new ZopObject(path, ZopObject::ReadWrite, false);
    QObject owner;
    int finished = 0;
    int failed = 0;
    const auto destroy = [client] { delete client; };
    for (int i = 0; i < 3; ++i) {
        auto *command = new ZopControlCommand(client, &owner);
        connect(command, &ZopControlCommand::finished, this, [&](ZopControlCommand *done) {
            ++finished;
            failed += done->hasError() ? 1 : 0;
        });
        if (inFinished && i == 0)
            connect(command, &ZopControlCommand::finished, this, destroy);
        command->setMessage(QStringLiteral("echo"));
        command->start();
    }
    if (!inFinished)
        connect(client, &ZopObject::attributesChanged, this, destroy);
    QVERIFY(waitUntil([&finished] { return finished == 3; }));
    QCOMPARE(failed, inFinished ? 2 : 3);
}

CONTRACT_TEST_MAIN(ControlPeersTest)

#include "tst_controlpeers.moc"
