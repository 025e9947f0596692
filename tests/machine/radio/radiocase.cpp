// SPDX-License-Identifier: Apache-2.0
#include "radiocase.h"

#include "asyncwificonnectoperation.h"
#include "krellogger.h"
#include "networkinterfaceconfig.h"
#include "protectedby.h"
#include "secrecy.h"
#include "watched.h"

using namespace morvek;

namespace {

const QString Radio = QStringLiteral("wlan0");
/*! Where the guest's processes write: what is not on a disk, and what would be on one. */
const char *const Written[] = {"/run", "/tmp", "/var/tmp", "/dev/shm", "/guest/written"};
/*! How the names of the files begin that hold the passkeys of those around the unit. */
const QString OwnFiles = QStringLiteral("own-");
/*! Where the manager keeps profiles that are not for the disk, with their secrets. */
const QString ManagersMemory = QStringLiteral("/run/NetworkManager/system-connections");

bool holdsOneOf(const QByteArrayList &secrets, const QByteArray &text)
{
    for (const QByteArray &secret : secrets) {
        const QList<QByteArray> forms = formsOf(secret);
        for (const QByteArray &form : forms) {
            if (text.contains(form))
                return true;
        }
    }
    return false;
}

} // namespace

void RadioCase::begin()
{
    qputenv("KREL_VERBOSITY", "7"); // for the daemon
    KrelLogger::setVerbosity(7);
    KrelLogger::setSink(
        [this](KrelLogger::Level, unsigned short, const QString &text) { m_log += text.toUtf8() + '\n'; });
    if (!m_daemon)
        m_daemon = std::make_unique<DaemonFixture>();
    QVERIFY2(
        m_daemon->process().start(
            m_daemon->root(), {QStringLiteral("--verbose"), QStringLiteral("--network"), QStringLiteral("manager")}),
        m_daemon->process().errors().constData());
    m_wifi.reset(newWifiService());
    m_interfaces.reset(newNetworkInterfaceService());
    QTRY_VERIFY_WITH_TIMEOUT(m_wifi->ready() && m_interfaces->ready(), Patience);
}

void RadioCase::end()
{
    m_wifi.reset();
    m_interfaces.reset();
    QCOMPARE(m_daemon->process().terminate(), 0);
    m_log += m_daemon->process().errors();
    m_daemon.reset();
    KrelLogger::setSink(nullptr);
}

void RadioCase::kill()
{
    m_log += m_daemon->process().errors();
    m_daemon->kill();
}

QString RadioCase::join(const char *ssid, const char *passkey)
{
    WifiConnectionConfig open;
    open.setSsid(QString::fromUtf8(ssid));
    Watched<AsyncWifiConnectOperation> connect(
        m_wifi->connectAccessPoint(*passkey ? protectedBy(passkey, ssid) : open));
    QElapsedTimer time;
    time.start();
    while (connect.isOpen() && !time.hasExpired(Patience)) {
        m_traces += *passkey ? placesOf({passkey}) : QByteArrayList(); // at every step of the attempt
        QTest::qWait(50);
    }
    return connect.outcome(0);
}

void RadioCase::cleanup()
{
    QCOMPARE(Air::profilesInMemory("! -perm 600"), QByteArray());
    QCOMPARE(m_traces.join(' '), QByteArray());
}

void RadioCase::leave()
{
    m_wifi->disconnectAccessPoint();
    QTRY_VERIFY_WITH_TIMEOUT(!m_wifi->connected() && Air::associated().isEmpty(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(Air::profilesInMemory(), QByteArray(), Patience);
}

NetworkInterface RadioCase::radioInterface() const
{
    const QList<NetworkInterface> interfaces = m_interfaces->interfaces();
    for (const NetworkInterface &interface : interfaces) {
        if (interface.name() == Radio)
            return interface;
    }
    return NetworkInterface();
}

QString RadioCase::radioAddresses() const
{
    const NetworkInterface interface = radioInterface();
    QStringList addresses;
    const QList<QNetworkAddressEntry> entries = interface.configuration().ipAddresses();
    for (const QNetworkAddressEntry &entry : entries) {
        if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
            addresses += QStringLiteral("%1/%2").arg(entry.ip().toString()).arg(entry.prefixLength());
    }
    return interface.connected() ? addresses.join(QLatin1Char(' ')) : QString();
}

QByteArrayList RadioCase::placesOf(const QByteArrayList &secrets)
{
    QByteArrayList places;
    m_log += m_daemon->process().errors();
    if (holdsOneOf(secrets, m_log))
        places += "log";
    const QStringList processes = allProcesses();
    for (const QString &process : processes) {
        if (holdsOneOf(secrets, processText(process)))
            places += process.toLatin1();
    }
    for (const char *folder : Written) {
        if (holdsOneOf(secrets, filesBelow(QLatin1String(folder), OwnFiles, ManagersMemory)))
            places += folder;
    }
    return places;
}
