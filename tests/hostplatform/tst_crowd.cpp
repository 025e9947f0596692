// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "peer.h"
#include "zopcontrolcommand.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace morvek;

namespace {

constexpr int MiB = 1024 * 1024;
constexpr int Patience = 20000;

// An update of no attributes.
const QByteArray SmallFrame("\0\0\0\x04\0\0\0\0", 8);

/*! A client that does what it likes. */
class RawClient
{
public:
    explicit RawClient(const QByteArray &folder)
        : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        // Through the folder's descriptor, as an address is short.
        const int descriptor = open(folder.constData(), O_PATH | O_CLOEXEC);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof(address.sun_path), "/proc/self/fd/%d/control", descriptor);
        if (connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
            closeNow();
        close(descriptor);
    }
    RawClient(RawClient &&other) noexcept
        : m_socket(std::exchange(other.m_socket, -1))
    {
    }
    RawClient &operator=(RawClient &&other) = delete;
    ~RawClient() { closeNow(); }

    /*! Whether it was let in and not been put out. */
    bool isOpen() const
    {
        char byte = 0;
        const ssize_t size = m_socket == -1 ? 0 : recv(m_socket, &byte, 1, MSG_PEEK);
        return size > 0 || (size == -1 && errno == EAGAIN);
    }
    /*! Sends as many of \a bytes as can be sent at present; how many these are. */
    int send(const char *bytes, int size) const
    {
        const ssize_t sent = ::send(m_socket, bytes, size_t(size), MSG_NOSIGNAL);
        return int(qMax<ssize_t>(sent, 0));
    }
    int send(const QByteArray &bytes) const { return send(bytes.constData(), bytes.size()); }

private:
    void closeNow()
    {
        if (m_socket != -1)
            close(m_socket);
        m_socket = -1;
    }

    int m_socket;
};

using RawClients = std::vector<RawClient>;

/*! Where the control object stands; another process would call it differently. */
QByteArray place()
{
    return QFile::encodeName(fileOf(testFolder()));
}

RawClients rawClients(int count, const QByteArray &folder = place())
{
    RawClients clients;
    for (int i = 0; i < count; ++i)
        clients.emplace_back(folder);
    return clients;
}

int openOnes(const RawClients &clients)
{
    return int(std::count_if(clients.begin(), clients.end(), [](const RawClient &client) { return client.isOpen(); }));
}

/*! Lets each of \a clients send \a bytes, all at the same pace, until they have or have been put out. */
bool sendAll(const RawClients &clients, const QByteArray &bytes)
{
    std::vector<int> sent(clients.size(), 0);
    QEventLoop loop;
    QTimer sending;
    QObject::connect(&sending, &QTimer::timeout, &loop, [&] {
        bool isDone = true;
        for (size_t i = 0; i < clients.size(); ++i) {
            sent[i] += clients[i].send(bytes.constData() + sent[i], bytes.size() - sent[i]);
            isDone = isDone && (sent[i] == bytes.size() || !clients[i].isOpen());
        }
        if (isDone)
            loop.quit();
    });
    sending.start(0);
    QTimer::singleShot(Patience, &loop, [&loop] { loop.exit(1); });
    return loop.exec() == 0;
}

/*! What this process has from the heap, which a sanitizer does not tell. */
qint64 heapInUse()
{
    const auto info = mallinfo2();
    return qint64(info.uordblks) + qint64(info.hblkhd);
}

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot).size();
}

QStringList reportsOf(const LogLines &log)
{
    return log.lines.filter(QStringLiteral("Closed a connection of \"%1\", as ").arg(fileOf(testPath("control"))));
}

/*! A process that opens \a connections to the control object and keeps them. */
class Visitor
{
public:
    Visitor(int connections, const QByteArray &folder)
        : m_process(fork())
    {
        if (m_process != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const RawClients clients = rawClients(connections, folder);
        for (;;)
            pause();
    }
    ~Visitor()
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }

private:
    Q_DISABLE_COPY(Visitor)
    pid_t m_process;
};

} // namespace

/*! What one client can take from the others. */
class CrowdTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneClientsRequestsLetOthersIn_data();
    void oneClientsRequestsLetOthersIn();
    void whatIsAnnouncedCostsNothing();
    void unfinishedRequestsTakeNoMoreThanThereIsForAll();
    void unreadRepliesTakeNoMoreThanThereIsForAll();
    void theLargestClientMakesRoom();
    void aClientHasNoMoreThanItsConnections();
    void allClientsHaveNoMoreThanTheirConnections();
    void aReplyThatIsTooLargeIsARefusal_data();
    void aReplyThatIsTooLargeIsARefusal();
};

