// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "krellogger.h"
#include "peer.h"
#include "rawclient.h"
#include "zopcontrolcommand.h"

#include <csignal>
#include <memory>
#include <vector>

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace morvek;

namespace {

constexpr int MiB = 1024 * 1024;
constexpr int Patience = 20000;

// An update of no attributes.
const QByteArray SmallFrame("\0\0\0\x04\0\0\0\0", 8);

/*! Where the control object stands; another process would call it differently. */
QByteArray place()
{
    return QFile::encodeName(fileOf(testFolder()));
}

/*! Turns the event loop, which serves the control object, while \a clients send; false when that takes too long. */
bool sendAll(RawClients &clients)
{
    QEventLoop loop;
    QTimer sending;
    QObject::connect(&sending, &QTimer::timeout, &loop, [&] {
        if (clients.sendMore())
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
        const RawClients clients(connections, folder);
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
    void initTestCase();
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

void CrowdTest::initTestCase()
{
    KrelLogger::setVerbosity(2); // the usual one
}

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
    int sent = greedy.send(bytes.constData(), bytes.size());
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
    RawClients clients(60, place(), QByteArray("\x01\0\0\0begun", 9));
    QVERIFY(sendAll(clients));
    // Another is heard behind them.
    ZopObject other(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY(set(other, QStringLiteral("msg=x id=1")));
    QVERIFY(requests.wait(QStringLiteral("msg=x")));
    const qint64 grown = heapInUse() - before;
    QVERIFY2(grown < 8 * MiB, qPrintable(QString::number(grown)));
    QCOMPARE(clients.open(), 60);
}

void CrowdTest::unfinishedRequestsTakeNoMoreThanThereIsForAll()
{
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const LogLines log;
    const qint64 before = heapInUse();
    RawClients clients(30, place(), QByteArray("\x01\0\0\0", 4) + QByteArray(15 * MiB, 'x'));
    QVERIFY(sendAll(clients));
    // Four of fifteen are within the 64 MiB, five are not.
    QVERIFY2(clients.open() <= 4, qPrintable(QString::number(clients.open())));
    QVERIFY(clients.open() > 0);
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
    RawClients clients(6, place(), SmallFrame);
    QVERIFY(sendAll(clients));
    QVERIFY(waitUntil([&requests] { return requests.updates().size() == 6; }));
    for (int peer = 1; peer <= 5; ++peer)
        QVERIFY(set(daemon, QStringLiteral("dat=12000000*x peer=%1").arg(peer)));
    QCOMPARE(clients.open(), 6);
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
    RawClients clients(30, place(), QByteArray("\x01\0\0\0", 4) + QByteArray(2 * MiB, 'x'));
    QVERIFY(sendAll(clients));
    QVERIFY(modest.ask(QStringLiteral("ask c echo 9000000*y"), QStringLiteral("c finished echo 0 9000000*y")));
    QVERIFY(clients.open() < 30);
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
            const RawClients clients(100, place());
            QVERIFY(waitUntil([&clients] { return clients.open() == 64; }));
            Peer other;
            QVERIFY(openClient(other));
            other.send(QStringLiteral("set c msg=x%1 id=1").arg(round));
            QVERIFY(waitUntil([&] { return requests.lines.contains(QStringLiteral("msg=x%1").arg(round)); }));
            QCOMPARE(clients.open(), 64);
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
