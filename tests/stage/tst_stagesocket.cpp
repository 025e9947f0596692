// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "otheruser.h"
#include "sanitizedheap.h"
#include "stageclient.h"

#include <QtTest/QtTest>

#include <cerrno>
#include <limits>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

using namespace morvek;

namespace {

const char Look[] = "{\"look\":\"daemons\"}";
const char AllAlive[] = R"({"daemons":{"networking":"alive","tethering":"alive","wifi":"alive"},"done":true})";

constexpr int LongestLine = 256 * 1024;

// By how much the daemon may grow when clients want it to.
#ifdef HEAP_IS_SANITIZED
constexpr qint64 MostGrowth = std::numeric_limits<qint64>::max();
#else
constexpr qint64 MostGrowth = 8 * 1024 * 1024;
#endif

QByteArray refusal(const char *reason)
{
    return QByteArray(R"({"done":false,"reason":")") + reason + "\"}";
}

} // namespace

/*! The stage's socket, and what clients can do to it. */
class StageSocketTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_daemon.reset(); }

    void isPrivate();
    void takesThePlaceOfADeadOne();
    void takesThePlaceOfAFile();
    void comesBackWhenItIsRemoved();
    void goesWithItsDaemon();
    void isOneForARoot();
    void isServedBelowALongPath();
    void anotherUserIsNotHeard();

    void severalLinesAtOnce();
    void aLineInPieces();
    void aLineWithoutAnEnd();
    void theLongestLine();
    void aLineThatIsTooLong();
    void anEndlessLine();
    void bytesThatAreNoText();
    void severalClients();
    void tooManyClients();
    void aClientThatDoesNotRead();
    void aClientThatDisappears();
    void theDaemonDies();

private:
    QString file() const { return StageClient::fileOf(m_daemon->root()); }
    bool start() const { return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--hold")}); }
    qint64 memory() const;

    std::unique_ptr<DaemonFixture> m_daemon;
};

void StageSocketTest::init()
{
    m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY(start());
}

/*! What the daemon has in memory, in bytes. */
qint64 StageSocketTest::memory() const
{
    QFile file(QStringLiteral("/proc/%1/statm").arg(m_daemon->process().processId()));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE) : -1;
}

void StageSocketTest::isPrivate()
{
    struct stat status;
    QCOMPARE(lstat(QFile::encodeName(file()).constData(), &status), 0);
    QVERIFY(S_ISSOCK(status.st_mode));
    QCOMPARE(int(status.st_mode & 0777), 0600);
}

void StageSocketTest::takesThePlaceOfADeadOne()
{
    m_daemon->kill();
    QVERIFY(QFileInfo::exists(file()));
    QVERIFY(start());
    QCOMPARE(StageClient(m_daemon->root()).ask(Look), QByteArray(AllAlive));
    QCOMPARE(m_daemon->process().errors(), QByteArray());
}

void StageSocketTest::takesThePlaceOfAFile()
{
    m_daemon->kill();
    QVERIFY(QFile::remove(file()));
    QFile planted(file());
    QVERIFY(planted.open(QIODevice::WriteOnly));
    planted.close();
    QVERIFY(start());
    QCOMPARE(StageClient(m_daemon->root()).ask(Look), QByteArray(AllAlive));
}

void StageSocketTest::comesBackWhenItIsRemoved()
{
    StageClient former(m_daemon->root());
    QCOMPARE(former.ask(Look), QByteArray(AllAlive));
    QVERIFY(QFile::remove(file()));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(file()), Patience);
    QCOMPARE(StageClient(m_daemon->root()).ask(Look), QByteArray(AllAlive));
    QCOMPARE(former.ask(Look), QByteArray(AllAlive));
}

void StageSocketTest::goesWithItsDaemon()
{
    QCOMPARE(m_daemon->process().terminate(), 0);
    QVERIFY(!QFileInfo::exists(file()));
}

void StageSocketTest::isOneForARoot()
{
    m_daemon->kill();
    const QString without = QStringLiteral("--without");
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {without, QStringLiteral("wifi")}));
    HostdProcess other;
    QVERIFY(
        other.start(m_daemon->root(), {without, QStringLiteral("networking"), without, QStringLiteral("tethering")}));
    QCOMPARE(other.errors(),
             QByteArray("morvek-hostd: nothing can be played or looked at here: another daemon serves it\n"));
    QCOMPARE(StageClient(m_daemon->root()).ask(Look),
             QByteArray(R"({"daemons":{"networking":"alive","tethering":"alive","wifi":"left out"},"done":true})"));
    // It looks again, more than once, and says nothing more.
    const QString wifi = m_daemon->root() + QLatin1String(WifiControl);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(QFile::remove(wifi));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(wifi), Patience);
    }
    QCOMPARE(other.errors().count('\n'), 1);
    QCOMPARE(m_daemon->process().terminate(), 0);
    const auto answer = [this] { return StageClient(m_daemon->root()).ask(Look); };
    QTRY_COMPARE_WITH_TIMEOUT(
        answer(),
        QByteArray(R"({"daemons":{"networking":"left out","tethering":"left out","wifi":"alive"},"done":true})"),
        Patience);
    QCOMPARE(other.terminate(), 0);
}

