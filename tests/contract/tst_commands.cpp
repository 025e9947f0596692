// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "zopcontrolcommand.h"

#include <QtCore/QDir>

#include <memory>

using namespace morvek;

namespace {

/*! Answers every request on \a daemon with \a reply, under its identifier and to its sender. */
void answerAll(ZopObject &daemon, const QString &reply)
{
    QObject::connect(&daemon, &ZopObject::attributesChanged, &daemon, [&daemon, reply](const ZopChangeset &request) {
        ZopChangeset answer = changesFrom(reply);
        for (const QString &name : {QStringLiteral("id"), QStringLiteral("peer")})
            answer.assignments.insert(name, request.assignments.value(name));
        daemon.setAttributes(answer);
    });
}

} // namespace

class CommandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finishesFromTheEventLoop();
    void sendsMessageIdentifierAndPayload();
    void readsTheReply_data();
    void readsTheReply();
    void hasAnIdentifierOnceStarted();
    void identifiersDiffer();
    void isStartedOnce();
    void aReplyToAnotherIdentifierIsNotMeant();
    void failsWithoutAnObject_data();
    void failsWithoutAnObject();
    void mayBeDeletedBeforeItsReply();
    void failsWhenItsObjectIsDeleted();
    void failsWhenTheDaemonIsGone();
    void theEndOfOneDaemonFailsNoRequestToTheNext();
    void repliesMayComeInAnyOrder();
    void tenThousandCostNothingAfterwards();
};

void CommandTest::finishesFromTheEventLoop()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    answerAll(daemon, QStringLiteral("dat=y"));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand command(&client);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("x"));
    command.start();
    QCOMPARE(finished.count(), 0);
    QVERIFY(finished.wait());
    QCOMPARE(finished.first().first().value<ZopControlCommand *>(), &command);
}

void CommandTest::sendsMessageIdentifierAndPayload()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QSignalSpy requests(&daemon, &ZopObject::attributesChanged);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand bare(&client);
    bare.setMessage(QStringLiteral("scan"));
    bare.start();
    ZopControlCommand loaded(&client);
    loaded.setMessage(QStringLiteral("wnet_new"));
    loaded.setDat(ZopVariant(QJsonObject {{QStringLiteral("ssid"), QStringLiteral("car")}}));
    loaded.start();
    QVERIFY(waitUntil([&requests] { return requests.count() == 2; }));
    auto first = requests.at(0).first().value<ZopChangeset>();
    auto second = requests.at(1).first().value<ZopChangeset>();
    QVERIFY(first.assignments.take(QStringLiteral("peer")).isValid());
    QCOMPARE(toText(first), QStringLiteral("{id=%1 msg=scan}").arg(bare.id()));
    QCOMPARE(second.assignments.value(QStringLiteral("dat")), ZopVariant(QByteArray(R"({"ssid":"car"})"), "json"));
    QCOMPARE(second.assignments.value(QStringLiteral("msg")).toString(), QStringLiteral("wnet_new"));
    QCOMPARE(second.assignments.value(QStringLiteral("id")).toString(), loaded.id());
    QCOMPARE(bare.message(), QStringLiteral("scan"));
}

void CommandTest::readsTheReply_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("hasError");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("dat");
    QTest::newRow("success") << "res=x" << false << 0 << ""
                             << "";
    QTest::newRow("payload") << "res=x dat=5" << false << 0 << ""
                             << "5";
    QTest::newRow("err 0") << "res=x err=0" << false << 0 << ""
                           << "";
    QTest::newRow("err empty") << "res=x err= errmsg=" << false << 0 << ""
                               << "";
    QTest::newRow("err") << "res=x err=5 errmsg=refused dat=3" << true << 5 << "refused"
                         << "3";
    QTest::newRow("negative err") << "res=x err=-5 errmsg=refused" << true << -5 << "refused"
                                  << "";
    QTest::newRow("err without text") << "res=x err=7" << true << 7 << ""
                                      << "";
    QTest::newRow("text without err") << "res=x errmsg=refused" << true << -1 << "refused"
                                      << "";
    QTest::newRow("err that is no number") << "res=x err=EPERM" << true << -1 << ""
                                           << "";
}

