// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "hotspotservice.h"
#include "namedinterface.h"
#include "networkinterfaceservice.h"
#include "nowaiting.h"
#include "servicepointer.h"
#include "watched.h"
#include "wificonnectionconfig.h"
#include "wifiservice.h"

#include <QtCore/QDirIterator>
#include <QtCore/QThread>
#include <QtNetwork/QLocalSocket>

#include <array>
#include <csignal>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace morvek;

namespace {

using Configure = Watched<AsyncNetworkInterfaceOperation>;
using Connect = Watched<AsyncWifiConnectOperation>;
using Scan = Watched<AsyncWifiScanOperation>;
using Profile = Watched<AsyncHotspotConfigOperation>;
using Switch = Watched<AsyncHotspotEnableOperation>;

enum Daemon { Networking, Wifi, Tethering };

constexpr std::array<const char *, 3> Names = {"networking", "wifi", "tethering"};

NetworkInterfaceConfig manual()
{
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QStringLiteral("10.20.0.77")));
    entry.setNetmask(QHostAddress(QStringLiteral("255.255.0.0")));
    NetworkInterfaceConfig config;
    config.setType(NetworkInterfaceConfig::Manual);
    config.addIpAddress(entry);
    config.addGatewayAddress(QHostAddress(QStringLiteral("10.20.0.1")));
    return config;
}

WifiConnectionConfig open(const QString &ssid)
{
    WifiConnectionConfig config;
    config.setSsid(ssid);
    return config;
}

QString megabyte()
{
    return QString(1024 * 1024, QLatin1Char('m'));
}

WifiHotspot hugeProfile()
{
    WifiHotspot profile;
    profile.setName(megabyte());
    profile.setPassphrase(QStringLiteral("long enough"));
    profile.setMaxClients(5);
    profile.setInactivityTime(60);
    return profile;
}

/*! The three services of one application. */
struct Application
{
    bool waitUntilReady() const
    {
        return QTest::qWaitFor([this] { return interfaces->ready() && wifi->ready() && hotspot->ready(); }, Patience);
    }

    NetworkInterfaceServicePointer interfaces {newNetworkInterfaceService()};
    WifiServicePointer wifi {newWifiService()};
    HotSpotServicePointer hotspot {newHotSpotService()};
};

/*! A request to each daemon, in the order of Daemon. */
struct Requests
{
    explicit Requests(const Application &application)
        : configure(application.interfaces->configure(named(*application.interfaces, "eth0"), manual())),
          scan(application.wifi->scan()),
          fetch(application.hotspot->configuration())
    {
    }

    QString outcome(int daemon)
    {
        return daemon == Networking ? configure.outcome() : daemon == Wifi ? scan.outcome() : fetch.outcome();
    }
    bool isOpen(int daemon) const
    {
        return daemon == Networking ? configure.isOpen() : daemon == Wifi ? scan.isOpen() : fetch.isOpen();
    }

    Configure configure;
    Scan scan;
    Profile fetch;
};

/*! How often \a operations have ended, each counted as often as it did. */
template<typename Operation>
int ends(const std::vector<std::unique_ptr<Watched<Operation>>> &operations)
{
    int count = 0;
    for (const auto &operation : operations)
        count += operation->success.count() + operation->failure.count();
    return count;
}

} // namespace

/*!
 * Applications beside a daemon that stands still. A call that waited for the daemon would never return, as the daemon
 * goes on only when all calls have returned; one that waited for a while only would use a system call that waits.
 */
class StalledDaemonsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void waitingIsNoticed();
    void theOthersGoOn_data();
    void theOthersGoOn();
    void everyCallReturns_data();
    void everyCallReturns();
    void standsInTheMiddleOfAnUpdate_data();
    void standsInTheMiddleOfAnUpdate();
    void moreRequestsThanTheConnectionHolds();
    void moreProfilesThanTheConnectionHolds();
    void moreNetworksThanTheConnectionHolds();

private:
    bool stall(int daemon);
    bool goOn(int daemon);
    bool signal(int daemon, int number, char state);

    std::unique_ptr<DaemonFixture> m_root;
    std::array<std::unique_ptr<HostdProcess>, 3> m_daemons;
};

void StalledDaemonsTest::init()
{
    m_root = std::make_unique<DaemonFixture>();
    QVERIFY(m_root->makeRoot());
    for (size_t daemon = 0; daemon < Names.size(); ++daemon) {
        QStringList arguments {QStringLiteral("--speed"), QStringLiteral("20")};
        for (size_t other = 0; other < Names.size(); ++other) {
            if (other != daemon)
                arguments << QStringLiteral("--without") << QLatin1String(Names[other]);
        }
        m_daemons[daemon] = std::make_unique<HostdProcess>();
        QVERIFY(m_daemons[daemon]->start(m_root->root(), arguments));
    }
}

void StalledDaemonsTest::cleanup()
{
    for (auto &daemon : m_daemons)
        daemon.reset();
    m_root.reset();
}