/*! An address has 107 bytes for the path of its socket. */
void StageSocketTest::isServedBelowALongPath()
{
    const QString root = m_daemon->root() + '/' + QString(200, QLatin1Char('x'));
    HostdProcess other;
    QVERIFY(other.start(root, {}));
    const auto ended = HostdProcess::run({QStringLiteral("look"), QStringLiteral("daemons")}, root);
    QCOMPARE(ended.errors, QByteArray());
    QVERIFY(ended.output.contains("alive"));
    QCOMPARE(ended.code, 0);
    QCOMPARE(other.errors(), QByteArray());
    QCOMPARE(other.terminate(), 0);
}

void StageSocketTest::anotherUserIsNotHeard()
{
    if (geteuid() != 0)
        return QTest::qSkip("only root can be another user, too", __FILE__, __LINE__);
    const QByteArray socketFile = QFile::encodeName(file());
    const QByteArray root = QFile::encodeName(m_daemon->root());
    const QByteArray folder = root.left(root.lastIndexOf('/'));
    for (const QByteArray &path : {folder, root, socketFile})
        QCOMPARE(chmod(path.constData(), 0777), 0);
    OtherUser other([&socketFile] {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::copy_n(socketFile.begin(), std::min(size_t(socketFile.size()), sizeof(address.sun_path) - 1),
                    address.sun_path);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
            return 1;
        char byte = 0;
        const QByteArray line = "{\"event\":\"radio-off\"}\n";
        send(socket, line.constData(), size_t(line.size()), MSG_NOSIGNAL);
        return recv(socket, &byte, 1, 0) == 0 || errno == ECONNRESET ? 0 : 2;
    });
    QCOMPARE(other.result(), 0);
    QCOMPARE(chmod(root.constData(), 0700), 0);
    QVERIFY(StageClient(m_daemon->root()).ask(Look).contains("done"));
    QVERIFY(!m_daemon->process().errors().contains("radio-off"));
}

void StageSocketTest::severalLinesAtOnce()
{
    StageClient client(m_daemon->root());
    client.send("{'event':'radio-off'}\n{'event':'radio-off'}\n{'event':'radio-on'}\n");
    QCOMPARE(client.answer(), QByteArray("{\"done\":true}"));
    QCOMPARE(client.answer(), refusal("the radio is off already"));
    QCOMPARE(client.answer(), QByteArray("{\"done\":true}"));
}

void StageSocketTest::aLineInPieces()
{
    StageClient client(m_daemon->root());
    StageClient other(m_daemon->root());
    client.send("{'look':");
    QCOMPARE(other.ask(Look), QByteArray(AllAlive));
    client.send("'daemons'}");
    QCOMPARE(other.ask(Look), QByteArray(AllAlive));
    QCOMPARE(client.socket.bytesAvailable(), qint64(0));
    client.send("\n");
    QCOMPARE(client.answer(), QByteArray(AllAlive));
}

void StageSocketTest::aLineWithoutAnEnd()
{
    StageClient client(m_daemon->root());
    client.send("{'event':'radio-on'}\n{'event':'radio-off'}");
    ::shutdown(int(client.socket.socketDescriptor()), SHUT_WR);
    QCOMPARE(client.answer(), refusal("the radio is on already"));
    QCOMPARE(client.answer(), refusal("the last line has no end"));
    QCOMPARE(client.answer(), QByteArray());
    QVERIFY(!m_daemon->process().errors().contains("radio-off"));
}

void StageSocketTest::theLongestLine()
{
    StageClient client(m_daemon->root());
    const QByteArray line = QByteArray(Look) + QByteArray(LongestLine - int(strlen(Look)), ' ');
    QCOMPARE(client.ask(line.constData()), QByteArray(AllAlive));
    QCOMPARE(client.ask(Look), QByteArray(AllAlive));
}