void CommandTest::readsTheReply()
{
    QFETCH(QString, reply);
    const QString path = testPath(QTest::currentDataTag());
    ZopObject daemon(path, ZopObject::Publish, true);
    answerAll(daemon, reply);
    ZopObject client(path, ZopObject::ReadWrite, false);
    ZopControlCommand command(&client);
    QVERIFY(!command.hasError());
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("x"));
    command.start();
    QVERIFY(finished.wait());
    QTEST(command.hasError(), "hasError");
    QTEST(command.errorCode(), "code");
    QTEST(command.errorString(), "text");
    QTEST(command.datResponse().toString(), "dat");
    QCOMPARE(command.datResponse().isValid(), reply.contains(QStringLiteral("dat=")));
}

void CommandTest::hasAnIdentifierOnceStarted()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand command(&client);
    command.setMessage(QStringLiteral("x"));
    QCOMPARE(command.id(), QString());
    command.start();
    bool ok = false;
    const int number = command.id().toInt(&ok, 10);
    QVERIFY(ok);
    QCOMPARE(command.id(), QString::number(number));
}

void CommandTest::identifiersDiffer()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QSet<QString> ids;
    QObject commands;
    for (int i = 0; i < 200; ++i) {
        auto *command = new ZopControlCommand(&client, &commands);
        command->start();
        ids.insert(command->id());
    }
    QCOMPARE(ids.size(), 200);
}

void CommandTest::isStartedOnce()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    answerAll(daemon, QStringLiteral("dat=y"));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand command(&client);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("x"));
    command.start();
    const QString id = command.id();
    command.start();
    QCOMPARE(command.id(), id);
    QVERIFY(finished.wait());
    command.start();
    ZopControlCommand next(&client);
    QSignalSpy nextFinished(&next, &ZopControlCommand::finished);
    next.start();
    QVERIFY(nextFinished.wait());
    QCOMPARE(requests.updates().size(), 2);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(command.id(), id);
}

void CommandTest::aReplyToAnotherIdentifierIsNotMeant()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand command(&client);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("x"));
    command.start();
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 1; }));
    const QString peer = requests.updates().first().section(QStringLiteral("peer="), 1).chopped(1);
    for (const char *stray : {"res=x id=4711 dat=wrong", "res=x dat=wrong", "res=x id=junk dat=wrong"})
        QVERIFY(set(daemon, QLatin1String(stray) + QStringLiteral(" peer=") + peer));
    QVERIFY(set(daemon, QStringLiteral("res=x id=%1 dat=right peer=%2").arg(command.id(), peer)));
    QVERIFY(finished.wait());
    QCOMPARE(command.datResponse().toString(), QStringLiteral("right"));
}

void CommandTest::failsWithoutAnObject_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("none") << 0;
    QTest::newRow("a missing one") << 1;
    QTest::newRow("a state object") << 2;
    QTest::newRow("opened for reading") << 3;
}

void CommandTest::failsWithoutAnObject()
{
    QFETCH(int, kind);
    if (kind == 2)
        QVERIFY(publish(testPath("state"), QString()));
    std::unique_ptr<ZopObject> daemon;
    if (kind == 3)
        daemon = std::make_unique<ZopObject>(testPath("state"), ZopObject::Publish, true);
    ZopObject object(testPath("state"), kind == 3 ? ZopObject::Subscribe : ZopObject::ReadWrite, false);
    QCOMPARE(object.isValid(), kind >= 2);
    ZopControlCommand command(kind == 0 ? nullptr : &object);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.setMessage(QStringLiteral("x"));
    command.start();
    QCOMPARE(finished.count(), 0);
    QVERIFY(finished.wait());
    QVERIFY(command.hasError());
    QCOMPARE(command.errorCode(), -1);
    QVERIFY(!command.errorString().isEmpty());
    QCOMPARE(finished.count(), 1);
}

void CommandTest::mayBeDeletedBeforeItsReply()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    answerAll(daemon, QStringLiteral("dat=y"));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events replies(&client);
    auto dropped = std::make_unique<ZopControlCommand>(&client);
    dropped->setMessage(QStringLiteral("dropped"));
    dropped->start();
    dropped.reset();
    auto failed = std::make_unique<ZopControlCommand>(nullptr);
    failed->start();
    failed.reset();
    ZopControlCommand next(&client);
    QSignalSpy finished(&next, &ZopControlCommand::finished);
    next.start();
    QVERIFY(finished.wait());
    QCOMPARE(replies.updates().size(), 2);
}