bool StalledDaemonsTest::stall(int daemon)
{
    return signal(daemon, SIGSTOP, 'T');
}

bool StalledDaemonsTest::goOn(int daemon)
{
    return signal(daemon, SIGCONT, 0);
}

/*! Sends the signal, and waits until the process is in \a state, if that is given. */
bool StalledDaemonsTest::signal(int daemon, int number, char state)
{
    const auto process = pid_t(m_daemons[size_t(daemon)]->processId());
    if (process <= 0 || ::kill(process, number) != 0)
        return false;
    return QTest::qWaitFor([process, state] {
        QFile status(QStringLiteral("/proc/%1/stat").arg(process));
        return status.open(QIODevice::ReadOnly) && (!state || status.readAll().contains(") T "));
    });
}

/*! Of this test itself: what it would notice. */
void StalledDaemonsTest::waitingIsNoticed()
{
    QLocalSocket socket;
    QVERIFY(NoWaiting::take().isEmpty());
    const NoWaiting watched;
    socket.connectToServer(m_root->root() + QStringLiteral("/zop/services/wifi/control"));
    QVERIFY(!socket.waitForReadyRead(1));
    QVERIFY(!NoWaiting::take().isEmpty());
    QThread::usleep(1);
    QVERIFY(!NoWaiting::take().isEmpty());
}

void StalledDaemonsTest::theOthersGoOn_data()
{
    QTest::addColumn<int>("stalled");
    for (int daemon : {Networking, Wifi, Tethering})
        QTest::newRow(Names[size_t(daemon)]) << daemon;
}

void StalledDaemonsTest::theOthersGoOn()
{
    QFETCH(int, stalled);
    const Application application;
    QVERIFY(application.waitUntilReady());
    QVERIFY(stall(stalled));
    Requests requests(application);
    for (const int daemon : {Networking, Wifi, Tethering}) {
        if (daemon != stalled)
            QCOMPARE(requests.outcome(daemon), QStringLiteral("ok"));
    }
    QVERIFY(requests.isOpen(stalled));
    QVERIFY(goOn(stalled));
    QCOMPARE(requests.outcome(stalled), QStringLiteral("ok"));
}

void StalledDaemonsTest::everyCallReturns_data()
{
    theOthersGoOn_data();
}

void StalledDaemonsTest::everyCallReturns()
{
    QFETCH(int, stalled);
    QVERIFY(stall(stalled));
    // Made while the daemon stands: what it has published is there, and it is connected to without its doing.
    auto watched = std::make_unique<NoWaiting>();
    auto application = std::make_unique<Application>();
    QVERIFY(application->interfaces->ready());
    watched.reset();
    QVERIFY(application->waitUntilReady());
    watched = std::make_unique<NoWaiting>();
    QCOMPARE(application->interfaces->interfaces().size(), 4);
    QCOMPARE(application->interfaces->preferredInterface().name(), QStringLiteral("wlan0"));
    QVERIFY(application->wifi->powered());
    QVERIFY(application->wifi->connected());
    QCOMPARE(application->wifi->connectedAccessPoint().ssid(), QStringLiteral("Home"));
    QVERIFY(!application->hotspot->enabled());

    Requests requests(*application);
    Connect first(application->wifi->connectAccessPoint(open(QStringLiteral("Car Wash"))));
    Connect second(application->wifi->connectAccessPoint(open(QStringLiteral("Car Wash"))));
    application->wifi->disconnectAccessPoint();
    application->wifi->powerOn();
    Switch on(application->hotspot->setEnabled(true));
    Switch off(application->hotspot->setEnabled(false));
    Profile update(application->hotspot->setConfiguration(hugeProfile()));
    Profile another(application->hotspot->setConfiguration(hugeProfile()));
    watched.reset();
    QCOMPARE(second.outcome(), QStringLiteral("-1 Another connect operation in progress."));
    QCOMPARE(first.outcome(), QStringLiteral("-1 Cancelling connect operation, due to issued disconnect command"));
    QVERIFY(requests.isOpen(stalled));
    watched = std::make_unique<NoWaiting>();
    application.reset();
    watched.reset();
    QCOMPARE(NoWaiting::take(), QByteArrayList());

    // Who comes next finds everything as it was.
    const Application next;
    QVERIFY(next.waitUntilReady());
    Requests later(next);
    QVERIFY(goOn(stalled));
    for (const int daemon : {Networking, Wifi, Tethering})
        QVERIFY2(later.outcome(daemon) != QLatin1String("open"), Names[size_t(daemon)]);
}

void StalledDaemonsTest::standsInTheMiddleOfAnUpdate_data()
{
    theOthersGoOn_data();
}

