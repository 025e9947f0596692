// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "zopdirwatcher.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

/*! A shell in a network namespace of its own, where it may do what it likes to interfaces. */
class Namespace
{
public:
    ~Namespace()
    {
        if (m_shell.state() != QProcess::NotRunning) {
            run("kill -CONT $hostd; kill $hostd; wait $hostd");
            m_shell.closeWriteChannel();
            m_shell.waitForFinished(Patience);
        }
    }

    /*! Empty when namespaces are permitted, else why they are not. */
    static QString obstacle()
    {
        QProcess process;
        process.start(QStringLiteral("unshare"), {QStringLiteral("-rn"), QStringLiteral("true")});
        if (!process.waitForFinished(Patience))
            return process.errorString();
        return process.exitCode() == 0 ? QString() : QString::fromLocal8Bit(process.readAllStandardError());
    }

    void open()
    {
        m_shell.setProcessChannelMode(QProcess::MergedChannels);
        m_shell.start(QStringLiteral("unshare"), {QStringLiteral("-rn"), QStringLiteral("sh")});
    }

    /*! Runs one line to its end; its output without the last line break, and its exit code in \a code. */
    QByteArray run(const QByteArray &line, int *code = nullptr)
    {
        m_shell.write(line + "\necho \"<$?>\"\n");
        QByteArray output;
        int end = -1;
        while ((end = output.indexOf(">\n")) == -1) {
            if (!m_shell.waitForReadyRead(Patience))
                return output + "(the shell is gone)";
            output += m_shell.readAll();
        }
        const int begin = output.lastIndexOf('<', end);
        if (code)
            *code = output.mid(begin + 1, end - begin - 1).toInt();
        return output.left(begin).trimmed();
    }

    bool succeeds(const QByteArray &line)
    {
        int code = -1;
        const QByteArray output = run(line, &code);
        if (code != 0)
            qInfo("%s: %s", line.constData(), output.constData());
        return code == 0;
    }

private:
    QProcess m_shell;
};

} // namespace

/*! The mirror of the machine's interfaces. All of it happens in a namespace that starts with a loopback only. */
class SystemNetworkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void loopback();
    void interfacesComeAndGo();
    void addresses();
    void lifetimeTellsLeaseFromHand();
    void tellsEachChangeOnce();
    void routes();
    void routesOfBothFamilies();
    void routesThatLeadNowhere();
    void routesOverSeveralWays();
    void parents();
    void isReadOnly();
    void survivesLostNotifications();

private:
    bool addInterface(const QByteArray &name);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<Namespace> m_namespace;
    std::unique_ptr<ZopDirWatcher> m_watcher;
    QStringList m_told;
};

void SystemNetworkTest::initTestCase()
{
    const QString obstacle = Namespace::obstacle();
    // The macro for this does not compile without warnings under Clang.
    if (!obstacle.isEmpty())
        QTest::qSkip(qPrintable(QStringLiteral("network namespaces are not permitted here: ") + obstacle), __FILE__,
                     __LINE__);
}

void SystemNetworkTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    qputenv("ZOP_ROOT", QFile::encodeName(m_root->path()));
    m_namespace = std::make_unique<Namespace>();
    m_namespace->open();
    QVERIFY(m_namespace->succeeds("ip link show lo"));
    // The line that tells that it is ready goes through a pipe of its own, and head waits for it.
    const QByteArray hostd =
        HostdProcess::program().toUtf8() + " --interfaces system --root " + m_root->path().toUtf8();
    const QByteArray fifo = m_root->path().toUtf8() + "/.ready";
    QVERIFY(m_namespace->succeeds("mkfifo " + fifo));
    m_namespace->run(hostd + " >" + fifo + " & hostd=$!");
    QCOMPARE(m_namespace->run("head -n 1 " + fifo), "ready: " + m_root->path().toUtf8());

    m_told.clear();
    m_watcher = std::make_unique<ZopDirWatcher>(QLatin1String(Interfaces));
    connect(m_watcher.get(), &ZopDirWatcher::objectAdded, this,
            [this](const QString &name) { m_told += QLatin1Char('+') + name; });
    connect(m_watcher.get(), &ZopDirWatcher::objectRemoved, this,
            [this](const QString &name) { m_told += QLatin1Char('-') + name; });
    m_watcher->setNameCacheEnabled(true);
}

void SystemNetworkTest::cleanup()
{
    m_watcher.reset();
    m_namespace.reset();
    m_root.reset();
}

