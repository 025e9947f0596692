// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char Scope[] = "{'type':'lan','lan_type':'wlanap'}";
const char Profile[] =
    R"({"lancfg":{"dhcp_lease_time":"120","gateway_address":"192.168.0.1","gateway_subnet":"255.255.255.0"},)"
    R"("lanprofile":{"autoshutdown_time":600,"block_conn":false,"max_num_sta":10,"mhs_band":"5.0",)"
    R"("passphrase":"drive safely 8","privacy":false,"security_type":"wpa2","ssid":"Morvek Car"},)"
    R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";

const char Other[] = R"({"lancfg":{"dhcp_lease_time":"60","gateway_address":"10.0.0.1","gateway_subnet":"255.0.0.0"},)"
                     R"("lanprofile":{"autoshutdown_time":600,"block_conn":true,"max_num_sta":1,"mhs_band":"2.4",)"
                     R"("passphrase":"open sesame 42","privacy":true,"security_type":"wpa_mixed","ssid":"Caravan"},)"
                     R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";

/*! A scenario with a hotspot and further \a keys. */
QByteArray scenarioWith(const char *keys)
{
    return QByteArray("{'delays': {'hotspot_start': 0, 'hotspot_stop': 0}, 'interfaces': [], 'hotspot': {"
                      "'active': true, 'profile': {'ssid': 'a', 'passphrase': 'eightbit', 'mhs_band': '2.4', "
                      "'max_num_sta': 1, 'security_type': 'none', 'autoshutdown_time': 0, 'privacy': false, "
                      "'block_conn': false}}, ")
        + keys + '}';
}

const QString Activated = QStringLiteral("state=ACTIVE");
const QString Deactivated = QStringLiteral("state=INACTIVE");

} // namespace

/*! The hotspot's scenarios, as clients see them. */
class HotspotPlayTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup();

    void refused();
    void neverActive();
    void ignoredIsNotBegun();
    void inactivity();
    void diesInAStart();
    void diesAtItsTime();
    void hotspotOutlivesItsDaemon();
    void garbageInTheStatus();
    void garbageInReplies();
    void noReply();
    void late();
    void doubled();
    void somebodyElse();
    void somebodyElseStartsWithWhatIsStored();
    void changedStatusStaysUntilTheWorldChanges();
    void activeHotspotRunsWithWhatIsStored();
    void otherDaemonsToo();

private:
    bool start(const char *scenario, const char *speed = "100");
    bool startWith(const QByteArray &scenario);
    /*! Before the daemon starts, so that no event of the first moment is missed: the start itself is told, too. */
    bool watch();

    std::unique_ptr<DaemonFixture> m_daemon;
    std::unique_ptr<ZopObject> m_control;
    std::unique_ptr<Seen> m_status;
};

void HotspotPlayTest::cleanup()
{
    m_status.reset();
    m_control.reset();
    m_daemon.reset();
}

bool HotspotPlayTest::start(const char *scenario, const char *speed)
{
    if (!watch() || !m_daemon->start(QLatin1String(scenario), {QStringLiteral("--speed"), QLatin1String(speed)}))
        return false;
    m_control = std::make_unique<ZopObject>(QLatin1String(TetheringControl), ZopObject::ReadWrite, true);
    return true;
}

bool HotspotPlayTest::startWith(const QByteArray &scenario)
{
    if (!watch() || !m_daemon->startWith(scenario.constData()))
        return false;
    m_control = std::make_unique<ZopObject>(QLatin1String(TetheringControl), ZopObject::ReadWrite, true);
    return true;
}

bool HotspotPlayTest::watch()
{
    if (!m_daemon->makeRoot() || !ZopObject::create(QLatin1String(TetheringStatus), {}))
        return false;
    m_status = std::make_unique<Seen>(QLatin1String(TetheringStatus));
    return true;
}

