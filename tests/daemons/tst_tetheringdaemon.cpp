// SPDX-License-Identifier: Apache-2.0
#include "daemonclient.h"
#include "zopdirwatcher.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

#include <sys/stat.h>

using namespace morvek;

namespace {

const char Scope[] = "{'type':'lan','lan_type':'wlanap'}";
const char StoreName[] = ".morvek-hostd-hotspot.json";

const char HeadunitProfile[] =
    R"({"lancfg":{"dhcp_lease_time":"120","gateway_address":"192.168.0.1","gateway_subnet":"255.255.255.0"},)"
    R"("lanprofile":{"autoshutdown_time":600,"block_conn":false,"max_num_sta":10,"mhs_band":"5.0",)"
    R"("passphrase":"drive safely 8","privacy":false,"security_type":"wpa2","ssid":"Morvek Car"},)"
    R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";
const char OtherProfile[] =
    R"({"lancfg":{"dhcp_lease_time":"60","gateway_address":"10.0.0.1","gateway_subnet":"255.0.0.0"},)"
    R"("lanprofile":{"autoshutdown_time":0,"block_conn":true,"max_num_sta":1,"mhs_band":"2.4",)"
    R"("passphrase":"open sesame 42","privacy":true,"security_type":"wpa_mixed","ssid":"Caravan"},)"
    R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";

const QStringList Activated {QStringLiteral("state=ACTIVE")};
const QStringList Deactivated {QStringLiteral("state=INACTIVE")};

} // namespace

/*! What the tethering manager publishes, answers and keeps, as its clients see it. */
class TetheringDaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_daemon = std::make_unique<DaemonFixture>(); }
    void cleanup() { m_daemon.reset(); }

    void publishes();
    void publishesTheStatusFirst();
    void publishesNothingWithoutAHotspot();
    void publishesNothingWhenItIsLeftOut();
    void overwritesNothingOfAnotherDaemon();
    void repliesAsItShould_data();
    void repliesAsItShould();
    void startsAndStops();
    void startsWithoutStoring();
    void updates();
    void refuses_data();
    void refuses();
    void refusesWhatItCannotStore();
    void keepsTheProfileForAnotherRun();
    void saysThatTheStoredProfileWins_data();
    void saysThatTheStoredProfileWins();
    void saysNothingOfAProfileThatNobodySees();
    void keepsTheProfilePrivate();
    void reportsAStoredProfileThatIsWrong();
    void neverShowsAPassphrase();
    void takesOverAFormerRun();
    void tellsNothingAnewOfAFormerRun();

private:
    bool startHeadunit();
    std::unique_ptr<ZopObject> openControl() const;
    QString storeFile() const { return m_daemon->root() + QLatin1Char('/') + QLatin1String(StoreName); }

    std::unique_ptr<DaemonFixture> m_daemon;
};

bool TetheringDaemonTest::startHeadunit()
{
    return m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--speed"), QStringLiteral("100")});
}

std::unique_ptr<ZopObject> TetheringDaemonTest::openControl() const
{
    return std::make_unique<ZopObject>(QLatin1String(TetheringControl), ZopObject::ReadWrite, true);
}

void TetheringDaemonTest::publishes()
{
    QVERIFY(startHeadunit());
    const Seen status {QLatin1String(TetheringStatus)};
    QCOMPARE(status.object.attribute(QStringLiteral("state")), ZopVariant("INACTIVE", "text"));
    QVERIFY(openControl()->isValid());
    QVERIFY(!QFile::exists(storeFile()));
}

// Clients open the status as soon as they see the control object.
void TetheringDaemonTest::publishesTheStatusFirst()
{
    QVERIFY(m_daemon->makeRoot());
    ZopDirWatcher watcher(QStringLiteral("/zop/services/tethering/"));
    QVERIFY2(watcher.isValid(), qPrintable(watcher.errorString()));
    QStringList states;
    connect(&watcher, &ZopDirWatcher::objectAdded, this, [&states](const QString &name) {
        if (name == QLatin1String("control"))
            states += Seen(QLatin1String(TetheringStatus)).text("state");
    });
    watcher.setNameCacheEnabled(true);
    QVERIFY(startHeadunit());
    QTRY_COMPARE(states, QStringList {QStringLiteral("INACTIVE")});
}

void TetheringDaemonTest::publishesNothingWithoutAHotspot()
{
    QVERIFY(m_daemon->start(QStringLiteral("come-and-go")));
    QVERIFY(!ZopObject(QLatin1String(TetheringStatus), ZopObject::Subscribe, false).isValid());
    QVERIFY(!openControl()->isValid());
}

