// SPDX-License-Identifier: Apache-2.0
#include "hostdprocess.h"
#include "zopcontrolcommand.h"
#include "zopdirwatcher.h"
#include "zopobject.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

constexpr int Patience = 20000;
const char Interfaces[] = "/zop/services/networking/all/interfaces";
const char Status[] = "/zop/services/networking/all/status_public";
const char Control[] = "/zop/services/networking/control";

QString interfacePath(const char *name)
{
    return QLatin1String(Interfaces) + QLatin1Char('/') + QLatin1String(name);
}

/*! An object as a client sees it. */
struct Seen
{
    explicit Seen(const QString &path)
        : object(path, ZopObject::Subscribe, false),
          updates(&object, &ZopObject::attributesChanged)
    {
        object.setAttributeCacheEnabled(true);
        updates.clear();
    }

    QString text(const char *name) const { return object.attribute(QLatin1String(name)).toString(); }
    ZopChangeset update(int i) const { return updates.at(i).at(0).value<ZopChangeset>(); }

    ZopObject object;
    QSignalSpy updates;
};

/*! One request and its reply. */
struct Request
{
    Request(ZopObject *control, const char *message, const char *dat)
        : command(control),
          finished(&command, &ZopControlCommand::finished)
    {
        command.setMessage(QLatin1String(message));
        command.setDat(QString::fromUtf8(dat).replace(QLatin1Char('\''), QLatin1Char('"')));
        command.start();
    }

    /*! "ok", or "CODE TEXT". */
    QString outcome()
    {
        if (finished.isEmpty() && !finished.wait(Patience))
            return QStringLiteral("no reply");
        return command.hasError() ? QStringLiteral("%1 %2").arg(command.errorCode()).arg(command.errorString())
                                  : QStringLiteral("ok");
    }

    ZopControlCommand command;
    QSignalSpy finished;
};

} // namespace

class NetworkingDaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void publishes();
    void publishesInterfacesBeforeTheStatus();
    void publishesTheStatusBeforeTheControl();
    void configuresManuallyAndBack();
    void repliesBeforeTheWorldChanges();
    void refuses_data();
    void refuses();
    void faultRefuses();
    void faultNoReply();
    void faultNoReplyButPerformed();
    void faultLate();
    void faultDouble();
    void diesAtARequest();
    void diesAtItsTime();
    void stateOutlivesTheDaemon();
    void publishesAnewWhenItIsBack();
    void interfacesComeAndGo();
    void setsRawAttributes();
    void takesOverAFormerRun();

private:
    void write(const char *scenario);
    bool start(const QString &scenario, const QStringList &arguments = {});
    bool startWritten(const QStringList &arguments = {})
    {
        return start(m_folder->filePath(QStringLiteral("scenario.json")), arguments);
    }
    QString root() const { return m_folder->filePath(QStringLiteral("root")); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<HostdProcess> m_hostd;
};

void NetworkingDaemonTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_hostd = std::make_unique<HostdProcess>();
    qputenv("ZOP_ROOT", QFile::encodeName(root()));
}

void NetworkingDaemonTest::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("%s", m_hostd->errors().constData());
    m_hostd.reset();
    m_folder.reset();
}