void HotspotPlayTest::refused()
{
    QVERIFY(start("hotspot-refused"));
    ZopObject *control = m_control.get();
    QCOMPARE(Request(control, "retrieve_profile", Scope).outcome(), QStringLiteral("5 input/output error"));
    QCOMPARE(Request(control, "update_profile", Other).outcome(), QStringLiteral("28 no space left on device"));
    QCOMPARE(Request(control, "start", Profile).outcome(), QStringLiteral("16 device or resource busy"));
    QCOMPARE(Request(control, "stop").outcome(), QStringLiteral("13 permission denied"));
    QCOMPARE(Request(control, "retrieve_profile", Scope).answer(), QLatin1String(Profile));
    QCOMPARE(Request(control, "update_profile", Other).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control, "start", Profile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated}));
    QCOMPARE(Request(control, "stop").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated, Deactivated}));
}

void HotspotPlayTest::neverActive()
{
    // Nothing takes any time: what a request has begun is done before the next one is answered.
    QVERIFY(start("hotspot-never-active", "10000"));
    for (int i = 0; i < 2; ++i)
        QCOMPARE(Request(m_control.get(), "start", Profile).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "update_profile", Other).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "retrieve_profile", Scope).answer(), QLatin1String(Other));
    QCOMPARE(m_status->lines(), QStringList {Deactivated});
}

void HotspotPlayTest::ignoredIsNotBegun()
{
    QVERIFY(startWith(scenarioWith("'faults': [{'fault': 'ignore', 'message': 'stop', 'times': 1},"
                                   "{'fault': 'ignore', 'message': 'update_profile'},"
                                   "{'fault': 'ignore', 'message': 'retrieve_profile', 'skip': 1}]")));
    QCOMPARE(Request(m_control.get(), "stop").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "update_profile", Other).outcome(), QStringLiteral("ok"));
    QVERIFY(Request(m_control.get(), "retrieve_profile", Scope).answer().contains(QStringLiteral("eightbit")));
    QCOMPARE(Request(m_control.get(), "retrieve_profile", Scope).answer(), QString());
    QCOMPARE(m_status->lines(), QStringList {Activated});
    QCOMPARE(Request(m_control.get(), "stop").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Activated, Deactivated}));
    QCOMPARE(QDir(m_daemon->root()).entryList({QStringLiteral("*hotspot*")}, QDir::AllEntries | QDir::Hidden),
             QStringList());
}

void HotspotPlayTest::inactivity()
{
    QVERIFY(start("hotspot-inactivity"));
    QCOMPARE(Request(m_control.get(), "start", QByteArray(Profile).replace("600", "5").constData()).outcome(),
             QStringLiteral("ok"));
    QTRY_COMPARE_WITH_TIMEOUT(m_status->lines(), QStringList({Deactivated, Activated, Deactivated}), Patience);
    // The one that is stored is the scenario's.
    const QString stored = Request(m_control.get(), "retrieve_profile", Scope).answer();
    QCOMPARE(stored, QString::fromUtf8(QByteArray(Profile).replace("600", "5")));
}

void HotspotPlayTest::diesInAStart()
{
    QVERIFY(start("hotspot-daemon-restart", "20"));
    QCOMPARE(Request(m_control.get(), "update_profile", Other).outcome(), QStringLiteral("ok"));
    QVERIFY(Request(m_control.get(), "start", Profile).outcome().startsWith(QStringLiteral("-1 ")));
    QTRY_COMPARE_WITH_TIMEOUT(Request(m_control.get(), "retrieve_profile", Scope).answer(), QLatin1String(Other),
                              Patience);
    // What was open is not done, and nothing is told anew.
    QCOMPARE(m_status->lines(), QStringList {Deactivated});
    QCOMPARE(Request(m_control.get(), "start", Profile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated}));
    const QByteArray log = m_daemon->process().errors();
    QVERIFY(log.contains("daemon  tethering dead\n") && log.contains("daemon  tethering back\n"));
}

