// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "realmanager.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace morvek;

namespace {

const QStringList Managed {QStringLiteral("--network"), QStringLiteral("manager")};
const char Manual[] =
    "['vt0', {'manual': 'yes', 'ip_address': '10.9.0.77', 'netmask': '255.255.255.0', 'gateway': '10.9.0.1'}]";

/*! What the manager and the kernel tell of the machine, without what changes by itself. */
QByteArray machine()
{
    return shell("ip -j address | sed 's/\"[a-z_]*life_time\":[0-9]*//g; s/,\"tentative\":true//g';"
                 "ip -j -4 route; ip -6 route;"
                 "nmcli -t -f NAME,UUID,TYPE,DEVICE connection | sort; cat /run/bench/profiles/*;"
                 "nmcli -g GENERAL.AUTOCONNECT,GENERAL.STATE device show vt0; nmcli radio wifi;"
                 "ls /run/bench/profiles /run/NetworkManager/system-connections 2>/dev/null || true;"
                 "all=$(ps -e -o comm=); echo \"$all\" | grep -v -e '^ps$' -e '^sh$' -e '^morvek-hostd$' | sort");
}

QByteArray addresses()
{
    return shell("ip -4 -brief address show dev vt0");
}

bool hasAddress(const QByteArray &start)
{
    return QTest::qWaitFor([start] { return addresses().contains(' ' + start); }, Patience);
}

} // namespace

/*! What the machine had before it has afterwards, however the program ends. */
class RestorationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void givesSettingsBack_data();
    void givesSettingsBack();
    void givesBackAfterItsDeath_data();
    void givesBackAfterItsDeath();
    void endsWhatItHasConnected();
    void boundConnectionsDieWithIt();
    void endsWhatOutlivedItsManager();
    void givesBackAfterARestartOfTheManager();
    void givesBackAtTheNextStartAfterARestartOfTheManager();
    void leavesWhatTheUserHasApplied();
    void leavesWhatTheUserHasConnected();
    void leavesWhatTheUserHasDisconnected();
    void leavesProfilesThatTheUserHasEdited();
    void remembersWhenAsked();
    void remembersConnections();
    void secondSignalEndsAtOnce();
    void touchesOnlyWhatIsNamed();
    void leavesWhatAnotherOneServes();
    void protectsTheRemoteSession();
    void protectsWhatMayCarryTheRemoteSession_data();
    void protectsWhatMayCarryTheRemoteSession();
    void tellsWhenNothingIsProtected();
    void keepsWhatItMayNotTouch_data();
    void keepsWhatItMayNotTouch();

private:
    bool start(const QStringList &arguments = {});
    void change(bool isManual);
    static QString ask(const char *message, const char *dat);
    static QString connectManually() { return ask("net_connected", Manual); }
    static QString connectOther() { return ask("net_connected", "['vt1', {'manual': 'no'}]"); }
    static QString disconnect(const char *interface = "'vt0'") { return ask("net_disconnected", interface); }
    QString notes() const { return root() + QStringLiteral("/.morvek-hostd-session.networking.wifi.tethering.json"); }
    QString root() const { return m_folder->filePath(QStringLiteral("root")); }

    std::unique_ptr<RealManager> m_manager;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<HostdProcess> m_process;
};

void RestorationTest::initTestCase()
{
    m_manager = std::make_unique<RealManager>();
    QVERIFY(m_manager->start());
    QVERIFY(m_manager->startServer());
    shell("nmcli connection add type ethernet ifname vt0 con-name house");
}

void RestorationTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("ZOP_ROOT", root().toUtf8());
    shell("nmcli --wait 20 connection up house");
    QVERIFY(hasAddress("10.9.0.1"));
}

void RestorationTest::cleanup()
{
    m_process.reset();
    shell("nmcli connection modify house ipv4.route-metric -1 connection.autoconnect yes");
}

bool RestorationTest::start(const QStringList &arguments)
{
    m_process = std::make_unique<HostdProcess>();
    return m_process->start(root(), Managed + arguments);
}

QString RestorationTest::ask(const char *message, const char *dat)
{
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    return Request(&control, message, dat).outcome();
}

/*! An application gives the interface another address, or takes it away. */
void RestorationTest::change(bool isManual)
{
    QCOMPARE(isManual ? connectManually() : disconnect(), QStringLiteral("ok"));
    if (isManual)
        QVERIFY(hasAddress("10.9.0.77"));
    else
        QTRY_VERIFY_WITH_TIMEOUT(!addresses().contains("10.9.0."), Patience);
}