void CommandTest::failsWhenItsObjectIsDeleted()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    auto client = std::make_unique<ZopObject>(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand first(client.get());
    ZopControlCommand second(client.get());
    QSignalSpy ofFirst(&first, &ZopControlCommand::finished);
    QSignalSpy ofSecond(&second, &ZopControlCommand::finished);
    first.start();
    second.start();
    client.reset();
    QCOMPARE(ofFirst.count() + ofSecond.count(), 0);
    QVERIFY(waitUntil([&] { return ofFirst.count() + ofSecond.count() == 2; }));
    QCOMPARE(first.errorCode(), -1);
    QCOMPARE(second.errorCode(), -1);
    ZopControlCommand late(nullptr);
    QSignalSpy ofLate(&late, &ZopControlCommand::finished);
    late.start();
    QVERIFY(ofLate.wait());
    QCOMPARE(ofFirst.count(), 1);
    QCOMPARE(ofSecond.count(), 1);
}

void CommandTest::failsWhenTheDaemonIsGone()
{
    auto daemon = std::make_unique<ZopObject>(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    daemon.reset();
    ZopControlCommand command(&client);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    command.start();
    QCOMPARE(finished.count(), 0);
    QVERIFY(finished.wait());
    QCOMPARE(command.errorCode(), -1);
    QVERIFY(!command.errorString().isEmpty());
}

void CommandTest::theEndOfOneDaemonFailsNoRequestToTheNext()
{
    auto former = std::make_unique<ZopObject>(testPath("control"), ZopObject::Publish, true);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand first(&client);
    QSignalSpy ofFirst(&first, &ZopControlCommand::finished);
    first.start();
    former.reset();
    // The client has had no turn of the event loop to learn of it.
    ZopObject next(testPath("control"), ZopObject::Publish, true);
    answerAll(next, QStringLiteral("dat=y"));
    ZopControlCommand second(&client);
    QSignalSpy ofSecond(&second, &ZopControlCommand::finished);
    second.start();
    QVERIFY(waitUntil([&] { return ofFirst.count() == 1 && ofSecond.count() == 1; }));
    QCOMPARE(first.errorCode(), -1);
    QVERIFY2(!second.hasError(), qPrintable(second.errorString()));
    QCOMPARE(second.datResponse().toString(), QStringLiteral("y"));
}

void CommandTest::repliesMayComeInAnyOrder()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    ZopControlCommand first(&client);
    ZopControlCommand second(&client);
    QStringList finished;
    connect(&first, &ZopControlCommand::finished, this, [&] { finished << QStringLiteral("first"); });
    connect(&second, &ZopControlCommand::finished, this, [&] { finished << QStringLiteral("second"); });
    first.start();
    second.start();
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 2; }));
    const QString peer = requests.updates().first().section(QStringLiteral("peer="), 1).chopped(1);
    QVERIFY(set(daemon, QStringLiteral("res=x id=%1 dat=2 peer=%2").arg(second.id(), peer)));
    QVERIFY(set(daemon, QStringLiteral("res=x id=%1 dat=1 peer=%2").arg(first.id(), peer)));
    QVERIFY(waitUntil([&finished] { return finished.size() == 2; }));
    QCOMPARE(finished, QStringList({"second", "first"}));
    QCOMPARE(first.datResponse().toInt(), 1);
    QCOMPARE(second.datResponse().toInt(), 2);
}

void CommandTest::tenThousandCostNothingAfterwards()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    answerAll(daemon, QStringLiteral("dat=y"));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QObject provider;
    int finished = 0;
    const auto ask = [&](int count) {
        for (int i = 0; i < count; ++i) {
            auto *command = new ZopControlCommand(&client, &provider);
            connect(command, &ZopControlCommand::finished, this, [&finished] { ++finished; });
            command->setMessage(QStringLiteral("x"));
            command->start();
        }
        const int awaited = finished + count;
        return waitUntil([&finished, awaited] { return finished == awaited; });
    };
    QVERIFY(ask(1));
    const uint descriptors = QDir(QStringLiteral("/proc/self/fd")).count();
    const int children = client.findChildren<QObject *>().size();
    for (int i = 0; i < 100; ++i)
        QVERIFY(ask(100));
    QCOMPARE(QDir(QStringLiteral("/proc/self/fd")).count(), descriptors);
    QCOMPARE(client.findChildren<QObject *>().size(), children);
    QVERIFY(ask(1));
    QCOMPARE(finished, 10002);
    // None of them is bound to the daemon's end any more.
    client.disconnect();
    provider.findChild<ZopControlCommand *>()->start();
    ZopControlCommand last(&client);
    QSignalSpy answered(&last, &ZopControlCommand::finished);
    last.start();
    QVERIFY(answered.wait());
    QCOMPARE(finished, 10002);
}

CONTRACT_TEST_MAIN(CommandTest)

#include "tst_commands.moc"
