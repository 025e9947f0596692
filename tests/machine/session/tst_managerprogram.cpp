// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "fakemanager.h"
#include "privatebus.h"

#include <QtTest/QtTest>

#include <cstddef>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace morvek;

namespace {

/*! What a supervisor hears. */
class NotifySocket
{
public:
    explicit NotifySocket(const QByteArray &name)
        : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
        if (name.startsWith('@'))
            address.sun_path[0] = '\0';
        const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size()));
        if (bind(m_socket, reinterpret_cast<const sockaddr *>(&address), length) != 0)
            qFatal("no socket");
        qputenv("NOTIFY_SOCKET", name);
    }
    ~NotifySocket()
    {
        close(m_socket);
        qunsetenv("NOTIFY_SOCKET");
    }

    /*! What it is told next; nothing when that takes more than so many milliseconds. */
    QByteArray next(int patience = Patience) const
    {
        pollfd wanted {m_socket, POLLIN, 0};
        char bytes[64];
        const ssize_t size = poll(&wanted, 1, patience) == 1 ? recv(m_socket, bytes, sizeof bytes, MSG_DONTWAIT) : 0;
        return QByteArray(bytes, int(size));
    }

private:
    Q_DISABLE_COPY(NotifySocket)
    int m_socket;
};

const QStringList Managed {QStringLiteral("--network"), QStringLiteral("manager")};

} // namespace

/*! The program over a manager, as whoever starts it sees it: lines, exit codes, what systemd is told. */
class ManagerProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void noSuchInterface();
    void noRadio();
    void noAccessPoint();
    void noPermission_data();
    void radioThatComes();
    void noPermission();
    void protectsTheRemoteSession();
    void tellsItsSupervisor_data();
    void tellsItsSupervisor();

private:
    QString root() const { return m_folder->filePath(QStringLiteral("root")); }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeManager> m_manager;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void ManagerProgramTest::initTestCase()
{
    m_bus = std::make_unique<PrivateBus>();
    QCOMPARE(m_bus->errorString(), QString());
}

void ManagerProgramTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("ZOP_ROOT", root().toUtf8());
    m_manager = std::make_unique<FakeManager>();
    m_manager->addEthernet(QStringLiteral("eth0"));
}

void ManagerProgramTest::cleanup()
{
    m_manager.reset();
}

/*! One that is not there is told; it ends when none is. */
void ManagerProgramTest::noSuchInterface()
{
    QVERIFY(m_manager->start());
    const QStringList only = Managed + QStringList {QStringLiteral("--only"), QStringLiteral("eth7")};
    const HostdProcess::Ended ended = HostdProcess::run(only, root());
    QCOMPARE(ended.errors,
             QByteArray("morvek-hostd: --only: the manager knows no interface \"eth7\"\n"
                        "morvek-hostd: no radio: neither Wi-Fi nor a hotspot is served\n"
                        "morvek-hostd: no daemon is left to serve\n"));
    QCOMPARE(ended.code, 9);

    HostdProcess process;
    QVERIFY(process.start(root(), only + QStringList {QStringLiteral("--only"), QStringLiteral("eth0")}));
    QCOMPARE(process.terminate(), 0);
    QCOMPARE(process.errors(),
             QByteArray("morvek-hostd: --only: the manager knows no interface \"eth7\"\n"
                        "morvek-hostd: no radio: neither Wi-Fi nor a hotspot is served\n"));
}

void ManagerProgramTest::noRadio()
{
    QVERIFY(m_manager->start());
    const HostdProcess::Ended ended =
        HostdProcess::run(Managed + QStringList {QStringLiteral("--without"), QStringLiteral("networking")}, root());
    QCOMPARE(ended.errors,
             QByteArray("morvek-hostd: no radio: neither Wi-Fi nor a hotspot is served\n"
                        "morvek-hostd: no daemon is left to serve\n"));
    QCOMPARE(ended.code, 9);
}

void ManagerProgramTest::noAccessPoint()
{
    m_manager->addWifi(QStringLiteral("wlan0"),
                       {{QStringLiteral("WirelessCapabilities"), 0x17bfU}}); // all but access points
    QVERIFY(m_manager->start());
    HostdProcess process;
    QVERIFY(process.start(root(), Managed));
    QVERIFY(QFile::exists(root() + QLatin1String(WifiStatus)));
    QVERIFY(!QFile::exists(root() + QLatin1String(TetheringStatus)));
    QCOMPARE(process.terminate(), 0);
    QCOMPARE(process.errors(),
             QByteArray("morvek-hostd: no radio of this machine can be an access point: the tethering daemon is not "
                        "served\n"));
}

void ManagerProgramTest::noPermission_data()
{
    QTest::addColumn<QString>("permission");
    QTest::addRow("denied") << QStringLiteral("no");
    QTest::addRow("with somebody's password only") << QStringLiteral("auth");
}