void RestorationTest::givesSettingsBack_data()
{
    QTest::addColumn<bool>("isManual");
    QTest::addRow("disconnected") << false;
    QTest::addRow("manual") << true;
}

void RestorationTest::givesSettingsBack()
{
    QFETCH(bool, isManual);
    const QByteArray before = machine();
    QVERIFY(start());
    change(isManual);
    QVERIFY(machine() != before);
    struct stat status = {};
    QCOMPARE(stat(notes().toUtf8().constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0600U);
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), before);
    QVERIFY(!QFile::exists(notes()));
    QCOMPARE(m_process->errors(), QByteArray("morvek-hostd: no radio: neither Wi-Fi nor a hotspot is served\n"));
}

void RestorationTest::givesBackAfterItsDeath_data()
{
    givesSettingsBack_data();
}

/*! The next start does; until then it is as the dead one has left it. */
void RestorationTest::givesBackAfterItsDeath()
{
    QFETCH(bool, isManual);
    const QByteArray before = machine();
    QVERIFY(start());
    change(isManual);
    m_process->kill();
    QVERIFY(QFile::exists(notes()));
    QVERIFY(start());
    QCOMPARE(machine(), before);
    QVERIFY(!QFile::exists(notes()));
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), before);
}

/*! A device without a connection gets one for the session: of its profile, or, without one, of the session's own. */
void RestorationTest::endsWhatItHasConnected()
{
    shell("nmcli device disconnect vt0");
    const QByteArray before = machine();
    QVERIFY(start());
    QCOMPARE(connectManually(), QStringLiteral("ok"));
    QVERIFY(hasAddress("10.9.0.77"));
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), before);
}

void RestorationTest::boundConnectionsDieWithIt()
{
    QVERIFY(start());
    const QByteArray before = shell("nmcli -t -f NAME,DEVICE connection; nmcli -t -f DEVICE,STATE device");
    QCOMPARE(connectOther(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(shell("ip -4 -brief address show dev vt1").contains("10.9.1.1"), Patience);
    QVERIFY(shell("nmcli -t -f NAME,DEVICE connection; nmcli -t -f DEVICE,STATE device") != before);
    m_process->kill();
    QTRY_COMPARE_WITH_TIMEOUT(shell("nmcli -t -f NAME,DEVICE connection; nmcli -t -f DEVICE,STATE device"), before,
                              Patience);
}

/*! A manager that was started again binds nothing to anybody any more. */
void RestorationTest::endsWhatOutlivedItsManager()
{
    QVERIFY(start());
    const QByteArray before = shell("nmcli -t -f NAME,DEVICE connection; nmcli -t -f DEVICE,STATE device");
    QCOMPARE(connectOther(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(shell("ip -4 -brief address show dev vt1").contains("10.9.1.1"), Patience);
    m_manager->stop();
    QVERIFY(m_manager->start());
    m_process->kill();
    QVERIFY(start());
    QCOMPARE(shell("nmcli -t -f NAME,DEVICE connection; nmcli -t -f DEVICE,STATE device"), before);
    QCOMPARE(m_process->terminate(), 0);
}

void RestorationTest::givesBackAfterARestartOfTheManager()
{
    const QByteArray before = machine();
    QVERIFY(start());
    QCOMPARE(connectManually(), QStringLiteral("ok"));
    QVERIFY(hasAddress("10.9.0.77"));
    m_manager->stop();
    QVERIFY(m_manager->start());
    // It has the profile's own settings at first, and then again those that were asked for.
    QTRY_VERIFY_WITH_TIMEOUT(addresses().contains(" 10.9.0.77/") && !addresses().contains(" 10.9.0.1"), Patience);
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), before);
}

void RestorationTest::givesBackAtTheNextStartAfterARestartOfTheManager()
{
    const QByteArray before = machine();
    QVERIFY(start());
    QCOMPARE(connectManually(), QStringLiteral("ok"));
    QVERIFY(hasAddress("10.9.0.77"));
    m_process->kill();
    m_manager->stop();
    QVERIFY(m_manager->start());
    QVERIFY(hasAddress("10.9.0.1"));
    QVERIFY(addresses().contains("10.9.0.77")); // left beside the other one
    QVERIFY(start());
    QCOMPARE(machine(), before);
    QCOMPARE(m_process->terminate(), 0);
}

void RestorationTest::leavesWhatTheUserHasApplied()
{
    QVERIFY(start());
    QCOMPARE(disconnect(), QStringLiteral("ok"));
    shell("nmcli device modify vt0 ipv4.method manual ipv4.addresses 10.9.0.88/24 ipv4.gateway 10.9.0.1");
    QVERIFY(hasAddress("10.9.0.88"));
    const QByteArray changed = machine();
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), changed);
    QVERIFY(!QFile::exists(notes()));
}

