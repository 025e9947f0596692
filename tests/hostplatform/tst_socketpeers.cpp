// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "malformedupdates.h"
#include "peer.h"
#include "zopcontrolcommand.h"

#include <QtNetwork/QLocalServer>
#include <QtNetwork/QLocalSocket>

using namespace morvek;

class SocketPeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSocketOfADeadDaemonIsReplaced();
    void aMalformedClientIsDroppedAndDisturbsNobody();
    void whatFollowsMalformedContentWasRead();
    void anUnfinishedRequestDisturbsNobody();
    void manyConnectionsDisturbNobody();
    void aClientThatNeverReadsIsDropped();
    void aDaemonThatNeverReadsFailsRequests();
    void noSecretReachesAFile();
};

void SocketPeersTest::theSocketOfADeadDaemonIsReplaced()
{
    for (int i = 0; i < 3; ++i) {
        Peer daemon;
        QVERIFY(serve(daemon));
        daemon.kill();
        QVERIFY(QFileInfo::exists(fileOf(testPath("control"))));
    }
    QVERIFY(plant(testPath(".control.new"), "left over"));
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer client;
    QVERIFY(openClient(client));
    QVERIFY(client.ask(QStringLiteral("ask c echo x"), QStringLiteral("c finished echo 0 x")));
    QVERIFY(daemon.quit());
    QCOMPARE(
        QDir(fileOf(testFolder())).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList());
}

void SocketPeersTest::aMalformedClientIsDroppedAndDisturbsNobody()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer other;
    QVERIFY(openClient(other));
    int n = 0;
    for (const QByteArray &bytes : malformedUpdates()) {
        QLocalSocket hostile;
        hostile.connectToServer(fileOf(testPath("control")));
        QVERIFY(hostile.waitForConnected());
        hostile.write(bytes);
        QVERIFY2(waitUntil([&hostile] { return hostile.state() == QLocalSocket::UnconnectedState; }),
                 bytes.toHex().constData());
        const QString dat = QString::number(++n);
        QVERIFY(other.ask(QStringLiteral("ask c echo ") + dat, QStringLiteral("c finished echo 0 ") + dat));
    }
    QCOMPARE(daemon.heard(QStringLiteral("s {")).size(), n);
    const QByteArray report =
        "Closed a connection of \"" + fileOf(testPath("control")).toUtf8() + "\", which carried malformed content\n";
    QCOMPARE(daemon.standardError().count(report), n);
}

// A valid request before it, and all in one piece, made the daemon read on from what it had buffered.
void SocketPeersTest::whatFollowsMalformedContentWasRead()
{
    const QByteArray valid("\0\0\0\x04\0\0\0\0", 8);
    const QByteArray wrong("\0\0\0\x05\0\0\0\0\0", 9);
    Peer daemon;
    QVERIFY(serve(daemon));
    QLocalSocket hostile;
    hostile.connectToServer(fileOf(testPath("control")));
    QVERIFY(hostile.waitForConnected());
    hostile.write(valid + wrong + valid + wrong);
    QVERIFY(waitUntil([&hostile] { return hostile.state() == QLocalSocket::UnconnectedState; }));
    Peer other;
    QVERIFY(openClient(other));
    QVERIFY(other.ask(QStringLiteral("ask c echo x"), QStringLiteral("c finished echo 0 x")));
    QCOMPARE(daemon.heard(QStringLiteral("s {")).size(), 2);
    QCOMPARE(daemon.standardError().count("malformed"), 1);
}

void SocketPeersTest::anUnfinishedRequestDisturbsNobody()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer other;
    QVERIFY(openClient(other));
    QLocalSocket hostiles[3];
    const QByteArray starts[] = {QByteArray("\0\0", 2), QByteArray("\0\0\0\x40half", 8),
                                 QByteArray("\0\xff\0\0", 4) + QByteArray(1000000, 'x')};
    for (int i = 0; i < 3; ++i) {
        hostiles[i].connectToServer(fileOf(testPath("control")));
        QVERIFY(hostiles[i].waitForConnected());
        hostiles[i].write(starts[i]);
        QVERIFY(waitUntil([&] { return hostiles[i].bytesToWrite() == 0; }));
        const QString dat = QString::number(i);
        QVERIFY(other.ask(QStringLiteral("ask c echo ") + dat, QStringLiteral("c finished echo 0 ") + dat));
    }
    for (QLocalSocket &hostile : hostiles)
        hostile.abort();
    QVERIFY(other.ask(QStringLiteral("ask c echo end"), QStringLiteral("c finished echo 0 end")));
    QCOMPARE(daemon.heard(QStringLiteral("s {")).size(), 4);
}