void HotspotPlayTest::diesAtItsTime()
{
    QVERIFY(start("hotspot-daemon-restart"));
    QTRY_VERIFY_WITH_TIMEOUT(m_daemon->process().errors().contains("daemon  tethering back\n"), Patience);
    // The world went on, and what differs was told when the daemon was back.
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated}));
    const QByteArray log = m_daemon->process().errors();
    const int dead = log.indexOf("daemon  tethering dead\n");
    const int started = log.indexOf("event   hotspot-starts\n");
    QVERIFY(dead != -1 && dead < started && started < log.indexOf("daemon  tethering back\n"));
    QVERIFY(ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
}

void HotspotPlayTest::hotspotOutlivesItsDaemon()
{
    QVERIFY(startWith(scenarioWith("'faults': [{'fault': 'die', 'message': 'stop', 'back_after': 50, 'times': 1}]")));
    QVERIFY(Request(m_control.get(), "stop").outcome().startsWith(QStringLiteral("-1 ")));
    QTRY_VERIFY_WITH_TIMEOUT(m_daemon->process().errors().contains("daemon  tethering back\n"), Patience);
    QCOMPARE(Request(m_control.get(), "stop").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Activated, Deactivated}));
}

void HotspotPlayTest::garbageInTheStatus()
{
    QVERIFY(start("hotspot-garbage"));
    QTRY_COMPARE_WITH_TIMEOUT(m_status->updates.count(), 7, Patience);
    const auto state = [this](int update) {
        return m_status->update(update).assignments.value(QStringLiteral("state"));
    };
    QCOMPARE(state(0), ZopVariant("INACTIVE", "text"));
    QCOMPARE(state(1), ZopVariant("PERHAPS", "text"));
    QCOMPARE(state(2), ZopVariant("active", "text"));
    QCOMPARE(state(3), ZopVariant("1", "number"));
    QCOMPARE(state(4), ZopVariant("ACTIVE\xff", "text"));
    QCOMPARE(m_status->update(5).removals, QSet<QString> {QStringLiteral("state")});
    QCOMPARE(m_status->lines().at(6), QStringLiteral("nonsense=true state=INACTIVE"));
}