void NetworkingDaemonTest::write(const char *scenario)
{
    QFile file(m_folder->filePath(QStringLiteral("scenario.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(scenario).replace('\'', '"'));
}

bool NetworkingDaemonTest::start(const QString &scenario, const QStringList &arguments)
{
    return m_hostd->start(
        root(), QStringList {QStringLiteral("--verbose"), QStringLiteral("--scenario"), scenario} + arguments);
}

void NetworkingDaemonTest::publishes()
{
    QVERIFY(start(QStringLiteral("headunit")));
    ZopDirWatcher watcher {QLatin1String(Interfaces)};
    QSignalSpy added(&watcher, &ZopDirWatcher::objectAdded);
    watcher.setNameCacheEnabled(true);
    QStringList names;
    for (const QList<QVariant> &arguments : added)
        names += arguments.first().toString();
    names.sort();
    QCOMPARE(names,
             QStringList(
                 {QStringLiteral("cell0"), QStringLiteral("eth0"), QStringLiteral("eth0.5"), QStringLiteral("wlan0")}));

    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(eth0.text("type"), QStringLiteral("wired"));
    QCOMPARE(eth0.text("link_address"), QStringLiteral("02:00:00:00:10:02"));
    QCOMPARE(eth0.object.attribute(QStringLiteral("mtu")), ZopVariant(1500));
    QCOMPARE(eth0.text("up"), QStringLiteral("true"));
    QCOMPARE(eth0.text("connected"), QStringLiteral("true"));
    QCOMPARE(eth0.text("manual"), QStringLiteral("no"));
    QCOMPARE(eth0.object.attribute(QStringLiteral("ip_addresses")),
             ZopVariant("[\"fe80::12/64\",\"10.20.0.40/255.255.0.0\"]", "json"));
    QCOMPARE(eth0.text("ip_gateway"), QStringLiteral("[\"10.20.0.1\"]"));
    QVERIFY(!eth0.object.attribute(QStringLiteral("parent_interface")).isValid());

    const Seen vlan(interfacePath("eth0.5"));
    QCOMPARE(vlan.text("parent_interface"), QStringLiteral("eth0"));
    QCOMPARE(vlan.text("manual"), QStringLiteral("yes"));

    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QStringLiteral("wlan0"));
    QCOMPARE(status.object.attribute(QStringLiteral("priority")),
             ZopVariant("[\"wlan0\",\"eth0\",\"cell0\",\"eth0.5\"]", "json"));
}

// Where an object cannot be created, the ones before it are there, and the ones behind it are not.
void NetworkingDaemonTest::publishesInterfacesBeforeTheStatus()
{
    const QString networking = root() + QStringLiteral("/zop/services/networking");
    QVERIFY(QDir().mkpath(networking + QStringLiteral("/all/status_public/directory")));
    QVERIFY(QFile::setPermissions(root(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const auto ended = HostdProcess::run({QStringLiteral("--root"), root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QVERIFY2(ended.errors.startsWith("morvek-hostd: "), ended.errors.constData());
    QCOMPARE(ended.errors.count('\n'), 1);
    QVERIFY(ZopObject(interfacePath("wlan0"), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(interfacePath("cell0"), ZopObject::Subscribe, false).isValid());
    QVERIFY(!QFile::exists(networking + QStringLiteral("/control")));
}

void NetworkingDaemonTest::publishesTheStatusBeforeTheControl()
{
    QVERIFY(QDir().mkpath(root() + QStringLiteral("/zop/services/networking/control/directory")));
    QVERIFY(QFile::setPermissions(root(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const auto ended = HostdProcess::run({QStringLiteral("--root"), root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QVERIFY(ZopObject(QLatin1String(Status), ZopObject::Subscribe, false).isValid());
}

void NetworkingDaemonTest::configuresManuallyAndBack()
{
    QVERIFY(start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QVERIFY2(control.isValid(), qPrintable(control.errorString()));
    Seen wlan0(interfacePath("wlan0"));
    Seen status {QLatin1String(Status)};

    QCOMPARE(Request(&control, "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 1);
    QCOMPARE(wlan0.text("connected"), QStringLiteral("false"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[]"));
    QCOMPARE(wlan0.text("ip_gateway"), QStringLiteral("[]"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("eth0"));

    Request manual(&control, "net_connected",
                   "['wlan0',{'gateway':'10.1.1.1','ip_address':'10.1.1.20','manual':'yes','manual6':'off',"
                   "'netmask':'255.255.255.0'}]");
    QCOMPARE(manual.outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 2);
    QCOMPARE(wlan0.text("connected"), QStringLiteral("true"));
    QCOMPARE(wlan0.text("manual"), QStringLiteral("yes"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[\"10.1.1.20/255.255.255.0\"]"));
    QCOMPARE(wlan0.text("ip_gateway"), QStringLiteral("[\"10.1.1.1\"]"));
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("wlan0"));

    QCOMPARE(Request(&control, "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 3);
    QCOMPARE(Request(&control, "net_connected", "['wlan0',{'manual':'no','manual6':'off'}]").outcome(),
             QStringLiteral("ok"));
    QTRY_COMPARE(wlan0.updates.count(), 4);
    QCOMPARE(wlan0.text("manual"), QStringLiteral("no"));
    QCOMPARE(wlan0.text("ip_addresses"), QStringLiteral("[\"fe80::11/64\",\"192.168.43.17/255.255.255.0\"]"));
    QCOMPARE(wlan0.text("ip_gateway"), QStringLiteral("[\"192.168.43.1\"]"));
}

void NetworkingDaemonTest::repliesBeforeTheWorldChanges()
{
    write("{'delays': {'release': 86400000}, 'interfaces': [{'name': 'a', 'type': 'wired', 'connected': true, "
          "'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}]}");
    QVERIFY(startWritten());
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QCOMPARE(Request(&control, "net_disconnected", "'a'").outcome(), QStringLiteral("ok"));
    QCOMPARE(Seen(interfacePath("a")).text("connected"), QStringLiteral("true"));
}

void NetworkingDaemonTest::refuses_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<QString>("outcome");

    QTest::addRow("message") << QByteArray("net_explode") << QByteArray("'eth0'")
                             << "1 unknown message \"net_explode\"";
    QTest::addRow("dat of connect") << QByteArray("net_connected") << QByteArray("['eth0'")
                                    << "2 dat must be [interface name, {settings}]";
    QTest::addRow("dat of disconnect") << QByteArray("net_disconnected") << QByteArray("eth0")
                                       << "2 dat must be \"interface name\"";
    QTest::addRow("connect an unknown one")
        << QByteArray("net_connected") << QByteArray("['wlan9',{'manual':'no'}]") << "3 no interface \"wlan9\"";
    QTest::addRow("disconnect an unknown one")
        << QByteArray("net_disconnected") << QByteArray("'wlan9'") << "3 no interface \"wlan9\"";
    QTest::addRow("half an address")
        << QByteArray("net_connected")
        << QByteArray("['eth0',{'manual':'yes','ip_address':'10.1','netmask':'255.0.0.0','gateway':'10.1.1.1'}]")
        << "4 \"10.1\" is not the IPv4 address of a host";
    QTest::addRow("no link") << QByteArray("net_connected") << QByteArray("['down0',{'manual':'no'}]")
                             << "5 \"down0\" has no link";
}

void NetworkingDaemonTest::refuses()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    write("{'interfaces': [{'name': 'eth0', 'type': 'wired'}, {'name': 'down0', 'type': 'wired', 'up': false}]}");
    QVERIFY(startWritten());
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QTEST(Request(&control, message.constData(), dat.constData()).outcome(), "outcome");
}

void NetworkingDaemonTest::faultRefuses()
{
    QVERIFY(start(QStringLiteral("refused"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(Request(&control, "net_connected", "['wlan0',{'manual':'no'}]").outcome(),
                 QStringLiteral("13 permission denied"));
    QCOMPARE(Request(&control, "net_disconnected", "'eth0'").outcome(), QStringLiteral("16 device or resource busy"));
    QCOMPARE(Request(&control, "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
}

void NetworkingDaemonTest::faultNoReply()
{
    QVERIFY(start(QStringLiteral("no-reply"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    Seen cell0(interfacePath("cell0"));
    Request unanswered(&control, "net_disconnected", "'eth0'");
    QCOMPARE(Request(&control, "net_disconnected", "'cell0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(cell0.updates.count(), 1);
    QCOMPARE(unanswered.finished.count(), 0);
    QCOMPARE(Seen(interfacePath("eth0")).text("connected"), QStringLiteral("true"));
}

void NetworkingDaemonTest::faultNoReplyButPerformed()
{
    write("{'delays': {'release': 0}, 'interfaces': [{'name': 'a', 'type': 'wired', 'connected': true, "
          "'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}], "
          "'faults': [{'fault': 'no-reply', 'performs': true, 'times': 1}]}");
    QVERIFY(startWritten());
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    const Seen a(interfacePath("a"));
    const Request unanswered(&control, "net_disconnected", "'a'");
    QTRY_COMPARE(a.text("connected"), QStringLiteral("false"));
    QCOMPARE(Request(&control, "net_disconnected", "'a'").outcome(), QStringLiteral("ok"));
    QCOMPARE(unanswered.finished.count(), 0);
}

void NetworkingDaemonTest::faultLate()
{
    QVERIFY(start(QStringLiteral("no-reply"), {QStringLiteral("--speed"), QStringLiteral("20")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QStringList order;
    Request late(&control, "net_disconnected", "'wlan0'");
    Request other(&control, "net_disconnected", "'cell0'");
    connect(&late.command, &ZopControlCommand::finished, this, [&order] { order += QStringLiteral("late"); });
    connect(&other.command, &ZopControlCommand::finished, this, [&order] { order += QStringLiteral("other"); });
    QCOMPARE(late.outcome(), QStringLiteral("ok"));
    QCOMPARE(order, QStringList({QStringLiteral("other"), QStringLiteral("late")}));
}

void NetworkingDaemonTest::faultDouble()
{
    QVERIFY(start(QStringLiteral("no-reply"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    control.setAttributeCacheEnabled(true);
    QSignalSpy messages(&control, &ZopObject::attributesChanged);
    ZopChangeset request;
    request.assignments.insert(QStringLiteral("msg"), QStringLiteral("net_disconnected"));
    request.assignments.insert(QStringLiteral("id"), 41);
    request.assignments.insert(QStringLiteral("dat"), QStringLiteral("\"cell0\""));
    QVERIFY(control.setAttributes(request));
    QTRY_COMPARE(messages.count(), 2);
    for (const QList<QVariant> &arguments : messages) {
        const auto reply = arguments.first().value<ZopChangeset>().assignments;
        QCOMPARE(reply.value(QStringLiteral("res")).toString(), QStringLiteral("net_disconnected"));
        QCOMPARE(reply.value(QStringLiteral("id")).toInt(), 41);
        QVERIFY(!reply.contains(QStringLiteral("err")));
    }
    // The third message is another request's reply: no third one came for the first.
    request.assignments.insert(QStringLiteral("id"), 42);
    request.assignments.insert(QStringLiteral("msg"), QStringLiteral("nonsense"));
    QVERIFY(control.setAttributes(request));
    QTRY_COMPARE(messages.count(), 3);
    QCOMPARE(messages.last().first().value<ZopChangeset>().assignments.value(QStringLiteral("id")).toInt(), 42);
}

void NetworkingDaemonTest::diesAtARequest()
{
    write("{'delays': {'lease': 1}, 'interfaces': [{'name': 'a', 'type': 'wired', "
          "'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}], "
          "'faults': [{'message': 'net_connected', 'fault': 'die', 'back_after': 300, 'times': 1}]}");
    QVERIFY(startWritten());
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    const Seen a(interfacePath("a"));
    Request open(&control, "net_connected", "['a',{'manual':'no','manual6':'off'}]");
    QVERIFY(open.outcome().startsWith(QStringLiteral("-1 ")));
    QCOMPARE(open.finished.count(), 1);

    // The open objects work again by themselves: being back, the daemon publishes everything as one update.
    QTRY_COMPARE_WITH_TIMEOUT(a.updates.count(), 1, Patience);
    QCOMPARE(a.update(0).assignments.size(), 6);
    QTRY_COMPARE_WITH_TIMEOUT(Request(&control, "net_connected", "['a',{'manual':'no','manual6':'off'}]").outcome(),
                              QStringLiteral("ok"), Patience);
    QTRY_COMPARE(a.text("connected"), QStringLiteral("true"));
}

void NetworkingDaemonTest::diesAtItsTime()
{
    QVERIFY(start(QStringLiteral("daemon-restart"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    QTRY_VERIFY(m_hostd->errors().contains("daemon  back\n"));
    const QByteArray log = m_hostd->errors();
    const int dead = log.indexOf("daemon  dead\n");
    const int changed = log.indexOf("event   link-lost eth0\n");
    QVERIFY(dead != -1 && dead < changed && changed < log.indexOf("daemon  back\n"));
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(eth0.text("up"), QStringLiteral("false"));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QCOMPARE(Request(&control, "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
}

void NetworkingDaemonTest::stateOutlivesTheDaemon()
{
    write("{'interfaces': [{'name': 'a', 'type': 'wired'}, {'name': 'b', 'type': 'usb'}], 'timeline': ["
          "{'at': 0, 'event': 'daemon-dies'}, {'at': 1, 'event': 'vanish', 'interface': 'b'}]}");
    QVERIFY(startWritten());
    QTRY_VERIFY(m_hostd->errors().contains("vanish b\n"));
    QVERIFY(ZopObject(interfacePath("a"), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(interfacePath("b"), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(QLatin1String(Status), ZopObject::Subscribe, false).isValid());
    QVERIFY(!ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QCOMPARE(m_hostd->terminate(), 0);
}

void NetworkingDaemonTest::publishesAnewWhenItIsBack()
{
    write("{'interfaces': [{'name': 'a', 'type': 'wired'}, {'name': 'b', 'type': 'usb'}], 'timeline': ["
          "{'at': 0, 'event': 'daemon-dies', 'back_after': 100}, {'at': 1, 'event': 'vanish', 'interface': 'b'}, "
          "{'at': 2, 'event': 'link-lost', 'interface': 'a'}]}");
    QVERIFY(startWritten());
    QTRY_VERIFY(m_hostd->errors().contains("daemon  back\n"));
    QVERIFY(ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QCOMPARE(Seen(interfacePath("a")).text("up"), QStringLiteral("false"));
    QVERIFY(!ZopObject(interfacePath("b"), ZopObject::Subscribe, false).isValid());
    QCOMPARE(Seen(QLatin1String(Status)).text("priority"), QStringLiteral("[\"a\"]"));
    QCOMPARE(m_hostd->output().count('\n'), 1);
}

void NetworkingDaemonTest::interfacesComeAndGo()
{
    QVERIFY(QDir().mkdir(root()));
    QVERIFY(QFile::setPermissions(root(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    ZopDirWatcher watcher {QLatin1String(Interfaces)};
    QStringList told;
    connect(&watcher, &ZopDirWatcher::objectAdded, this,
            [&told](const QString &name) { told += QLatin1Char('+') + name; });
    connect(&watcher, &ZopDirWatcher::objectRemoved, this,
            [&told](const QString &name) { told += QLatin1Char('-') + name; });

    QVERIFY(start(QStringLiteral("come-and-go"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    QTRY_COMPARE(told.mid(3),
                 QStringList({QStringLiteral("+usb0"), QStringLiteral("-cell0"), QStringLiteral("-usb0"),
                              QStringLiteral("+cell0")}));
    QStringList first = told.mid(0, 3);
    first.sort();
    QCOMPARE(first, QStringList({QStringLiteral("+cell0"), QStringLiteral("+tun0"), QStringLiteral("+wlan0")}));

    const Seen cell0(interfacePath("cell0"));
    QTRY_COMPARE(cell0.text("connected"), QStringLiteral("true"));
    const Seen status {QLatin1String(Status)};
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("wlan0"));
    QCOMPARE(status.text("priority"), QStringLiteral("[\"wlan0\",\"cell0\",\"tun0\"]"));
}

void NetworkingDaemonTest::setsRawAttributes()
{
    write("{'interfaces': [{'name': 'a', 'type': 'wired', 'mtu': 1500}], 'timeline': ["
          "{'at': 0, 'event': 'set', 'interface': 'a', 'attributes': {"
          "'ip_addresses': {'encoding': 'json', 'text': '[1,'}, 'up': 'perhaps', 'type': {'base64': '/wD+'}}},"
          "{'at': 0, 'event': 'remove', 'interface': 'a', 'attributes': ['mtu']},"
          "{'at': 0, 'event': 'set', 'object': 'status_public', 'attributes': {'default_interface': 'nobody'}}]}");
    QVERIFY(startWritten());
    const Seen status {QLatin1String(Status)};
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("nobody"));
    const Seen a(interfacePath("a"));
    QCOMPARE(a.object.attribute(QStringLiteral("ip_addresses")), ZopVariant("[1,", "json"));
    QCOMPARE(a.text("up"), QStringLiteral("perhaps"));
    QCOMPARE(a.object.attribute(QStringLiteral("type")), ZopVariant(QByteArray("\xff\0\xfe", 3), "text"));
    QVERIFY(!a.object.attribute(QStringLiteral("mtu")).isValid());
}

void NetworkingDaemonTest::takesOverAFormerRun()
{
    QVERIFY(start(QStringLiteral("headunit")));
    m_hostd->kill();
    m_hostd = std::make_unique<HostdProcess>();
    ZopObject writer(interfacePath("eth0"), ZopObject::ReadWrite, false);
    ZopChangeset stale;
    stale.assignments.insert(QStringLiteral("stale"), QStringLiteral("yes"));
    QVERIFY(writer.setAttributes(stale));

    Seen eth0(interfacePath("eth0"));
    write("{'interfaces': [{'name': 'eth0', 'type': 'usb'}, {'name': 'new0', 'type': 'usb'}]}");
    QVERIFY(startWritten());
    QTRY_COMPARE(eth0.updates.count(), 1);
    const ZopChangeset whole = eth0.update(0);
    QCOMPARE(whole.removals,
             QSet<QString>({QStringLiteral("stale"), QStringLiteral("link_address"), QStringLiteral("mtu")}));
    const QMap<QString, ZopVariant> expected {
        {QStringLiteral("connected"), ZopVariant("false", "text")},
        {QStringLiteral("ip_addresses"), ZopVariant("[]", "json")},
        {QStringLiteral("ip_gateway"), ZopVariant("[]", "json")},
        {QStringLiteral("manual"), ZopVariant("no", "text")},
        {QStringLiteral("type"), ZopVariant("usb", "text")},
        {QStringLiteral("up"), ZopVariant("true", "text")},
    };
    QCOMPARE(whole.assignments, expected);
    QVERIFY(ZopObject(interfacePath("new0"), ZopObject::Subscribe, false).isValid());
    for (const char *gone : {"wlan0", "cell0", "eth0.5"})
        QVERIFY2(!ZopObject(interfacePath(gone), ZopObject::Subscribe, false).isValid(), gone);
    const Seen status {QLatin1String(Status)};
    QCOMPARE(status.text("default_interface"), QString());
    QCOMPARE(status.text("priority"), QStringLiteral("[\"eth0\",\"new0\"]"));
}

QTEST_GUILESS_MAIN(NetworkingDaemonTest)
#include "tst_networkingdaemon.moc"