void TetheringDaemonTest::publishesNothingWhenItIsLeftOut()
{
    QVERIFY(m_daemon->start(QStringLiteral("headunit"), {QStringLiteral("--without"), QStringLiteral("tethering")}));
    QVERIFY(!ZopObject(QLatin1String(TetheringStatus), ZopObject::Subscribe, false).isValid());
    QVERIFY(!openControl()->isValid());
    QVERIFY(ZopObject(QLatin1String(Control), ZopObject::ReadWrite, true).isValid());
    QVERIFY(ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, true).isValid());
}

void TetheringDaemonTest::overwritesNothingOfAnotherDaemon()
{
    QVERIFY(m_daemon->makeRoot());
    const ZopObject another(QLatin1String(TetheringControl), ZopObject::Publish, true);
    QVERIFY2(another.isValid(), qPrintable(another.errorString()));
    ZopChangeset foreign;
    foreign.assignments.insert(QStringLiteral("state"), QStringLiteral("ACTIVE"));
    QVERIFY(ZopObject::create(QLatin1String(TetheringStatus), foreign));
    const Seen status {QLatin1String(TetheringStatus)};
    const auto ended = HostdProcess::run({QStringLiteral("--root"), m_daemon->root()});
    QCOMPARE(ended.code, 1);
    QCOMPARE(ended.output, QByteArray());
    QCOMPARE(ended.errors, QByteArray("morvek-hostd: another daemon serves \"/zop/services/tethering/control\"\n"));
    QCOMPARE(Seen(QLatin1String(TetheringStatus)).text("state"), QStringLiteral("ACTIVE"));
}

void TetheringDaemonTest::repliesAsItShould_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<QByteArray>("answer");

    QTest::addRow("retrieve") << "retrieve_profile" << QByteArray(Scope) << QByteArray(HeadunitProfile);
    QTest::addRow("update") << "update_profile" << QByteArray(OtherProfile) << QByteArray();
    QTest::addRow("start") << "start" << QByteArray(OtherProfile) << QByteArray();
    QTest::addRow("stop") << "stop" << QByteArray() << QByteArray();
}

void TetheringDaemonTest::repliesAsItShould()
{
    QFETCH(QString, message);
    QFETCH(QByteArray, dat);
    QFETCH(QByteArray, answer);
    QVERIFY(startHeadunit());
    ZopObject control(QLatin1String(TetheringControl), ZopObject::ReadWrite, false);
    control.setAttributeCacheEnabled(true);
    QSignalSpy messages(&control, &ZopObject::attributesChanged);
    ZopChangeset request;
    request.assignments.insert(QStringLiteral("msg"), message);
    request.assignments.insert(QStringLiteral("id"), 41);
    if (!dat.isEmpty())
        request.assignments.insert(QStringLiteral("dat"), ZopVariant(dat.replace('\'', '"'), "json"));
    QVERIFY(control.setAttributes(request));
    QTRY_COMPARE(messages.count(), 1);
    auto reply = messages.first().first().value<ZopChangeset>().assignments;
    QCOMPARE(reply.take(QStringLiteral("res")), ZopVariant(message));
    QCOMPARE(reply.take(QStringLiteral("id")).toInt(), 41);
    QCOMPARE(reply.take(QStringLiteral("err")), ZopVariant("0", "text"));
    if (!answer.isEmpty())
        QCOMPARE(reply.take(QStringLiteral("dat")), ZopVariant(answer, "json"));
    QCOMPARE(reply.keys(), QStringList());
}

void TetheringDaemonTest::startsAndStops()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(TetheringStatus)};
    QCOMPARE(Request(control.get(), "start", HeadunitProfile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(), Activated);
    // Nothing new, and nothing is told.
    QCOMPARE(Request(control.get(), "start", OtherProfile).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control.get(), "stop").outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(), Activated + Deactivated);
    QCOMPARE(Request(control.get(), "stop").outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control.get(), "start", OtherProfile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(), Activated + Deactivated + Activated);
}

void TetheringDaemonTest::startsWithoutStoring()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    const Seen status {QLatin1String(TetheringStatus)};
    const QByteArray brief = QByteArray(OtherProfile).replace("\"autoshutdown_time\":0", "\"autoshutdown_time\":1");
    QCOMPARE(Request(control.get(), "start", brief.constData()).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control.get(), "retrieve_profile", Scope).answer(), QLatin1String(HeadunitProfile));
    QVERIFY(!QFile::exists(storeFile()));
    // It runs with that, though.
    QTRY_COMPARE(status.lines(), Activated + Deactivated);
}

void TetheringDaemonTest::updates()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QCOMPARE(Request(control.get(), "update_profile", OtherProfile).outcome(), QStringLiteral("ok"));
    QCOMPARE(Request(control.get(), "retrieve_profile", Scope).answer(), QLatin1String(OtherProfile));
    // Storing is not starting.
    QCOMPARE(Seen(QLatin1String(TetheringStatus)).text("state"), QStringLiteral("INACTIVE"));
}