/*! It is told once, and everything is served. */
/*! It is plugged in, then one that can be an access point, too. */
void ManagerProgramTest::radioThatComes()
{
    QVERIFY(m_manager->start());
    DaemonFixture daemon;
    QVERIFY(daemon.serve(Managed));
    const QVariantMap station {{QStringLiteral("WirelessCapabilities"), 0x17bfU}}; // no access point
    m_manager->addWifi(QStringLiteral("wlan0"), station);
    const QString root = daemon.root();
    const auto isThere = [&root](const char *object) { return QFile::exists(root + QLatin1String(object)); };
    QTRY_VERIFY_WITH_TIMEOUT(isThere(WifiControl), Patience);
    QCOMPARE(Seen(QLatin1String(WifiStatus)).text("wifi_power"), QStringLiteral("on"));
    QVERIFY(!isThere(TetheringControl));

    const QString second = m_manager->addWifi(QStringLiteral("wlan1"));
    QTRY_VERIFY_WITH_TIMEOUT(isThere(TetheringControl), Patience);
    QCOMPARE(Seen(QLatin1String(TetheringStatus)).text("state"), QStringLiteral("INACTIVE"));
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    const char ofHotspot[] = R"({"type":"lan","lan_type":"wlanap"})";
    const QByteArray profile = Request(&control, "retrieve_profile", ofHotspot).answer().toUtf8();
    QVERIFY(profile.contains("passphrase"));

    // It is served as if it had been there before, and goes on when the radio goes and comes.
    m_manager->setState(second, 10, 36);
    m_manager->removeDevice(second);
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(root + QLatin1String(Interfaces) + QStringLiteral("/wlan1")), Patience);
    QCOMPARE(Request(&control, "start", profile.constData()).outcome(),
             QStringLiteral("3 no radio is there that can be an access point"));
    const QString again = m_manager->addWifi(QStringLiteral("wlan1"));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(root + QLatin1String(Interfaces) + QStringLiteral("/wlan1")), Patience);
    const Request start(&control, "start", profile.constData());
    QVERIFY(m_manager->waitForCalls(QStringLiteral("AddAndActivateConnection2")));
    QCOMPARE(m_manager->calls(QStringLiteral("AddAndActivateConnection2")).first().pathAt(1), again);

    // The profile is stored: it has the same passphrase the next time.
    daemon.kill();
    QVERIFY(daemon.serve(Managed));
    ZopObject next(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&next, "retrieve_profile", ofHotspot).answer().toUtf8(), profile);
}

void ManagerProgramTest::noPermission()
{
    QFETCH(QString, permission);
    m_manager->addWifi(QStringLiteral("wlan0"));
    m_manager->setAnswer(QStringLiteral("GetPermissions"), [permission](const BusCall &) {
        const QMap<QString, QString> permissions {
            {QStringLiteral("org.freedesktop.NetworkManager.network-control"), permission}};
        return BusAnswer {{QVariant::fromValue(permissions)}, {}, {}};
    });
    QVERIFY(m_manager->start());
    HostdProcess process;
    QVERIFY(process.start(root(), Managed));
    const QByteArray line = "morvek-hostd: the manager does not let you change networks: requests will be refused\n";
    QTRY_COMPARE(process.errors(), line);
    m_manager->forgetCalls();
    m_manager->emitSignal(FakeManager::managerPath(), QStringLiteral("org.freedesktop.NetworkManager"),
                          QStringLiteral("CheckPermissions"));
    QVERIFY(m_manager->waitForCalls(QStringLiteral("GetPermissions")));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&control, "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
    QCOMPARE(process.terminate(), 0);
    QCOMPARE(process.errors(), line);
}

/*! The loopback's address tells nothing of what carries it: what the line goes on with depends on the machine. */
void ManagerProgramTest::protectsTheRemoteSession()
{
    QVERIFY(m_manager->start());
    qputenv("SSH_CONNECTION", "127.0.0.9 50022 127.0.0.1 22");
    const QStringList wired = Managed + QStringList {QStringLiteral("--without"), QStringLiteral("wifi")};
    const QByteArray noRadioLine = "morvek-hostd: no radio: neither Wi-Fi nor a hotspot is served\n";
    {
        HostdProcess process;
        QVERIFY(process.start(root(), wired));
        QCOMPARE(process.terminate(), 0);
        QVERIFY(process.errors().startsWith("morvek-hostd: your remote session is at 127.0.0.1, and "));
        QVERIFY(process.errors().endsWith(noRadioLine));
    }
    HostdProcess process;
    QVERIFY(process.start(root(), wired + QStringList(QStringLiteral("--force"))));
    QCOMPARE(process.terminate(), 0);
    QCOMPARE(process.errors(), noRadioLine);
    qunsetenv("SSH_CONNECTION");
}

void ManagerProgramTest::tellsItsSupervisor_data()
{
    QTest::addColumn<bool>("isAbstract");
    QTest::addRow("path") << false;
    QTest::addRow("name") << true;
}

/*! When it does, everything is published. */
void ManagerProgramTest::tellsItsSupervisor()
{
    QFETCH(bool, isAbstract);
    QVERIFY(m_manager->start());
    const QByteArray path = m_folder->filePath(QStringLiteral("notify")).toUtf8();
    const NotifySocket supervisor(isAbstract ? '@' + path : path);
    HostdProcess process;
    QVERIFY(process.start(root(), Managed));
    QCOMPARE(supervisor.next(), QByteArray("READY=1"));
    QVERIFY(QFile::exists(root() + QLatin1String(Interfaces) + QStringLiteral("/eth0")));
    QVERIFY(QFile::exists(root() + QLatin1String(Status)));
    QCOMPARE(process.terminate(), 0);
    QCOMPARE(supervisor.next(), QByteArray("STOPPING=1"));
    QCOMPARE(supervisor.next(0), QByteArray());
}

QTEST_GUILESS_MAIN(ManagerProgramTest)

#include "tst_managerprogram.moc"