void RestorationTest::leavesWhatTheUserHasConnected()
{
    shell("nmcli connection add type ethernet ifname vt1 con-name garage");
    QVERIFY(start());
    QCOMPARE(connectOther(), QStringLiteral("ok"));
    shell("nmcli connection add type ethernet ifname vt1 con-name office autoconnect no");
    shell("nmcli --wait 20 connection up office");
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(shell("nmcli -g GENERAL.CONNECTION device show vt1"), QByteArray("office"));
    shell("nmcli connection delete garage office");
}

void RestorationTest::leavesWhatTheUserHasDisconnected()
{
    shell("nmcli connection add type ethernet ifname vt1 con-name garage");
    shell("nmcli --wait 20 connection up garage");
    QVERIFY(start());
    QCOMPARE(disconnect("'vt1'"), QStringLiteral("ok"));
    shell("nmcli device disconnect vt1");
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(shell("nmcli -g GENERAL.CONNECTION device show vt1"), QByteArray());
    shell("nmcli connection delete garage");
}

void RestorationTest::leavesProfilesThatTheUserHasEdited()
{
    QVERIFY(start());
    QCOMPARE(disconnect(), QStringLiteral("ok"));
    shell("nmcli connection modify house ipv4.route-metric 77");
    QCOMPARE(m_process->terminate(), 0);
    QVERIFY(hasAddress("10.9.0.1"));
    QCOMPARE(shell("nmcli -g ipv4.route-metric connection show house"), QByteArray("77"));
}

void RestorationTest::remembersWhenAsked()
{
    QVERIFY(start({QStringLiteral("--remember")}));
    QCOMPARE(connectManually(), QStringLiteral("ok"));
    QVERIFY(hasAddress("10.9.0.77"));
    const QByteArray kept = machine();
    QVERIFY(!QFile::exists(notes()));
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), kept);
}

/*! Of a profile, and, without one, of the session's own. */
void RestorationTest::remembersConnections()
{
    shell("nmcli device disconnect vt0");
    QVERIFY(start({QStringLiteral("--remember")}));
    QCOMPARE(connectManually(), QStringLiteral("ok"));
    QVERIFY(hasAddress("10.9.0.77"));
    QCOMPARE(connectOther(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(shell("ip -4 -brief address show dev vt1").contains("10.9.1.1"), Patience);
    const QByteArray kept = machine();
    QVERIFY(!QFile::exists(notes()));
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), kept);
    shell("nmcli device disconnect vt1");
}

/*! Without an answer of the DHCP server the first waits for its limit. */
void RestorationTest::secondSignalEndsAtOnce()
{
    QVERIFY(start());
    QCOMPARE(disconnect(), QStringLiteral("ok"));
    QTRY_VERIFY_WITH_TIMEOUT(!addresses().contains("10.9.0."), Patience);
    m_manager->stopServer();
    QElapsedTimer since;
    since.start();
    m_process->signal(SIGTERM);
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(root() + QLatin1String(Control)), Patience);
    m_process->signal(SIGTERM);
    QCOMPARE(m_process->waitForEnd(), 0);
    QVERIFY(since.elapsed() < 8000);
    QVERIFY(QFile::exists(notes()));
    QVERIFY(m_manager->startServer());
}