void TetheringDaemonTest::refuses_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("dat");
    QTest::addColumn<QString>("outcome");

    const auto row = [](const char *name, const char *message, const char *dat, const char *outcome) {
        QTest::addRow("%s", name) << QByteArray(message) << QByteArray(dat) << QString::fromUtf8(outcome);
    };
    row("message", "restart", nullptr, "1 unknown message \"restart\"");
    row("retrieve", "retrieve_profile", nullptr, "2 dat must be {\"type\": \"lan\", \"lan_type\": \"wlanap\"}");
    row("update", "update_profile", "{}", "2 dat holds no profile");
    row("start", "start", "{}", "2 dat holds no profile");
    row("stop", "stop", "{}", "2 stop takes no dat");
}

void TetheringDaemonTest::refuses()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, dat);
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QTEST(Request(control.get(), message.constData(), dat.isNull() ? nullptr : dat.constData()).outcome(), "outcome");
}

void TetheringDaemonTest::refusesWhatItCannotStore()
{
    // Nothing can take the place of this, for root neither.
    QVERIFY(m_daemon->makeRoot() && QDir().mkdir(storeFile()));
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QCOMPARE(Request(control.get(), "update_profile", OtherProfile).outcome(),
             QStringLiteral("8 cannot store the profile: Is a directory"));
    QCOMPARE(Request(control.get(), "retrieve_profile", Scope).answer(), QLatin1String(HeadunitProfile));
    QCOMPARE(Request(control.get(), "start", OtherProfile).outcome(), QStringLiteral("ok"));
    QVERIFY(m_daemon->process().errors().contains("is not used: is not a file of at most 64 KiB\n"));
}

void TetheringDaemonTest::keepsTheProfileForAnotherRun()
{
    QVERIFY(startHeadunit());
    QCOMPARE(Request(openControl().get(), "update_profile", OtherProfile).outcome(), QStringLiteral("ok"));
    m_daemon->kill();
    QVERIFY(startHeadunit());
    QCOMPARE(Request(openControl().get(), "retrieve_profile", Scope).answer(), QLatin1String(OtherProfile));
}

void TetheringDaemonTest::saysThatTheStoredProfileWins_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<bool>("isSaid");

    const QByteArray scenario(HeadunitProfile);
    QTest::addRow("nothing") << QByteArray() << false;
    QTest::addRow("the same") << scenario << false;
    QTest::addRow("the same but for what nobody reads")
        << QByteArray(scenario).replace("\"privacy\"", "\"band\":\"5\",\"privacy\"") << false;
    QTest::addRow("the same number") << QByteArray(scenario).replace("600", "600.0") << false;
    QTest::addRow("another") << QByteArray(OtherProfile) << true;
    QTest::addRow("another passphrase") << QByteArray(scenario).replace("safely 8", "safely 9") << true;
    QTest::addRow("another time") << QByteArray(scenario).replace("600", "601") << true;
    QTest::addRow("another network") << QByteArray(scenario).replace("192.168.0.1", "192.168.7.1") << true;
}

// Not only with --verbose; and with nothing that is secret.
void TetheringDaemonTest::saysThatTheStoredProfileWins()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, isSaid);
    QVERIFY(m_daemon->makeRoot());
    if (!stored.isEmpty()) {
        QFile file(storeFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(stored), qint64(stored.size()));
    }
    QVERIFY(m_daemon->process().start(m_daemon->root(), {}));
    QCOMPARE(m_daemon->process().errors(),
             isSaid ? "morvek-hostd: the hotspot's profile is the one that is stored in \"" + storeFile().toUtf8()
                     + "\", not the scenario's: --fresh forgets it\n"
                    : QByteArray());
    if (!isSaid)
        return;
    m_daemon->kill();
    QVERIFY(m_daemon->process().start(m_daemon->root(), {QStringLiteral("--fresh")}));
    QCOMPARE(m_daemon->process().errors(), QByteArray());
    QCOMPARE(Request(openControl().get(), "retrieve_profile", Scope).answer(), QLatin1String(HeadunitProfile));
}

void TetheringDaemonTest::saysNothingOfAProfileThatNobodySees()
{
    QVERIFY(startHeadunit());
    QCOMPARE(Request(openControl().get(), "update_profile", OtherProfile).outcome(), QStringLiteral("ok"));
    m_daemon->kill();
    QVERIFY(m_daemon->process().start(m_daemon->root(), {QStringLiteral("--without"), QStringLiteral("tethering")}));
    QCOMPARE(m_daemon->process().errors(), QByteArray());
}