void CrowdTest::oneClientsRequestsLetOthersIn_data()
{
    QTest::addColumn<int>("payload");
    QTest::addColumn<int>("before"); // requests that may be told before another's
    QTest::newRow("the smallest") << 0 << 1000;
    QTest::newRow("larger ones") << 5000 << 100;
}

void CrowdTest::oneClientsRequestsLetOthersIn()
{
    QFETCH(int, payload);
    QFETCH(int, before);
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    int told = 0;
    int toldBefore = -1;
    connect(&daemon, &ZopObject::attributesChanged, this, [&](const ZopChangeset &request) {
        if (request.assignments.contains(QStringLiteral("msg")))
            toldBefore = told;
        ++told;
    });
    // One removal, or none.
    QByteArray frame = SmallFrame;
    if (payload > 0) {
        const char lengths[] = {
            0, 0, char((payload + 8) >> 8), char(payload + 8), 0, 0, 0, 0, char(payload), char(payload >> 8), 0, 0};
        frame = QByteArray(lengths, sizeof(lengths)) + QByteArray(payload, 'x');
    }
    const QByteArray bytes = frame.repeated(MiB / frame.size());
    const RawClient greedy(place());
    // What is on its way when the other one comes.
    int sent = greedy.send(bytes);
    QVERIFY2(payload > 0 || sent / frame.size() > 2 * before, qPrintable(QString::number(sent)));
    ZopObject other(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(set(other, QStringLiteral("msg=x id=1")));
    QEventLoop loop;
    QTimer::singleShot(Patience, &loop, &QEventLoop::quit);
    connect(&daemon, &ZopObject::attributesChanged, &loop, [&] {
        sent += greedy.send(bytes.constData() + sent, bytes.size() - sent);
        if (told == bytes.size() / frame.size() + 1)
            loop.quit();
    });
    loop.exec();
    QCOMPARE(told, bytes.size() / frame.size() + 1);
    QVERIFY2(toldBefore >= 0 && toldBefore < before, qPrintable(QString::number(toldBefore)));
}

void CrowdTest::whatIsAnnouncedCostsNothing()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    const qint64 before = heapInUse();
    const RawClients clients = rawClients(60);
    QVERIFY(sendAll(clients, QByteArray("\x01\0\0\0begun", 9)));
    // Another is heard behind them.
    ZopObject other(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(set(other, QStringLiteral("msg=x id=1")));
    QVERIFY(requests.wait(QStringLiteral("msg=x")));
    const qint64 grown = heapInUse() - before;
    QVERIFY2(grown < 8 * MiB, qPrintable(QString::number(grown)));
    QCOMPARE(openOnes(clients), 60);
}

void CrowdTest::unfinishedRequestsTakeNoMoreThanThereIsForAll()
{
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const LogLines log;
    const qint64 before = heapInUse();
    const RawClients clients = rawClients(30);
    QVERIFY(sendAll(clients, QByteArray("\x01\0\0\0", 4) + QByteArray(15 * MiB, 'x')));
    // Four of fifteen are within the 64 MiB, five are not.
    QVERIFY2(openOnes(clients) <= 4, qPrintable(QString::number(openOnes(clients))));
    QVERIFY(openOnes(clients) > 0);
    QCOMPARE(reportsOf(log).size(), 1);
    QVERIFY2(reportsOf(log).first().endsWith(QStringLiteral("as more than 64 MiB wait in all, most of it in those of "
                                                            "process %1")
                                                 .arg(QCoreApplication::applicationPid())),
             qPrintable(reportsOf(log).first()));
    const qint64 grown = heapInUse() - before;
    QVERIFY2(grown < 2 * 64 * MiB + 20 * MiB, qPrintable(QString::number(grown)));
}

void CrowdTest::unreadRepliesTakeNoMoreThanThereIsForAll()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    const LogLines log;
    const RawClients clients = rawClients(6);
    QVERIFY(sendAll(clients, SmallFrame));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 6; }));
    for (int peer = 1; peer <= 5; ++peer)
        QVERIFY(set(daemon, QStringLiteral("dat=12000000*x peer=%1").arg(peer)));
    QCOMPARE(openOnes(clients), 6);
    QCOMPARE(reportsOf(log).size(), 0);
    set(daemon, QStringLiteral("dat=12000000*x peer=6"));
    QCOMPARE(reportsOf(log).size(), 1);
    int gone = 0;
    for (int peer = 1; peer <= 6; ++peer)
        gone += set(daemon, QStringLiteral("more=1 peer=%1").arg(peer)) ? 0 : 1;
    QCOMPARE(gone, 1);
}