/*! Adds an interface that is up, of whichever kind the kernel has, without addresses that come by themselves. */
bool SystemNetworkTest::addInterface(const QByteArray &name)
{
    const QByteArray add = "(ip link add " + name + " type dummy 2>/dev/null || ip link add " + name
        + " type veth peer name " + name + "peer)";
    const QByteArray raise = "ip link set " + name + " addrgenmode none && ip link set " + name
        + " up && (! ip link show " + name + "peer >/dev/null 2>&1 || (ip link set " + name
        + "peer addrgenmode none && ip link set " + name + "peer up))";
    if (!m_namespace->succeeds(add + " && " + raise))
        return false;
    const QString told = QLatin1Char('+') + QString::fromLatin1(name);
    if (!QTest::qWaitFor([this, told] { return m_told.contains(told); }, Patience))
        return false;
    const Seen interface(interfacePath(name.constData()));
    return QTest::qWaitFor([&interface] { return interface.text("up") == QLatin1String("true"); }, Patience);
}

void SystemNetworkTest::loopback()
{
    QCOMPARE(m_told, QStringList {QStringLiteral("+lo")});
    const Seen lo(interfacePath("lo"));
    QCOMPARE(lo.text("type"), QStringLiteral("loopback"));
    QCOMPARE(lo.text("mtu"), QStringLiteral("65536"));
    QCOMPARE(lo.text("up"), QStringLiteral("false"));
    QCOMPARE(lo.text("connected"), QStringLiteral("false"));
    QCOMPARE(lo.text("ip_addresses"), QStringLiteral("[]"));
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QString());
    QCOMPARE(status.text("priority"), QStringLiteral("[\"lo\"]"));
}

void SystemNetworkTest::interfacesComeAndGo()
{
    QVERIFY(addInterface("m0"));
    const Seen m0(interfacePath("m0"));
    QCOMPARE(m0.text("type"), QStringLiteral("wired"));
    QCOMPARE(m0.text("mtu"), QStringLiteral("1500"));
    QVERIFY(!m0.object.attribute(QStringLiteral("parent_interface")).isValid());
    QVERIFY(m_namespace->succeeds("ip link set m0 address 02:00:00:00:00:AB mtu 1400"));
    QTRY_COMPARE(m0.text("link_address"), QStringLiteral("02:00:00:00:00:ab"));
    QTRY_COMPARE(m0.text("mtu"), QStringLiteral("1400"));
    QVERIFY(m_namespace->succeeds("ip link set m0 down"));
    QTRY_COMPARE(m0.text("up"), QStringLiteral("false"));
    QVERIFY(m_namespace->succeeds("ip link del m0"));
    QTRY_VERIFY(m_told.contains(QStringLiteral("-m0")));
    const Seen status {QLatin1String(Status)};
    QTRY_COMPARE(status.text("priority"), QStringLiteral("[\"lo\"]"));
}

void SystemNetworkTest::addresses()
{
    QVERIFY(addInterface("m0"));
    const Seen m0(interfacePath("m0"));
    QCOMPARE(m0.text("connected"), QStringLiteral("false"));
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.2.3/20 dev m0"));
    QTRY_COMPARE(m0.text("ip_addresses"), QStringLiteral("[\"10.1.2.3/255.255.240.0\"]"));
    QCOMPARE(m0.text("connected"), QStringLiteral("true"));
    QVERIFY(m_namespace->succeeds("ip addr add fd00::7/64 dev m0 nodad"));
    QTRY_COMPARE(m0.text("ip_addresses"), QStringLiteral("[\"10.1.2.3/255.255.240.0\",\"fd00::7/64\"]"));
    QVERIFY(m_namespace->succeeds("ip addr del 10.1.2.3/20 dev m0"));
    QTRY_COMPARE(m0.text("ip_addresses"), QStringLiteral("[\"fd00::7/64\"]"));
    QVERIFY(m_namespace->succeeds("ip addr flush dev m0"));
    QTRY_COMPARE(m0.text("ip_addresses"), QStringLiteral("[]"));
    QCOMPARE(m0.text("connected"), QStringLiteral("false"));
}

void SystemNetworkTest::lifetimeTellsLeaseFromHand()
{
    QVERIFY(addInterface("m0"));
    const Seen m0(interfacePath("m0"));
    QCOMPARE(m0.text("manual"), QStringLiteral("no"));
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.2.3/24 dev m0"));
    QTRY_COMPARE(m0.text("manual"), QStringLiteral("yes"));
    QVERIFY(m_namespace->succeeds("ip addr change 10.1.2.3/24 dev m0 valid_lft 3600 preferred_lft 3600"));
    QTRY_COMPARE(m0.text("manual"), QStringLiteral("no"));
}

