// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "malformedupdates.h"
#include "zopcontrolcommand.h"

#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>

#include <memory>

using namespace morvek;

class SocketTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMalformedDaemonFailsTheRequest();
    void aConnectionThatBreaksWhileItIsReadCausesNoWarning();
    void aClientThatIsGoneIsNoPeer();
};

void SocketTest::aMalformedDaemonFailsTheRequest()
{
    QVERIFY(publish(testPath("beside"), QString()));
    QLocalServer daemon;
    QVERIFY(daemon.listen(fileOf(testPath("control"))));
    for (const QByteArray &bytes : malformedUpdates()) {
        ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
        QVERIFY2(client.isValid(), qPrintable(client.errorString()));
        const Events events(&client);
        QVERIFY(waitUntil([&daemon] { return daemon.hasPendingConnections(); }));
        QLocalSocket *connection = daemon.nextPendingConnection();
        ZopControlCommand command(&client);
        QSignalSpy finished(&command, &ZopControlCommand::finished);
        command.start();
        connection->write(bytes);
        QVERIFY2(finished.wait(), bytes.toHex().constData());
        QCOMPARE(command.errorCode(), -1);
        QCOMPARE(events.lines, QStringList());
    }
}

void SocketTest::aConnectionThatBreaksWhileItIsReadCausesNoWarning()
{
    QVERIFY(publish(testPath("beside"), QString()));
    QLocalServer daemon;
    QVERIFY(daemon.listen(fileOf(testPath("control"))));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(waitUntil([&daemon] { return daemon.hasPendingConnections(); }));
    QLocalSocket *connection = daemon.nextPendingConnection();
    // More than the connection holds, so that the client goes on writing while it reads.
    QVERIFY(set(client, QStringLiteral("msg=mute id=1 dat=10000000*x")));
    connection->write(QByteArray("\0\0\0\x04\0\0\0\0", 8));
    connection->flush();
    connection->abort();
    static QStringList warnings;
    warnings.clear();
    const auto usual = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { warnings.append(text); });
    const Events events(&client);
    const bool told = waitUntil([&events] { return events.lines.contains(QStringLiteral("res=mute")); });
    qInstallMessageHandler(usual);
    QVERIFY(told);
    QCOMPARE(warnings, QStringList());
}

void SocketTest::aClientThatIsGoneIsNoPeer()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    auto client = std::make_unique<ZopObject>(testPath("control"), ZopObject::ReadWrite, false);
    const Events requests(&daemon);
    QVERIFY(set(*client, QStringLiteral("msg=start id=1")));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 1; }));
    const QString peer = peerOf(requests.updates(), QStringLiteral("start"));
    client.reset();
    QVERIFY(!set(daemon, QStringLiteral("res=start id=1 peer=") + peer));
    QCOMPARE(daemon.errorString(), QStringLiteral("no such peer"));
}

CONTRACT_TEST_MAIN(SocketTest)

#include "tst_sockets.moc"