void HotspotPlayTest::garbageInReplies()
{
    QVERIFY(start("hotspot-garbage", "1"));
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    control.setAttributeCacheEnabled(true);
    QSignalSpy messages(&control, &ZopObject::attributesChanged);
    int id = 100;
    const auto ask = [&](const char *message, const char *dat) {
        ZopChangeset request;
        request.assignments.insert(QStringLiteral("msg"), QString::fromLatin1(message));
        request.assignments.insert(QStringLiteral("id"), ++id);
        if (dat)
            request.assignments.insert(QStringLiteral("dat"), ZopVariant(QByteArray(dat).replace('\'', '"'), "json"));
        const int before = messages.count();
        if (!control.setAttributes(request) || !QTest::qWaitFor([&] { return messages.count() > before; }, Patience))
            return QStringLiteral("no reply");
        const auto reply = messages.last().first().value<ZopChangeset>().assignments;
        QStringList words;
        for (auto it = reply.begin(); it != reply.end(); ++it)
            words += it.key() + QLatin1Char('=') + it.value().toString();
        return words.join(QLatin1Char(' '));
    };
    QCOMPARE(ask("retrieve_profile", Scope),
             QStringLiteral("dat={\"lanprofile\":{\"ssid\":7,\"passphrase\":[],\"mhs_band\":\"60\","
                            "\"max_num_sta\":\"many\"}} err=0 id=101 res=retrieve_profile"));
    QCOMPARE(ask("retrieve_profile", Scope),
             QStringLiteral("dat={\"lanprofile\":{\"security_type\":8,\"autoshutdown_time\":[],\"privacy\":1,"
                            "\"block_conn\":null}} err=0 id=102 res=retrieve_profile"));
    QCOMPARE(ask("retrieve_profile", Scope),
             QStringLiteral("dat={\"lanprofile\":{\"ssid\" err=0 id=103 res=retrieve_profile"));
    QCOMPARE(
        ask("retrieve_profile", Scope),
        QStringLiteral("dat={\"lanprofile\":{\"ssid\":\"Text\",\"passphrase\":\"not JSON by its encoding\"}} err=0 "
                       "id=104 res=retrieve_profile"));
    QCOMPARE(messages.last().first().value<ZopChangeset>().assignments.value(QStringLiteral("dat")).encoding(),
             QByteArray("text"));
    QCOMPARE(ask("retrieve_profile", Scope),
             QStringLiteral("dat=[1,null,\"lanprofile\"] err=0 id=105 res=retrieve_profile"));
    QCOMPARE(ask("retrieve_profile", Scope), QStringLiteral("err=0 id=106 res=retrieve_profile"));
    QCOMPARE(ask("retrieve_profile", Scope), QStringLiteral("err=0 id=107 res=start"));
    QCOMPARE(ask("update_profile", Other), QStringLiteral("err=0 id=108 res=stop"));
    QCOMPARE(ask("update_profile", Other), QStringLiteral("id=109 res=update_profile"));
    QCOMPARE(ask("start", Profile), QStringLiteral("dat=7 id=110 res=retrieve_profile"));
    QCOMPARE(ask("start", Profile), QStringLiteral("err=zero errmsg= id=111 res=start"));
    QCOMPARE(ask("start", Profile), QStringLiteral("err=0 id=112 res=restart"));
    QVERIFY(ask("stop", nullptr).startsWith(QStringLiteral("err=0 errmsg=")));
    QCOMPARE(messages.last().first().value<ZopChangeset>().assignments.value(QStringLiteral("errmsg")),
             ZopVariant(QByteArray("\xff\0\xfe", 3), "text"));

    // Nothing of that was carried out, and the daemon itself is not confused.
    QCOMPARE(ask("retrieve_profile", Scope),
             QStringLiteral("dat=%1 err=0 id=114 res=retrieve_profile").arg(QLatin1String(Profile)));
    QCOMPARE(ask("update_profile", Other), QStringLiteral("err=0 id=115 res=update_profile"));
    QCOMPARE(ask("stop", nullptr), QStringLiteral("err=0 id=116 res=stop"));
    QVERIFY(!m_status->lines().contains(Activated));
    QCOMPARE(ask("start", Profile), QStringLiteral("err=0 id=117 res=start"));
    QTRY_VERIFY(m_status->lines().contains(Activated));
    const QByteArray log = m_daemon->process().errors();
    QVERIFY2(log.contains("reply   retrieve_profile id=101 as the fault says\n"), log.constData());
    QVERIFY(!log.contains("not JSON by its encoding"));
}

void HotspotPlayTest::noReply()
{
    QVERIFY(start("hotspot-no-reply"));
    const Request unanswered(m_control.get(), "retrieve_profile", Scope);
    QCOMPARE(Request(m_control.get(), "retrieve_profile", Scope).answer(), QLatin1String(Profile));
    QCOMPARE(Request(m_control.get(), "start", Profile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated}));
    const Request silent(m_control.get(), "stop");
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated, Deactivated}));
    QCOMPARE(Request(m_control.get(), "stop").outcome(), QStringLiteral("ok"));
    QCOMPARE(unanswered.finished.count(), 0);
    QCOMPARE(silent.finished.count(), 0);
}

void HotspotPlayTest::late()
{
    QVERIFY(start("hotspot-no-reply", "20"));
    QVERIFY(Request(m_control.get(), "unknown").outcome().startsWith(QStringLiteral("1 ")));
    Request late(m_control.get(), "update_profile", Other);
    const Request dropped(m_control.get(), "retrieve_profile", Scope);
    QCOMPARE(Request(m_control.get(), "retrieve_profile", Scope).answer(), QLatin1String(Profile));
    QCOMPARE(late.finished.count(), 0);
    QCOMPARE(late.outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "retrieve_profile", Scope).answer(), QLatin1String(Other));
}