void RestorationTest::touchesOnlyWhatIsNamed()
{
    QVERIFY(start({QStringLiteral("--only"), QStringLiteral("vt1")}));
    QCOMPARE(QDir(root() + QLatin1String(Interfaces)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList(QStringLiteral("vt1")));
    const QByteArray before = machine();
    QCOMPARE(disconnect(), QStringLiteral("3 no interface \"vt0\""));
    QCOMPARE(machine(), before);
}

/*! Two below one root: the one that has nothing to do with interfaces leaves them as the other has made them. */
void RestorationTest::leavesWhatAnotherOneServes()
{
    const QByteArray before = machine();
    QVERIFY(start({QStringLiteral("--without"), QStringLiteral("wifi"), QStringLiteral("--without"),
                   QStringLiteral("tethering")}));
    QCOMPARE(connectManually(), QStringLiteral("ok"));
    QVERIFY(hasAddress("10.9.0.77"));
    const QByteArray changed = machine();
    const QStringList others = Managed + QStringList {QStringLiteral("--without"), QStringLiteral("networking")};
    QCOMPARE(HostdProcess::run(others, root()).code, 9); // there is no radio
    QCOMPARE(machine(), changed);
    m_process->kill();
    QCOMPARE(HostdProcess::run(others, root()).code, 9);
    QCOMPARE(machine(), changed);
    QVERIFY(start());
    QCOMPARE(machine(), before);
    QCOMPARE(m_process->terminate(), 0);
}

void RestorationTest::protectsTheRemoteSession()
{
    const QByteArray own = shell("ip -4 -o address show dev vt0 | sed 's/.*inet //; s,/.*,,'");
    qputenv("SSH_CONNECTION", "10.9.0.1 50022 " + own + " 22");
    const QByteArray before = machine();
    QVERIFY(start());
    QCOMPARE(disconnect(), QStringLiteral("12 \"vt0\" carries your remote session: --force has it touched"));
    QCOMPARE(disconnect("'vt1'"), QStringLiteral("ok"));
    QCOMPARE(machine(), before);
    QCOMPARE(m_process->terminate(), 0);
    QVERIFY(m_process->errors().startsWith(
        "morvek-hostd: your remote session is carried by vt0, which is not touched without --force\n"));
    QVERIFY(start({QStringLiteral("--force")}));
    QCOMPARE(disconnect(), QStringLiteral("ok"));
    QCOMPARE(m_process->terminate(), 0);
    QCOMPARE(machine(), before);
    qunsetenv("SSH_CONNECTION");
}

void RestorationTest::protectsWhatMayCarryTheRemoteSession_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addRow("of a gateway") << QByteArray("198.51.100.2");
    QTest::addRow("through a tunnel of SSH's") << QByteArray("127.0.0.1");
}

/*! When no interface has its address: what the default route leads to. */
void RestorationTest::protectsWhatMayCarryTheRemoteSession()
{
    QFETCH(QByteArray, address);
    qputenv("SSH_CONNECTION", "192.0.2.7 50022 " + address + " 22");
    QVERIFY(start());
    QCOMPARE(disconnect(), QStringLiteral("12 \"vt0\" carries your remote session: --force has it touched"));
    QCOMPARE(m_process->terminate(), 0);
    QVERIFY(m_process->errors().startsWith("morvek-hostd: your remote session is at " + address
                                           + ", and may be carried by vt0, which is not touched without --force\n"));
    qunsetenv("SSH_CONNECTION");
}

void RestorationTest::tellsWhenNothingIsProtected()
{
    shell("nmcli device disconnect vt0");
    qputenv("SSH_CONNECTION", "192.0.2.7 50022 198.51.100.2 22");
    QVERIFY(start());
    QCOMPARE(connectOther(), QStringLiteral("ok"));
    QCOMPARE(m_process->terminate(), 0);
    QVERIFY(m_process->errors().startsWith(
        "morvek-hostd: your remote session is at 198.51.100.2, and nobody knows what carries it: nothing is "
        "protected, and a request may end it\n"));
    qunsetenv("SSH_CONNECTION");
}

void RestorationTest::keepsWhatItMayNotTouch_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("session");
    QTest::addColumn<QByteArray>("line");
    QTest::addRow("other than --only") << QStringList {QStringLiteral("--only"), QStringLiteral("vt1")} << QByteArray()
                                       << QByteArray(
                                              "\"vt0\" is not as it was: \"vt0\" is not among what --only names");
    QTest::addRow("remote session")
        << QStringList() << QByteArray("192.0.2.7 50022 10.9.0.77 22")
        << QByteArray("\"vt0\" is not as it was: \"vt0\" carries your remote session: --force has it touched");
}

/*! What a run that was killed has left: another that may not touch it leaves it to the next. */
void RestorationTest::keepsWhatItMayNotTouch()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, session);
    QFETCH(QByteArray, line);
    const QByteArray before = machine();
    QVERIFY(start());
    change(true);
    const QByteArray changed = machine();
    m_process->kill();
    if (!session.isEmpty())
        qputenv("SSH_CONNECTION", session);
    QVERIFY(start(arguments));
    QCOMPARE(m_process->terminate(), 0);
    qunsetenv("SSH_CONNECTION");
    QCOMPARE(m_process->errors().count("morvek-hostd: " + line + '\n'), 2); // at its start and end
    QCOMPARE(machine(), changed);
    QVERIFY(start());
    QCOMPARE(machine(), before);
    QCOMPARE(m_process->terminate(), 0);
}

QTEST_GUILESS_MAIN(RestorationTest)

#include "tst_restoration.moc"