void TetheringDaemonTest::keepsTheProfilePrivate()
{
    QVERIFY(startHeadunit());
    QCOMPARE(Request(openControl().get(), "update_profile", OtherProfile).outcome(), QStringLiteral("ok"));
    struct stat status;
    QCOMPARE(stat(QFile::encodeName(storeFile()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0600));
    QCOMPARE(QDir(m_daemon->root()).entryList({QStringLiteral("*hotspot*")}, QDir::AllEntries | QDir::Hidden),
             QStringList {QLatin1String(StoreName)});
}

void TetheringDaemonTest::reportsAStoredProfileThatIsWrong()
{
    QVERIFY(m_daemon->makeRoot());
    QFile file(storeFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"lanprofile": {"passphrase": "TopSecret1"}})");
    file.close();
    QVERIFY(startHeadunit());
    QCOMPARE(m_daemon->process().errors(),
             "morvek-hostd: the stored profile \"" + storeFile().toUtf8() + "\" is not used: \"type\" is missing\n");
    const auto control = openControl();
    QCOMPARE(Request(control.get(), "retrieve_profile", Scope).answer(), QLatin1String(HeadunitProfile));
    QCOMPARE(Request(control.get(), "update_profile", OtherProfile).outcome(), QStringLiteral("ok"));
}

void TetheringDaemonTest::neverShowsAPassphrase()
{
    QVERIFY(startHeadunit());
    const auto control = openControl();
    QCOMPARE(Request(control.get(), "retrieve_profile", Scope).answer(), QLatin1String(HeadunitProfile));
    const QByteArray wrong = QByteArray(OtherProfile).replace("open sesame 42", "TopSecret\xc3\xa9");
    const QByteArray elsewhere = QByteArray(OtherProfile).replace("wpa_mixed", "TopSecret1");
    const QByteArray asKey = QByteArray(OtherProfile).replace("\"ssid\"", "\"TopSecret1\"");
    QString refusals;
    for (const char *message : {"update_profile", "start"}) {
        for (const QByteArray &dat : {wrong, elsewhere, asKey, wrong.chopped(1), QByteArray("TopSecret1")})
            refusals += Request(control.get(), message, dat.constData()).outcome();
    }
    for (const char *message : {"retrieve_profile", "stop"})
        refusals += Request(control.get(), message, "TopSecret1").outcome();
    QVERIFY2(!refusals.contains(QLatin1String("TopSecret")), qPrintable(refusals));
    QCOMPARE(Request(control.get(), "start", OtherProfile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(Seen(QLatin1String(TetheringStatus)).text("state"), QStringLiteral("ACTIVE"));
    QCOMPARE(Request(control.get(), "update_profile", OtherProfile).outcome(), QStringLiteral("ok"));

    const QByteArray log = m_daemon->process().errors();
    // The requests are told, though.
    QVERIFY2(log.contains("start id=14 \"Caravan\" wpa_mixed\n"), log.constData());
    QVERIFY2(log.contains("update_profile id=15 \"Caravan\" wpa_mixed\n"), log.constData());
    QVERIFY(QFile::remove(storeFile())); // the one place where it belongs
    const QByteArrayList places =
        everythingReadable(m_daemon->root(), m_daemon->process().processId()) + QByteArrayList {log};
    QVERIFY(places.size() > 7);
    for (const QByteArray &place : places) {
        for (const char *secret : {"TopSecret", "open sesame 42", "drive safely 8"})
            QVERIFY2(!place.contains(secret), place.constData());
    }
}

void TetheringDaemonTest::takesOverAFormerRun()
{
    QVERIFY(startHeadunit());
    Seen status {QLatin1String(TetheringStatus)};
    QCOMPARE(Request(openControl().get(), "start", HeadunitProfile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(), Activated);
    m_daemon->kill();
    ZopObject writer(QLatin1String(TetheringStatus), ZopObject::ReadWrite, false);
    ZopChangeset stale;
    stale.assignments.insert(QStringLiteral("stale"), QStringLiteral("yes"));
    QVERIFY(writer.setAttributes(stale));
    QTRY_VERIFY(status.has("stale"));
    status.updates.clear();

    QVERIFY(startHeadunit());
    QTRY_COMPARE(status.lines(), QStringList {QStringLiteral("state=INACTIVE -stale")});
}

void TetheringDaemonTest::tellsNothingAnewOfAFormerRun()
{
    QVERIFY(startHeadunit());
    m_daemon->kill();
    const Seen status {QLatin1String(TetheringStatus)};
    QVERIFY(startHeadunit());
    QCOMPARE(Request(openControl().get(), "start", HeadunitProfile).outcome(), QStringLiteral("ok"));
    QTRY_COMPARE(status.lines(), Activated);
}

QTEST_GUILESS_MAIN(TetheringDaemonTest)
#include "tst_tetheringdaemon.moc"