void HotspotPlayTest::doubled()
{
    QVERIFY(start("hotspot-no-reply"));
    QSignalSpy messages(m_control.get(), &ZopObject::attributesChanged);
    QCOMPARE(Request(m_control.get(), "start", Profile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(messages.count(), 2);
    for (const QList<QVariant> &arguments : messages)
        QCOMPARE(arguments.first().value<ZopChangeset>().assignments.value(QStringLiteral("res")).toString(),
                 QStringLiteral("start"));
    QTRY_COMPARE(m_status->lines(), QStringList({Deactivated, Activated}));
}

void HotspotPlayTest::somebodyElse()
{
    QVERIFY(startWith(scenarioWith("'timeline': [{'at': 0, 'event': 'hotspot-stops'},"
                                   "{'at': 200, 'event': 'hotspot-starts'}]")));
    QTRY_COMPARE(m_status->lines(), QStringList({Activated, Deactivated, Activated}));
}

void HotspotPlayTest::somebodyElseStartsWithWhatIsStored()
{
    QVERIFY(startWith(scenarioWith("'timeline': [{'at': 300, 'event': 'hotspot-stops'},"
                                   "{'at': 500, 'event': 'hotspot-starts'}]")));
    // At this speed a second of inactivity takes as long as it says.
    QCOMPARE(Request(m_control.get(), "update_profile", QByteArray(Other).replace("600", "1").constData()).outcome(),
             QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines(), QStringList({Activated, Deactivated, Activated, Deactivated}));
}

void HotspotPlayTest::changedStatusStaysUntilTheWorldChanges()
{
    QVERIFY(
        startWith(scenarioWith("'timeline': [{'at': 0, 'event': 'set', 'object': 'tethering/status', "
                               "'attributes': {'state': 'INACTIVE', 'more': 'x'}}, "
                               "{'at': 0, 'event': 'remove', 'object': 'tethering/status', 'attributes': ['more']}]")));
    QTRY_COMPARE(m_status->lines(),
                 QStringList({Activated, QStringLiteral("more=x state=INACTIVE"), QStringLiteral("-more")}));
    // It is active all the same.
    QCOMPARE(Request(m_control.get(), "start", Profile).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "stop").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(m_control.get(), "start", Profile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(m_status->lines().mid(3), QStringList({Deactivated, Activated}));
}

void HotspotPlayTest::activeHotspotRunsWithWhatIsStored()
{
    const QByteArray scenario = scenarioWith("'seed': 1");
    QVERIFY(startWith(scenario));
    QCOMPARE(Request(m_control.get(), "update_profile", QByteArray(Other).replace("600", "1").constData()).outcome(),
             QStringLiteral("ok"));
    m_daemon->kill();
    m_status->updates.clear();
    QVERIFY(m_daemon->startWith(scenario.constData()));
    QTRY_COMPARE(m_status->text("state"), QStringLiteral("INACTIVE"));
}

void HotspotPlayTest::otherDaemonsToo()
{
    QVERIFY(startWith(
        scenarioWith("'faults': [{'fault': 'ignore', 'message': 'net_connected'},"
                     "{'fault': 'answer', 'message': 'net_disconnected', 'err': 7, 'errmsg': 'seven', 'dat': 'x'}]")));
    ZopObject control(QLatin1String(Control), ZopObject::ReadWrite, true);
    // Whatever it is.
    QCOMPARE(Request(&control, "net_connected", "nonsense").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(&control, "net_disconnected", "nonsense").outcome(), QStringLiteral("7 seven"));
}

QTEST_GUILESS_MAIN(HotspotPlayTest)
#include "tst_hotspotplay.moc"
