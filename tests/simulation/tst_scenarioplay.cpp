// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "zopdirwatcher.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! A scenario's faults and events, as clients see them. */
class ScenarioPlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void faultRefuses();
    void faultNoReply();
    void faultNoReplyButPerformed();
    void faultLate();
    void faultDouble();
    void diesAtARequest();
    void diesAtItsTime();
    void comesBackAtItsTime();
    void faultsEndAtTheirTime();
    void theNextKeyIsWrong();
    void stateOutlivesTheDaemon();
    void publishesAnewWhenItIsBack();
    void interfacesComeAndGo();
    void setsRawAttributes();

private:
    std::unique_ptr<DaemonFixture> m_daemon;
};

void ScenarioPlayTest::faultRefuses()
{
    QVERIFY(m_daemon->start(QStringLiteral("refused"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(Request(&control, "net_connected", "['wlan0',{'manual':'no'}]").outcome(),
                 QStringLiteral("13 permission denied"));
    QCOMPARE(Request(&control, "net_disconnected", "'eth0'").outcome(), QStringLiteral("16 device or resource busy"));
    QCOMPARE(Request(&control, "net_disconnected", "'eth0'").outcome(), QStringLiteral("ok"));
}

void ScenarioPlayTest::faultNoReply()
{
    QVERIFY(m_daemon->start(QStringLiteral("no-reply"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    Seen cell0(interfacePath("cell0"));
    Request unanswered(&control, "net_disconnected", "'eth0'");
    QCOMPARE(Request(&control, "net_disconnected", "'cell0'").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(cell0.updates.count(), 1);
    QCOMPARE(unanswered.finished.count(), 0);
    QCOMPARE(Seen(interfacePath("eth0")).text("connected"), QStringLiteral("true"));
}

void ScenarioPlayTest::faultNoReplyButPerformed()
{
    const char scenario[] =
        "{'delays': {'release': 0}, 'interfaces': [{'name': 'a', 'type': 'wired', 'connected': true, "
        "'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}], "
        "'faults': [{'fault': 'no-reply', 'performs': true, 'times': 1}]}";
    QVERIFY(m_daemon->startWith(scenario));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    const Seen a(interfacePath("a"));
    const Request unanswered(&control, "net_disconnected", "'a'");
    QTRY_COMPARE(a.text("connected"), QStringLiteral("false"));
    QCOMPARE(Request(&control, "net_disconnected", "'a'").outcome(), QStringLiteral("ok"));
    QCOMPARE(unanswered.finished.count(), 0);
}

void ScenarioPlayTest::faultLate()
{
    QVERIFY(m_daemon->start(QStringLiteral("no-reply"), {QStringLiteral("--speed"), QStringLiteral("20")}));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QStringList order;
    Request late(&control, "net_disconnected", "'wlan0'");
    Request other(&control, "net_disconnected", "'cell0'");
    connect(&late.command, &ZopControlCommand::finished, this, [&order] { order += QStringLiteral("late"); });
    connect(&other.command, &ZopControlCommand::finished, this, [&order] { order += QStringLiteral("other"); });
    QCOMPARE(late.outcome(), QStringLiteral("ok"));
    QCOMPARE(order, QStringList({QStringLiteral("other"), QStringLiteral("late")}));
}

void ScenarioPlayTest::faultDouble()
{
    QVERIFY(m_daemon->start(QStringLiteral("no-reply"), {QStringLiteral("--speed"), QStringLiteral("100")}));
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
        QCOMPARE(reply.value(QStringLiteral("err")), ZopVariant("0", "text"));
    }
    // The third message is another request's reply: no third one came for the first.
    request.assignments.insert(QStringLiteral("id"), 42);
    request.assignments.insert(QStringLiteral("msg"), QStringLiteral("nonsense"));
    QVERIFY(control.setAttributes(request));
    QTRY_COMPARE(messages.count(), 3);
    QCOMPARE(messages.last().first().value<ZopChangeset>().assignments.value(QStringLiteral("id")).toInt(), 42);
}

void ScenarioPlayTest::diesAtARequest()
{
    const char scenario[] = "{'delays': {'lease': 1}, 'interfaces': [{'name': 'a', 'type': 'wired', "
                            "'lease': {'ip_addresses': ['10.0.0.5/255.0.0.0']}}], "
                            "'faults': [{'message': 'net_connected', 'fault': 'die', 'back_after': 300, 'times': 1}]}";
    QVERIFY(m_daemon->startWith(scenario));
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

void ScenarioPlayTest::diesAtItsTime()
{
    QVERIFY(m_daemon->start(QStringLiteral("daemon-restart"), {QStringLiteral("--speed"), QStringLiteral("100")}));
    QTRY_VERIFY(m_daemon->process().errors().contains("daemon  networking back\n"));
    const QByteArray log = m_daemon->process().errors();
    const int dead = log.indexOf("daemon  networking dead\n");
    const int changed = log.indexOf("event   link-lost eth0\n");
    QVERIFY(dead != -1 && dead < changed && changed < log.indexOf("daemon  networking back\n"));
    const Seen eth0(interfacePath("eth0"));
    QCOMPARE(eth0.text("up"), QStringLiteral("false"));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    QCOMPARE(Request(&control, "net_disconnected", "'wlan0'").outcome(), QStringLiteral("ok"));
}

void ScenarioPlayTest::comesBackAtItsTime()
{
    QVERIFY(m_daemon->startWith("{'interfaces': [{'name': 'a', 'type': 'wired'}], 'timeline': ["
                                "{'at': 0, 'event': 'daemon-back'}, {'at': 1, 'event': 'daemon-dies'}, "
                                "{'at': 50, 'event': 'daemon-back'}]}"));
    QTRY_VERIFY(m_daemon->process().errors().contains("event   daemon-back\n      "));
    QTRY_VERIFY(m_daemon->process().errors().contains("daemon  networking back\n"));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    QCOMPARE(Request(&control, "net_disconnected", "'a'").outcome(), QStringLiteral("ok"));
    QCOMPARE(m_daemon->process().errors().count("networking back"), 1);
}

void ScenarioPlayTest::faultsEndAtTheirTime()
{
    QVERIFY(m_daemon->startWith("{'interfaces': [{'name': 'a', 'type': 'wired'}], "
                                "'faults': [{'fault': 'refuse', 'err': 16}], "
                                "'timeline': [{'at': 500, 'event': 'faults-end'}]}"));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, false);
    QTRY_COMPARE(Request(&control, "net_disconnected", "'a'").outcome(), QStringLiteral("ok"));
    QVERIFY(m_daemon->process().errors().contains("event   faults-end\n"));
}

void ScenarioPlayTest::theNextKeyIsWrong()
{
    QVERIFY(m_daemon->startWith(
        "{'delays': {'associate': 0}, 'interfaces': [{'name': 'w', 'type': 'wifi', 'up': false}], "
        "'wifi': {'interface': 'w', 'access_points': [{'bssid': '02:00:00:00:00:01', 'ssid': 'Home', "
        "'frequency': 2412, 'signal_level': -40, 'flags': ['WPA2-PSK-CCMP'], 'passkey': 'correct horse 7'}]}, "
        "'timeline': [{'at': 0, 'event': 'wrong-key', 'ssid': 'Home'}]}"));
    ZopObject control(QLatin1String(WifiControl), ZopObject::ReadWrite, false);
    const Seen status {QLatin1String(WifiStatus)};
    const char network[] = "{'ssid':'Home','key_mgmt':'WPA-PSK','psk':'correct horse 7'}";
    QCOMPARE(Request(&control, "wnet_new", network).answer(), QStringLiteral("0"));
    QCOMPARE(Request(&control, "wnet_select", "0").outcome(), QStringLiteral("ok"));
    QTRY_VERIFY(status.text("last_event").endsWith(QLatin1String("reason=WRONG_KEY")));
    QCOMPARE(Request(&control, "wnet_select", "0").outcome(), QStringLiteral("ok"));
    QTRY_VERIFY(status.text("last_event").startsWith(QLatin1String("CTRL-EVENT-CONNECTED")));
}

void ScenarioPlayTest::stateOutlivesTheDaemon()
{
    const char scenario[] =
        "{'interfaces': [{'name': 'a', 'type': 'wired'}, {'name': 'b', 'type': 'usb'}], 'timeline': ["
        "{'at': 0, 'event': 'daemon-dies'}, {'at': 1, 'event': 'vanish', 'interface': 'b'}]}";
    QVERIFY(m_daemon->startWith(scenario));
    QTRY_VERIFY(m_daemon->process().errors().contains("vanish b\n"));
    QVERIFY(ZopObject(interfacePath("a"), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(interfacePath("b"), ZopObject::Subscribe, false).isValid());
    QVERIFY(ZopObject(QLatin1String(Status), ZopObject::Subscribe, false).isValid());
    QVERIFY(!ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QCOMPARE(m_daemon->process().terminate(), 0);
}

void ScenarioPlayTest::publishesAnewWhenItIsBack()
{
    const char scenario[] =
        "{'interfaces': [{'name': 'a', 'type': 'wired'}, {'name': 'b', 'type': 'usb'}], 'timeline': ["
        "{'at': 0, 'event': 'daemon-dies', 'back_after': 100}, {'at': 1, 'event': 'vanish', 'interface': 'b'}, "
        "{'at': 2, 'event': 'link-lost', 'interface': 'a'}]}";
    QVERIFY(m_daemon->startWith(scenario));
    QTRY_VERIFY(m_daemon->process().errors().contains("daemon  networking back\n"));
    QVERIFY(ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QCOMPARE(Seen(interfacePath("a")).text("up"), QStringLiteral("false"));
    QVERIFY(!ZopObject(interfacePath("b"), ZopObject::Subscribe, false).isValid());
    QCOMPARE(Seen(QLatin1String(Status)).text("priority"), QStringLiteral("[\"a\"]"));
    QCOMPARE(m_daemon->process().output().count('\n'), 1);
}

void ScenarioPlayTest::interfacesComeAndGo()
{
    QVERIFY(m_daemon->makeRoot());
    ZopDirWatcher watcher {QLatin1String(Interfaces)};
    QStringList told;
    connect(&watcher, &ZopDirWatcher::objectAdded, this,
            [&told](const QString &name) { told += QLatin1Char('+') + name; });
    connect(&watcher, &ZopDirWatcher::objectRemoved, this,
            [&told](const QString &name) { told += QLatin1Char('-') + name; });

    QVERIFY(m_daemon->start(QStringLiteral("come-and-go"), {QStringLiteral("--speed"), QStringLiteral("100")}));
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

void ScenarioPlayTest::setsRawAttributes()
{
    const char scenario[] =
        "{'interfaces': [{'name': 'a', 'type': 'wired', 'mtu': 1500}], 'timeline': ["
        "{'at': 0, 'event': 'set', 'interface': 'a', 'attributes': {"
        "'ip_addresses': {'encoding': 'json', 'text': '[1,'}, 'up': 'perhaps', 'type': {'base64': '/wD+'}}},"
        "{'at': 0, 'event': 'remove', 'interface': 'a', 'attributes': ['mtu']},"
        "{'at': 0, 'event': 'set', 'object': 'status_public', 'attributes': {'default_interface': 'nobody'}}]}";
    QVERIFY(m_daemon->startWith(scenario));
    const Seen status {QLatin1String(Status)};
    QTRY_COMPARE(status.text("default_interface"), QStringLiteral("nobody"));
    const Seen a(interfacePath("a"));
    QCOMPARE(a.object.attribute(QStringLiteral("ip_addresses")), ZopVariant("[1,", "json"));
    QCOMPARE(a.text("up"), QStringLiteral("perhaps"));
    QCOMPARE(a.object.attribute(QStringLiteral("type")), ZopVariant(QByteArray("\xff\0\xfe", 3), "text"));
    QVERIFY(!a.object.attribute(QStringLiteral("mtu")).isValid());
}

QTEST_GUILESS_MAIN(ScenarioPlayTest)
#include "tst_scenarioplay.moc"