void StageSocketTest::aLineThatIsTooLong()
{
    StageClient client(m_daemon->root());
    const QByteArray line = QByteArray(Look) + QByteArray(LongestLine + 1 - int(strlen(Look)), ' ');
    QCOMPARE(client.ask(line.constData()), refusal("a line is longer than 256 KiB"));
    QCOMPARE(client.answer(), QByteArray());
    QCOMPARE(client.socket.state(), QLocalSocket::UnconnectedState);
}

void StageSocketTest::anEndlessLine()
{
    StageClient patient(m_daemon->root());
    patient.socket.write(QByteArray(LongestLine + 1, '['));
    QCOMPARE(patient.answer(), refusal("a line is longer than 256 KiB"));
    const qint64 before = memory();
    StageClient client(m_daemon->root());
    client.socket.write(QByteArray(64 * 1024 * 1024, '['));
    QCOMPARE(client.answer(), refusal("a line is longer than 256 KiB"));
    QVERIFY2(memory() - before < MostGrowth, qPrintable(QString::number(memory() - before)));
}

void StageSocketTest::bytesThatAreNoText()
{
    StageClient client(m_daemon->root());
    client.socket.write(QByteArray("\0\xff\xfe{\n", 5));
    QVERIFY(client.answer().startsWith(R"({"done":false,"reason":"line 1, column 1: )"));
    client.socket.write(QByteArray(10000, '[') + '\n');
    QVERIFY(client.answer().startsWith(R"({"done":false,"reason":"line 1, column )"));
    client.socket.write("{\"event\":\"\xff\xfe\"}\n");
    QVERIFY(client.answer().startsWith(R"({"done":false,)"));
    QCOMPARE(client.ask(Look), QByteArray(AllAlive));
}

void StageSocketTest::severalClients()
{
    StageClient one(m_daemon->root());
    StageClient two(m_daemon->root());
    one.send("{'event':'radio-off'}\n");
    QCOMPARE(one.answer(), QByteArray("{\"done\":true}"));
    QCOMPARE(two.act("{'event':'radio-off'}"), QStringLiteral("the radio is off already"));
    QCOMPARE(two.act("{'event':'radio-on'}"), QStringLiteral("done"));
    QCOMPARE(one.act("{'event':'radio-on'}"), QStringLiteral("the radio is on already"));
}

void StageSocketTest::tooManyClients()
{
    std::vector<std::unique_ptr<StageClient>> clients;
    for (int i = 0; i < 32; ++i) {
        clients.push_back(std::make_unique<StageClient>(m_daemon->root()));
        QCOMPARE(clients.back()->ask(Look), QByteArray(AllAlive));
    }
    StageClient late(m_daemon->root());
    QCOMPARE(late.answer(), refusal("32 clients are here already"));
    clients.pop_back();
    const auto isHeard = [this] { return StageClient(m_daemon->root()).ask(Look) == AllAlive; };
    QVERIFY(QTest::qWaitFor(isHeard, Patience));
}

void StageSocketTest::aClientThatDoesNotRead()
{
    StageClient other(m_daemon->root());
    const QByteArray large = "{'event':'set','interface':'eth0','attributes':{'x':'" + QByteArray(100000, 'x') + "'}}";
    QCOMPARE(other.act(large.constData()), QStringLiteral("done"));
    StageClient greedy(m_daemon->root());
    QByteArray looks;
    for (int i = 0; i < 400; ++i)
        looks += "{\"look\":\"objects\"}\n";
    greedy.socket.write(looks);
    greedy.socket.flush();
    const qint64 before = memory();
    // Each client has its turns: so many answers would wait for the one that does not read.
    for (int i = 0; i < 300; ++i)
        QVERIFY(other.look("objects").isObject());
    QVERIFY2(memory() - before < MostGrowth, qPrintable(QString::number(memory() - before)));
    // What it has not read it has not lost.
    for (int i = 0; i < 400; ++i)
        QVERIFY(greedy.answer().startsWith("{\"done\":true,\"objects\":"));
}

void StageSocketTest::aClientThatDisappears()
{
    for (int i = 0; i < 100; ++i) {
        StageClient client(m_daemon->root());
        client.send("{'look':'objects'}\n{'look':'all'}\n{'look'");
    }
    QCOMPARE(StageClient(m_daemon->root()).ask(Look), QByteArray(AllAlive));
}

void StageSocketTest::theDaemonDies()
{
    StageClient client(m_daemon->root());
    QCOMPARE(client.ask(Look), QByteArray(AllAlive));
    m_daemon->process().kill();
    QCOMPARE(client.answer(), QByteArray());
    QCOMPARE(client.socket.state(), QLocalSocket::UnconnectedState);
}

QTEST_GUILESS_MAIN(StageSocketTest)
#include "tst_stagesocket.moc"