void CrowdTest::theLargestClientMakesRoom()
{
    Peer daemon;
    QVERIFY(serve(daemon));
    Peer modest;
    QVERIFY(openClient(modest));
    QVERIFY(modest.ask(QStringLiteral("ask c echo 1"), QStringLiteral("c finished echo 0 1")));
    // Each holds less than the other client is about to send.
    const RawClients clients = rawClients(30);
    QVERIFY(sendAll(clients, QByteArray("\x01\0\0\0", 4) + QByteArray(2 * MiB, 'x')));
    QVERIFY(modest.ask(QStringLiteral("ask c echo 9000000*y"), QStringLiteral("c finished echo 0 9000000*y")));
    QVERIFY(openOnes(clients) < 30);
    QCOMPARE(daemon.standardError().count("as more than 64 MiB wait in all"), 1);
}

void CrowdTest::aClientHasNoMoreThanItsConnections()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    const LogLines log;
    const int before = openDescriptors();
    for (int round = 1; round <= 2; ++round) {
        {
            const RawClients clients = rawClients(200);
            QVERIFY(waitUntil([&clients] { return openOnes(clients) == 64; }));
            Peer other;
            QVERIFY(openClient(other));
            other.send(QStringLiteral("set c msg=x%1 id=1").arg(round));
            QVERIFY(waitUntil([&] { return requests.lines.contains(QStringLiteral("msg=x%1").arg(round)); }));
            QCOMPARE(openOnes(clients), 64);
        }
        QVERIFY(waitUntil([before] { return openDescriptors() == before; }));
        QCOMPARE(reportsOf(log).size(), round); // anew, as it had none left
    }
    QVERIFY2(reportsOf(log).first().endsWith(
                 QStringLiteral("as its client, process %1, has 64 already").arg(QCoreApplication::applicationPid())),
             qPrintable(reportsOf(log).first()));
}

void CrowdTest::allClientsHaveNoMoreThanTheirConnections()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const LogLines log;
    const int before = openDescriptors();
    std::vector<std::unique_ptr<Visitor>> visitors;
    for (int i = 0; i < 6; ++i)
        visitors.push_back(std::make_unique<Visitor>(60, place()));
    QVERIFY(waitUntil([&log] { return !log.lines.isEmpty(); }));
    QCOMPARE(openDescriptors() - before, 256);
    visitors.clear();
    QVERIFY(waitUntil([before] { return openDescriptors() == before; }));
    QCOMPARE(reportsOf(log).size(), 1);
    QVERIFY(log.lines.first().endsWith(QLatin1String("as clients have 256 already")));
    Peer other;
    QVERIFY(openClient(other));
}

void CrowdTest::aReplyThatIsTooLargeIsARefusal_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QString>("answer");
    QTest::newRow("a reply") << "res=x id=7 dat=17000000*x"
                             << "{err=-1 errmsg=the reply is larger than 16 MiB id=7 res=x}";
    QTest::newRow("without a name") << "id=7 dat=17000000*x"
                                    << "{err=-1 errmsg=the reply is larger than 16 MiB id=7 res=}";
}

void CrowdTest::aReplyThatIsTooLargeIsARefusal()
{
    QFETCH(QString, reply);
    QFETCH(QString, answer);
    const QString path = testPath(QTest::currentDataTag());
    ZopObject daemon(path, ZopObject::Publish, true);
    const Events requests(&daemon);
    ZopObject client(path, ZopObject::ReadWrite, false);
    const Events events(&client);
    QVERIFY(set(client, QStringLiteral("msg=x id=7")));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 1; }));
    QVERIFY(!set(daemon, reply + QStringLiteral(" peer=1")));
    QCOMPARE(daemon.errorString(), QStringLiteral("the reply is larger than 16 MiB"));
    QVERIFY(events.wait(answer));
    // The connection is as good as before.
    QVERIFY(set(daemon, QStringLiteral("res=x id=8 peer=1")));
    QVERIFY(events.wait(QStringLiteral("{id=8 res=x}")));
}

CONTRACT_TEST_MAIN(CrowdTest)

#include "tst_crowd.moc"