void SystemNetworkTest::tellsEachChangeOnce()
{
    QVERIFY(addInterface("m0"));
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.2.3/24 dev m0"));
    const Seen m0(interfacePath("m0"));
    QTRY_COMPARE(m0.text("connected"), QStringLiteral("true"));
    const int before = m0.updates.count();
    // The kernel notifies of each of these, but nothing that is published changes until the last.
    QVERIFY(m_namespace->succeeds("ip addr replace 10.1.2.3/24 dev m0"));
    QVERIFY(m_namespace->succeeds("ip link set m0 txqueuelen 77"));
    QVERIFY(m_namespace->succeeds("ip link set m0 alias nobody"));
    QVERIFY(m_namespace->succeeds("ip link set m0 mtu 1300"));
    QTRY_COMPARE(m0.text("mtu"), QStringLiteral("1300"));
    QCOMPARE(m0.updates.count(), before + 1);
    const auto changes = m0.updates.last().first().value<ZopChangeset>();
    QCOMPARE(changes.assignments.keys(), QStringList {QStringLiteral("mtu")});
    QVERIFY(changes.removals.isEmpty());
}

void SystemNetworkTest::routes()
{
    QVERIFY(addInterface("m0"));
    QVERIFY(addInterface("m1"));
    const Seen status {QLatin1String(Status)};
    const Seen m0(interfacePath("m0"));
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.0.2/24 dev m0 && ip addr add 10.2.0.2/24 dev m1"));
    QVERIFY(m_namespace->succeeds("ip route add default via 10.1.0.1 dev m0 metric 200"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m0"));
    QTRY_COMPARE(m0.text("ip_gateway"), QStringLiteral("[\"10.1.0.1\"]"));
    QVERIFY(m_namespace->succeeds("ip route add default via 10.2.0.1 dev m1 metric 100"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m1"));
    QVERIFY2(status.text("priority").startsWith(QStringLiteral("[\"m1\",\"m0\",\"lo\"")),
             qPrintable(status.text("priority")));
    QVERIFY(m_namespace->succeeds("ip route add default via 10.1.0.9 dev m0 metric 50"));
    QTRY_COMPARE(m0.text("ip_gateway"), QStringLiteral("[\"10.1.0.9\",\"10.1.0.1\"]"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m0"));
    QVERIFY(m_namespace->succeeds("ip route del default metric 50 && ip route del default metric 100 && "
                                  "ip route del default metric 200"));
    QTRY_COMPARE(status.text("default_interface"), QString());
    QTRY_COMPARE(m0.text("ip_gateway"), QStringLiteral("[]"));
}

void SystemNetworkTest::routesOfBothFamilies()
{
    QVERIFY(addInterface("m0"));
    QVERIFY(addInterface("m1"));
    const Seen status {QLatin1String(Status)};
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.0.2/24 dev m0 && ip addr add fd00::2/64 dev m1 nodad"));
    QVERIFY(m_namespace->succeeds("ip -6 route add default dev m1 metric 20"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m1"));
    QVERIFY(m_namespace->succeeds("ip route add default via 10.1.0.1 dev m0 metric 200"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m0"));
    QVERIFY2(status.text("priority").startsWith(QStringLiteral("[\"m0\",\"m1\",\"lo\"")),
             qPrintable(status.text("priority")));
    QVERIFY(m_namespace->succeeds("ip route del default"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m1"));
    QVERIFY(m_namespace->succeeds("ip -6 route del default"));
    QTRY_COMPARE(status.text("default_interface"), QString());
}

/*! Those in tables of their own, those that refuse, those to something else, those whose link is gone. */
void SystemNetworkTest::routesThatLeadNowhere()
{
    QVERIFY(addInterface("m0"));
    QVERIFY(addInterface("m1"));
    const Seen status {QLatin1String(Status)};
    const Seen m0(interfacePath("m0"));
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.0.2/24 dev m0 && ip addr add 10.2.0.2/24 dev m1"));
    QVERIFY(m_namespace->succeeds("ip route add default via 10.1.0.1 dev m0 metric 5 table 100"));
    QVERIFY(m_namespace->succeeds("ip route add 10.9.0.0/16 via 10.1.0.1 dev m0 metric 5"));
    QVERIFY(m_namespace->succeeds("ip -6 route add unreachable default metric 5"));
    // What is told after them is told without them.
    QVERIFY(m_namespace->succeeds("ip route add default via 10.2.0.1 dev m1 metric 100"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m1"));
    QVERIFY2(status.text("priority").startsWith(QStringLiteral("[\"m1\",\"lo\"")), qPrintable(status.text("priority")));
    QCOMPARE(m0.text("ip_gateway"), QStringLiteral("[]"));
    QVERIFY(m_namespace->succeeds("ip link set m1peer down || ip link set m1 carrier off"));
    QTRY_COMPARE(status.text("default_interface"), QString());
}

void SystemNetworkTest::routesOverSeveralWays()
{
    QVERIFY(addInterface("m0"));
    QVERIFY(addInterface("m1"));
    const Seen status {QLatin1String(Status)};
    const Seen m0(interfacePath("m0"));
    const Seen m1(interfacePath("m1"));
    QVERIFY(m_namespace->succeeds("ip addr add 10.1.0.2/24 dev m0 && ip addr add 10.2.0.2/24 dev m1"));
    QVERIFY(m_namespace->succeeds("ip route add default via 10.1.0.9 dev m0 metric 200"));
    QVERIFY(m_namespace->succeeds("ip route add default metric 100 nexthop via 10.2.0.1 dev m1 "
                                  "nexthop via 10.1.0.1 dev m0"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m1"));
    QVERIFY2(status.text("priority").startsWith(QStringLiteral("[\"m1\",\"m0\",\"lo\"")),
             qPrintable(status.text("priority")));
    QCOMPARE(m1.text("ip_gateway"), QStringLiteral("[\"10.2.0.1\"]"));
    QCOMPARE(m0.text("ip_gateway"), QStringLiteral("[\"10.1.0.1\",\"10.1.0.9\"]"));
    QVERIFY(m_namespace->succeeds("ip link set m1peer down || ip link set m1 carrier off"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("m0"));
    QCOMPARE(m1.text("ip_gateway"), QStringLiteral("[]"));
}

void SystemNetworkTest::parents()
{
    QVERIFY(addInterface("m0"));
    QVERIFY(m_namespace->succeeds("ip link add link m0 name m0.5 type vlan id 5 2>/dev/null || "
                                  "ip link add link m0 name m0.5 type macvlan"));
    QTRY_VERIFY(m_told.contains(QStringLiteral("+m0.5")));
    QCOMPARE(Seen(interfacePath("m0.5")).text("parent_interface"), QStringLiteral("m0"));
    // The other end of a pair is none.
    QVERIFY(m_namespace->succeeds("ip link add m1 type veth peer name m2"));
    QTRY_VERIFY(m_told.contains(QStringLiteral("+m1")) && m_told.contains(QStringLiteral("+m2")));
    QVERIFY(!Seen(interfacePath("m1")).has("parent_interface"));
    QVERIFY(!Seen(interfacePath("m2")).has("parent_interface"));
}

void SystemNetworkTest::isReadOnly()
{
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QCOMPARE(Request(&control, "net_disconnected", "'lo'").outcome(),
             QStringLiteral("6 the machine's own interfaces are only shown, not configured"));
    QCOMPARE(Request(&control, "net_disconnected", "'wlan9'").outcome(), QStringLiteral("3 no interface \"wlan9\""));
}

void SystemNetworkTest::survivesLostNotifications()
{
    QVERIFY(addInterface("m0"));
    const Seen m0(interfacePath("m0"));
    const QByteArray batch = m_root->path().toUtf8() + "/.batch";
    QFile file(QString::fromUtf8(batch));
    QVERIFY(file.open(QIODevice::WriteOnly));
    // More than the socket of a stopped process can hold; what counts comes last.
    for (int i = 0; i < 1500; ++i)
        file.write("link set m0 mtu " + QByteArray::number(1000 + i % 2) + "\n");
    file.write("link set m0 mtu 1234\n");
    file.close();
    QVERIFY(m_namespace->succeeds("kill -STOP $hostd && ip -batch " + batch));
    // The column before the last counts what the kernel had to drop.
    QVERIFY(m_namespace->run("awk '{ dropped += $9 } END { print dropped }' /proc/net/netlink").toInt() > 0);
    QVERIFY(m_namespace->succeeds("kill -CONT $hostd"));
    QTRY_COMPARE(m0.text("mtu"), QStringLiteral("1234"));
    QVERIFY(m_namespace->succeeds("ip link set m0 mtu 1235"));
    QTRY_COMPARE(m0.text("mtu"), QStringLiteral("1235"));
}

QTEST_GUILESS_MAIN(SystemNetworkTest)
#include "tst_systemnetwork.moc"