void StalledDaemonsTest::standsInTheMiddleOfAnUpdate()
{
    QFETCH(int, stalled);
    const Application application;
    QVERIFY(application.waitUntilReady());
    QVERIFY(stall(stalled));
    // As if it had been stopped between taking an object's lock and letting go of it, whichever object it was.
    std::vector<int> locked;
    const auto letGo = [&locked] {
        for (const int file : locked)
            close(file);
        locked.clear();
    };
    QDirIterator files(m_root->root() + QStringLiteral("/zop"), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const int file = ::open(QFile::encodeName(files.next()).constData(), O_RDWR | O_CLOEXEC);
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_len = 1; // the byte that writers lock
        // A daemon may be writing it just now; the one that stands may hold the lock itself.
        (void)QTest::qWaitFor([file, &lock] { return fcntl(file, F_OFD_SETLK, &lock) == 0; }, 1000);
        locked.push_back(file);
    }
    QVERIFY(locked.size() >= 7); // three status objects and four interfaces

    auto watched = std::make_unique<NoWaiting>();
    Requests requests(application);
    application.wifi->powerOff();
    const Application late;
    watched.reset();
    QCOMPARE(NoWaiting::take(), QByteArrayList());
    QVERIFY(late.waitUntilReady());
    QCOMPARE(late.interfaces->interfaces().size(), 4);
    QVERIFY(late.wifi->connected());
    QVERIFY(requests.isOpen(stalled));
    letGo();
    QVERIFY(goOn(stalled));
    QCOMPARE(requests.outcome(Networking), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(!application.wifi->powered(), Patience);
}

void StalledDaemonsTest::moreRequestsThanTheConnectionHolds()
{
    const Application application;
    QVERIFY(application.waitUntilReady());
    const NetworkInterface eth0 = named(*application.interfaces, "eth0");
    QVERIFY(stall(Networking));
    constexpr int Count = 1000; // the kernel takes some three hundred
    std::vector<std::unique_ptr<Configure>> requests;
    for (int i = 0; i < Count; ++i)
        requests.push_back(std::make_unique<Configure>(application.interfaces->configure(eth0, manual())));
    Scan scan(application.wifi->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QCOMPARE(ends(requests), 0);
    QVERIFY(goOn(Networking));
    QTRY_COMPARE_WITH_TIMEOUT(ends(requests), Count, Patience);
    // The last of the replies may come before the update that tells what it has brought about.
    QTRY_VERIFY_WITH_TIMEOUT(named(*application.interfaces, "eth0").configuration() == manual(), Patience);
    Configure back(application.interfaces->configure(named(*application.interfaces, "eth0"), {}));
    QCOMPARE(back.outcome(), QStringLiteral("ok"));
    QCOMPARE(ends(requests), Count);
}

void StalledDaemonsTest::moreProfilesThanTheConnectionHolds()
{
    const Application application;
    QVERIFY(application.waitUntilReady());
    QVERIFY(stall(Tethering));
    std::vector<std::unique_ptr<Profile>> updates;
    for (int i = 0; i < 30; ++i) // 16 MiB are taken
        updates.push_back(std::make_unique<Profile>(application.hotspot->setConfiguration(hugeProfile())));
    QCOMPARE(updates.back()->outcome(), QStringLiteral("-1 Unable to write to vantor zop"));
    QVERIFY(updates.front()->isOpen());
    Scan scan(application.wifi->scan());
    QCOMPARE(scan.outcome(), QStringLiteral("ok"));
    QVERIFY(goOn(Tethering));
    QCOMPARE(updates.front()->outcome(), QStringLiteral("-1 Failed to update WifiHotspot config."));
    QTRY_COMPARE_WITH_TIMEOUT(ends(updates), 30, Patience);
    Profile fetch(application.hotspot->configuration());
    QCOMPARE(fetch.outcome(), QStringLiteral("ok"));
    QCOMPARE(ends(updates), 30);
}

void StalledDaemonsTest::moreNetworksThanTheConnectionHolds()
{
    const Application application;
    QVERIFY(application.waitUntilReady());
    QVERIFY(stall(Wifi));
    std::vector<std::unique_ptr<Connect>> connects;
    for (int i = 0; i < 30; ++i) {
        connects.push_back(std::make_unique<Connect>(application.wifi->connectAccessPoint(open(megabyte()))));
        application.wifi->disconnectAccessPoint();
    }
    Connect refused(application.wifi->connectAccessPoint(open(megabyte())));
    QCOMPARE(refused.outcome(), QStringLiteral("-1 the daemon does not take the request"));
    QCOMPARE(ends(connects), 30);
    QVERIFY(goOn(Wifi));
    QTRY_VERIFY_WITH_TIMEOUT(!application.wifi->connected(), Patience);
    // The first ones are refused, and wait for the results of the one that is not.
    std::vector<std::unique_ptr<Scan>> scans;
    QVERIFY(QTest::qWaitFor(
        [&application, &scans] {
            scans.push_back(std::make_unique<Scan>(application.wifi->scan()));
            return ends(scans) > 0;
        },
        Patience));
    QCOMPARE(ends(connects), 30);
}

QTEST_GUILESS_MAIN(StalledDaemonsTest)

#include "tst_stalleddaemons.moc"