void SocketPeersTest::manyConnectionsDisturbNobody()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer other;
    QVERIFY(openClient(other));
    std::vector<std::unique_ptr<QLocalSocket>> hostiles;
    for (int i = 0; i < 200; ++i) {
        hostiles.push_back(std::make_unique<QLocalSocket>());
        hostiles.back()->connectToServer(fileOf(testPath("control")));
        QVERIFY(hostiles.back()->waitForConnected());
    }
    QVERIFY(other.ask(QStringLiteral("ask c echo x"), QStringLiteral("c finished echo 0 x")));
    Peer another;
    QVERIFY(openClient(another));
    QVERIFY(another.ask(QStringLiteral("ask c echo y"), QStringLiteral("c finished echo 0 y")));
}

void SocketPeersTest::aClientThatNeverReadsIsDropped()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    Peer client;
    QVERIFY(openClient(client));
    QVERIFY(client.ask(QStringLiteral("ask c first"), QStringLiteral("c asked 1")));
    QVERIFY(client.ask(QStringLiteral("hold"), QStringLiteral("held")));
    QVERIFY(waitUntil([&requests] { return !requests.updates().isEmpty(); }));
    const QString peer = requests.updates().first().section(QStringLiteral("peer="), 1).chopped(1);
    int replies = 0;
    while (replies < 100 && set(daemon, QStringLiteral("dat=1000000*x peer=") + peer))
        ++replies;
    QVERIFY2(replies > 10 && replies < 50, qPrintable(QString::number(replies)));
    QVERIFY(!daemon.errorString().isEmpty());
    client.send(QStringLiteral("go"));
    QVERIFY(client.wait(QStringLiteral("c finished first -1 ")));
    // It may come again.
    client.send(QStringLiteral("set c msg=again id=9"));
    QVERIFY(waitUntil([&requests] { return requests.lines.contains(QStringLiteral("msg=again")); }));
}

void SocketPeersTest::aDaemonThatNeverReadsFailsRequests()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    QVERIFY(daemon.ask(QStringLiteral("hold"), QStringLiteral("held")));
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    const Events events(&client);
    int requests = 0;
    while (requests < 100 && set(client, QStringLiteral("msg=mute dat=1000000*x id=%1").arg(requests)))
        ++requests;
    QVERIFY2(requests > 10 && requests < 50, qPrintable(QString::number(requests)));
    QVERIFY(!client.errorString().isEmpty());
    daemon.send(QStringLiteral("go"));
    QVERIFY(waitUntil([&client] { return set(client, QStringLiteral("msg=echo id=4711")); }));
    QVERIFY(events.wait(QStringLiteral("{id=4711 res=echo}")));
}

void SocketPeersTest::noSecretReachesAFile()
{
    const QString secret = QStringLiteral("correct-horse-battery-staple");
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer client;
    QVERIFY(openClient(client));
    QVERIFY(client.ask(QStringLiteral("ask c echo ") + secret, QStringLiteral("c finished echo 0 ") + secret));
    QVERIFY(client.ask(QStringLiteral("set c msg=mute id=9 dat=") + secret, QStringLiteral("c set")));
    QVERIFY(publish(testPath("state"), QStringLiteral("a=sought")));
    bool sought = false;
    const auto look = [&sought, &secret] {
        for (const QString &name : allFiles()) {
            QFile file(name);
            const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
            // As UTF-8, and as the code units that a stream writes.
            QByteArray wide;
            for (const QChar c : secret)
                wide.append('\0').append(c.toLatin1());
            if (bytes.contains(secret.toUtf8()) || bytes.contains(wide))
                return false;
            sought = sought || bytes.contains("sought");
        }
        return true;
    };
    QVERIFY(look());
    QVERIFY(sought); // or nothing was looked at
    client.kill();
    daemon.kill();
    QVERIFY(look());
    for (Peer *peer : {&client, &daemon})
        QVERIFY(!peer->standardError().contains(secret.toUtf8()));
}

CONTRACT_TEST_MAIN(SocketPeersTest)

#include "tst_socketpeers.moc"
