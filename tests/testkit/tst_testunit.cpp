// SPDX-License-Identifier: Apache-2.0
#include "unitfailure.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

namespace {

const QString Eth0 = QStringLiteral("/zop/services/networking/all/interfaces/eth0");
const QString WifiStatus = QStringLiteral("/zop/services/wifi/status");
const QString HotspotStatus = QStringLiteral("/zop/services/tethering/status");
const QString Done = QStringLiteral("done");

const QVariantMap OfEth0 {{QStringLiteral("interface"), QStringLiteral("eth0")}};
const QVariantMap OfWifi {{QStringLiteral("daemon"), QStringLiteral("wifi")}};

const char OneInterface[] = R"(
    {"interfaces": [{"name": "eth0", "type": "wired", "mtu": 1400}]}
)";

QByteArray environmentRoot()
{
    return qgetenv("ZOP_ROOT");
}

/*! A unit whose folder is to stand in \a place. */
std::unique_ptr<TestUnit> unitIn(const QString &place)
{
    const QByteArray former = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(place));
    auto unit = std::make_unique<TestUnit>();
    if (former.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", former);
    return unit;
}

/*! The folders in /proc of the processes whose arguments have \a text. */
QStringList processesThatName(const QString &text)
{
    QStringList found;
    const QDir all(QStringLiteral("/proc"));
    for (const QString &process : all.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile words(all.filePath(process) + QStringLiteral("/cmdline"));
        if (words.open(QIODevice::ReadOnly) && words.readAll().contains(QFile::encodeName(text)))
            found += all.filePath(process);
    }
    return found;
}

/*! Somebody's request that nobody waits for. */
struct Request
{
    Request(const char *control, const char *message)
        : object(QLatin1String(control), ZopObject::ReadWrite, false),
          command(&object)
    {
        command.setMessage(QLatin1String(message));
        command.start();
    }

    ZopObject object;
    ZopControlCommand command;
};

const char WifiControl[] = "/zop/services/wifi/control";
const char HotspotControl[] = "/zop/services/tethering/control";

} // namespace

/*! What each function of a unit does, and what it says when it cannot. */
class TestUnitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void hasARootOfItsOwn();
    void mayHaveALongRoot();
    void keepsItsFolderForTheDaemons();
    void letsItsFolderGo();
    void isOneAfterTheOther();
    void isTheLastOne();
    void startsAShippedScenario();
    void startsAScenario_data();
    void startsAScenario();
    void tellsWhatIsWrongWithAScenario_data();
    void tellsWhatIsWrongWithAScenario();
    void startsAfterAMistake();
    void startsOnce();
    void needsAFolder();
    void looksForHostd();
    void canBeTooSlow();

    void standsStillAtFirst();
    void letsTimePass();
    void letsTimePassByItself();
    void takesASeed();
    void leavesDaemonsOut();

    void plays();
    void playsJson();
    void tellsWhyNothingIsPlayed();
    void tellsThatItIsNotStarted();
    void showsRequests();
    void showsWhatThereIs();
    void tellsWhatItDoesNotShow();

    void ends();
    void endsBeforeItStarts();
    void isKilled();
    void restarts();
    void forgetsWithANewStart();
    void restartsWithNewOptions();
    void restartsOnlyWhatWasStarted();
    void tellsThatItHasDied();
    void tellsThatItDoesNotAnswer();
    void tellsWhatWasWritten();

private:
    static void scan(TestUnit *unit);
};

void TestUnitTest::init()
{
    qputenv("ZOP_ROOT", "/from/before");
}

void TestUnitTest::hasARootOfItsOwn()
{
    QString root;
    {
        TestUnit unit;
        root = unit.root();
        QVERIFY2(root.startsWith(QDir::tempPath() + QLatin1Char('/')), qPrintable(root));
        QCOMPARE(environmentRoot(), QFile::encodeName(root));
        QCOMPARE(int(QFile::permissions(root) & 0x0777), 0x0700);
        QCOMPARE(unit.errorString(), QString());
        QVERIFY(!unit.isRunning());
        QCOMPARE(unit.processId(), 0);
        QVERIFY(unit.start());
        QVERIFY(unit.isRunning());
        QVERIFY(unit.processId() > 0);
        QVERIFY(ZopObject(Eth0, ZopObject::Subscribe, false).isValid());
    }
    QVERIFY(!QFile::exists(QFileInfo(root).path()));
    QCOMPARE(environmentRoot(), QByteArray("/from/before"));
}

/*! Longer than the path of a socket may be. */
void TestUnitTest::mayHaveALongRoot()
{
    QTemporaryDir folder;
    const QString name(200, QLatin1Char('x'));
    QVERIFY(QDir(folder.path()).mkdir(name));
    const std::unique_ptr<TestUnit> unit = unitIn(folder.filePath(name));
    QVERIFY(unit->root().contains(name));
    QVERIFY(unit->start());
    QVERIFY(unit->act(QStringLiteral("radio-off")));
}

/*! Who removes it waits for the end of a pipe that morvek-hostd holds, too. */
void TestUnitTest::keepsItsFolderForTheDaemons()
{
    TestUnit unit;
    const QStringList keepers = processesThatName(QFileInfo(unit.root()).path());
    QCOMPARE(keepers.size(), 1);
    const QString pipe = QFile::symLinkTarget(keepers.first() + QStringLiteral("/fd/0"));
    QVERIFY2(pipe.contains(QLatin1String("pipe:")), qPrintable(pipe));
    QVERIFY(unit.start());
    const QDir files(QStringLiteral("/proc/%1/fd").arg(unit.processId()));
    QStringList held;
    for (const QString &file : files.entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System))
        held += QFileInfo(QFile::symLinkTarget(files.filePath(file))).fileName();
    QVERIFY2(held.contains(QFileInfo(pipe).fileName()), qPrintable(held.join(QLatin1Char(' '))));
}

/*! Who would have removed it does not when somebody else has it later. */
void TestUnitTest::letsItsFolderGo()
{
    QString folder;
    {
        TestUnit unit;
        folder = QFileInfo(unit.root()).path();
        QCOMPARE(processesThatName(folder).size(), 1);
    }
    QVERIFY(QDir().mkdir(folder));
    QTRY_COMPARE(processesThatName(folder), QStringList());
    QVERIFY(QDir().rmdir(folder));
}

void TestUnitTest::isOneAfterTheOther()
{
    qunsetenv("ZOP_ROOT");
    QStringList roots;
    for (int i = 0; i < 2; ++i) {
        TestUnit unit;
        roots += unit.root();
        QVERIFY(unit.start());
        QVERIFY(unit.act(QStringLiteral("link-lost"), OfEth0));
    }
    QVERIFY(roots.at(0) != roots.at(1));
    QVERIFY(!qEnvironmentVariableIsSet("ZOP_ROOT"));
}

void TestUnitTest::isTheLastOne()
{
    auto first = std::make_unique<TestUnit>();
    auto second = std::make_unique<TestUnit>();
    QVERIFY(first->root() != second->root());
    QVERIFY(first->start());
    QVERIFY(second->start());
    QVERIFY(second->act(QStringLiteral("radio-off")));
    QCOMPARE(first->published(WifiStatus, QStringLiteral("wifi_power")), QJsonValue(QStringLiteral("on")));
    QCOMPARE(environmentRoot(), QFile::encodeName(second->root()));
    first = std::make_unique<TestUnit>(); // one more, and the first is deleted
    QCOMPARE(environmentRoot(), QFile::encodeName(first->root()));
    first.reset();
    QCOMPARE(environmentRoot(), QFile::encodeName(second->root()));
    second.reset();
    QCOMPARE(environmentRoot(), QByteArray("/from/before"));
}

void TestUnitTest::startsAShippedScenario()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.look(QStringLiteral("faults")).toArray().isEmpty());
    QVERIFY(unit.stop());
    QVERIFY(unit.start(QStringLiteral("no-reply")));
    QCOMPARE(unit.look(QStringLiteral("faults")).toArray().at(0).toObject().value(QLatin1String("fault")),
             QJsonValue(QStringLiteral("no-reply")));
}

void TestUnitTest::startsAScenario_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QJsonValue>("mtu");
    QTest::addRow("text") << QString::fromLatin1(OneInterface) << QJsonValue(1400);
    QTest::addRow("file") << QString() << QJsonValue(1400);
}

void TestUnitTest::startsAScenario()
{
    QFETCH(QString, scenario);
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/XXXXXX.json"));
    if (scenario.isEmpty()) {
        QVERIFY(file.open());
        QVERIFY(file.write(OneInterface) > 0 && file.flush());
        scenario = file.fileName();
    }
    TestUnit unit;
    QVERIFY(unit.start(scenario));
    QTEST(unit.published(Eth0, QStringLiteral("mtu")), "mtu");
}

void TestUnitTest::tellsWhatIsWrongWithAScenario_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QString>("why");
    QTest::addRow("no JSON") << QStringLiteral("{\n  \"interfaces\": [{]}")
                             << QStringLiteral("the scenario: line 2, column 19: unterminated object");
    QTest::addRow("wrong key")
        << QStringLiteral("{\"interfaces\": [{\"name\": \"eth0\", \"typ\": \"wired\"}]}")
        << QStringLiteral("the scenario: interfaces[0]: unknown key \"typ\" (known: name, type, link_address, mtu, "
                          "parent_interface, present, up, connected, manual, lease)");
    QTest::addRow("no file") << QStringLiteral("/nonexistent/world.json")
                             << QStringLiteral("/nonexistent/world.json: No such file or directory");
}

void TestUnitTest::tellsWhatIsWrongWithAScenario()
{
    QFETCH(QString, scenario);
    QFETCH(QString, why);
    TestUnit unit;
    VERIFY_FAILS(unit, unit.start(scenario),
                 QStringLiteral("morvek-hostd has ended with code 3: morvek-hostd: ").toUtf8() + why.toUtf8());
    QVERIFY(!unit.isRunning());
}

void TestUnitTest::startsAfterAMistake()
{
    TestUnit unit;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("nonsense: no such scenario")));
    QVERIFY(!unit.start(QStringLiteral("nonsense")));
    QVERIFY(unit.start());
    QVERIFY(unit.stop());
}

void TestUnitTest::startsOnce()
{
    TestUnit unit;
    QVERIFY(unit.start());
    VERIFY_FAILS(unit, unit.start(), "it runs already");
    QVERIFY(unit.isRunning());
}

void TestUnitTest::needsAFolder()
{
    const std::unique_ptr<TestUnit> made = unitIn(QStringLiteral("/nonexistent"));
    TestUnit &unit = *made;
    VERIFY_FAILS(unit, unit.start(), "no folder can be made: No such file or directory");
    QCOMPARE(environmentRoot(), QByteArray("/dev/null")); // where nobody is
}

void TestUnitTest::looksForHostd()
{
    const QByteArray named = qgetenv("MORVEK_HOSTD");
    const QByteArray path = qgetenv("PATH");
    QVERIFY(QFileInfo(QFile::decodeName(named)).isExecutable());
    TestUnit unit;
    QTemporaryDir folder;

    qputenv("MORVEK_HOSTD", "/nonexistent/hostd");
    VERIFY_FAILS(unit, unit.start(), "MORVEK_HOSTD is \"/nonexistent/hostd\", which is no program");
    qputenv("MORVEK_HOSTD", QFile::encodeName(folder.path()));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("which is no program")));
    QVERIFY(!unit.start());

    qunsetenv("MORVEK_HOSTD");
    qputenv("PATH", QFile::encodeName(folder.path()));
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(QStringLiteral("^TestUnit: there is no morvek-hostd: it is neither \"/.*/bin/"
                                          "morvek-hostd\" nor in a folder of PATH, and MORVEK_HOSTD "
                                          "names none$")));
    QVERIFY(!unit.start());
    QVERIFY(QFile::link(QFile::decodeName(named), folder.filePath(QStringLiteral("morvek-hostd"))));
    QVERIFY(unit.start());
    QVERIFY(unit.stop());

    QFile broken(folder.filePath(QStringLiteral("broken")));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("#!/nonexistent/interpreter\n") > 0);
    broken.close();
    QVERIFY(broken.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    qputenv("MORVEK_HOSTD", QFile::encodeName(broken.fileName()));
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(QStringLiteral("^TestUnit: morvek-hostd cannot be started: .*No such file or directory$")));
    QVERIFY(!unit.start());
    qputenv("MORVEK_HOSTD", named);
    qputenv("PATH", path);
}

void TestUnitTest::canBeTooSlow()
{
    const QByteArray named = qgetenv("MORVEK_HOSTD");
    TestUnit unit;
    QFile idle(unit.root() + QStringLiteral("/idle"));
    QVERIFY(idle.open(QIODevice::WriteOnly) && idle.write("#!/bin/sh\nexec sleep 600\n") > 0);
    idle.close();
    QVERIFY(idle.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    qputenv("MORVEK_HOSTD", QFile::encodeName(idle.fileName()));
    unit.setTimeout(200); // too short for that
    VERIFY_FAILS(unit, unit.start(), "not everything is published within 5000 ms");
    QVERIFY(!unit.isRunning());
    qputenv("MORVEK_HOSTD", named);
}

void TestUnitTest::scan(TestUnit *unit)
{
    const Request scan(WifiControl, "scan");
    QVERIFY(unit->waitForRequest(QStringLiteral("scan")).isValid());
}

void TestUnitTest::standsStillAtFirst()
{
    TestUnit unit;
    QVERIFY(unit.isHeld());
    QCOMPARE(unit.speed(), 1.0);
    QCOMPARE(unit.seed(), -1);
    QCOMPARE(unit.without(), QStringList());
    QCOMPARE(unit.timeout(), 10000);
    QVERIFY(unit.start(QStringLiteral("hotspot-inactivity")));
    QVERIFY(unit.act(QStringLiteral("hotspot-starts")));
    QCOMPARE(unit.published(HotspotStatus, QStringLiteral("state")), QJsonValue(QStringLiteral("ACTIVE")));
}

void TestUnitTest::letsTimePass()
{
    TestUnit unit;
    QVERIFY(unit.start(QStringLiteral("hotspot-inactivity")));
    QVERIFY(unit.act(QStringLiteral("hotspot-starts")));
    QVERIFY(unit.pass(4999));
    QCOMPARE(unit.published(HotspotStatus, QStringLiteral("state")), QJsonValue(QStringLiteral("ACTIVE")));
    QVERIFY(unit.pass(1));
    QCOMPARE(unit.published(HotspotStatus, QStringLiteral("state")), QJsonValue(QStringLiteral("INACTIVE")));
    VERIFY_FAILS(unit, unit.pass(-1), "{\"pass\":-1}: pass: must be a whole number from 0 to 86400000");
}

void TestUnitTest::letsTimePassByItself()
{
    TestUnit unit;
    unit.setHeld(false);
    unit.setSpeed(1000);
    QVERIFY(unit.start(QStringLiteral("hotspot-inactivity")));
    VERIFY_FAILS(unit, unit.pass(1), "{\"pass\":1}: time passes by itself (--hold lets it stand still)");
    QVERIFY(unit.act(QStringLiteral("hotspot-starts")));
    QVERIFY(unit.waitUntil([&] {
        return unit.published(HotspotStatus, QStringLiteral("state")).toString() == QLatin1String("INACTIVE");
    }));
}

void TestUnitTest::takesASeed()
{
    QVector<QJsonValue> results;
    for (const int seed : {1, 1, 2}) {
        TestUnit unit;
        unit.setSeed(seed);
        unit.setHeld(false);
        unit.setSpeed(1000);
        QVERIFY(unit.start());
        scan(&unit);
        QJsonValue found;
        QVERIFY(unit.waitUntil([&] {
            found = unit.published(WifiStatus, QStringLiteral("scan_results"));
            return !found.isUndefined();
        }));
        results += found;
    }
    QCOMPARE(results.at(0), results.at(1));
    QVERIFY(results.at(0) != results.at(2));
}

void TestUnitTest::leavesDaemonsOut()
{
    TestUnit unit;
    unit.setWithout({QStringLiteral("wifi"), QStringLiteral("tethering")});
    QVERIFY(unit.start());
    QCOMPARE(unit.daemonState(QStringLiteral("networking")), QStringLiteral("alive"));
    QCOMPARE(unit.daemonState(QStringLiteral("wifi")), QStringLiteral("left out"));
    QCOMPARE(unit.daemonState(QStringLiteral("tethering")), QStringLiteral("left out"));
}

void TestUnitTest::plays()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.act(QStringLiteral("link-lost"), OfEth0));
    QCOMPARE(unit.published(Eth0, QStringLiteral("up")), QJsonValue(QStringLiteral("false")));
    QVERIFY(unit.act(QStringLiteral("radio-off")));
    QCOMPARE(unit.published(WifiStatus, QStringLiteral("wifi_power")), QJsonValue(QStringLiteral("off")));
    // A fault, with a number.
    QVERIFY(unit.act(QStringLiteral("refuse"),
                     {{QStringLiteral("message"), QStringLiteral("scan")}, {QStringLiteral("err"), 16}}));
    const Request scan(WifiControl, "scan");
    QCOMPARE(unit.waitForRequest(QStringLiteral("scan")).answers, QStringList {QStringLiteral("refused (16): ")});
}

void TestUnitTest::playsJson()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.act({{QStringLiteral("event"), QStringLiteral("link-lost")},
                      {QStringLiteral("interface"), QStringLiteral("eth0")}}));
    QCOMPARE(unit.published(Eth0, QStringLiteral("up")), QJsonValue(QStringLiteral("false")));
}

void TestUnitTest::tellsWhyNothingIsPlayed()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.act(QStringLiteral("link-lost"), OfEth0));
    VERIFY_FAILS(unit, unit.act(QStringLiteral("link-lost"), OfEth0),
                 "{\"act\":\"link-lost\",\"interface\":\"eth0\"}: \"eth0\" has no link already");
    VERIFY_FAILS(unit, unit.act(QJsonObject {{QStringLiteral("event"), QStringLiteral("link-lost")}}),
                 "{\"event\":\"link-lost\"}: \"interface\" is missing");
    VERIFY_FAILS(unit, unit.act(QStringLiteral("wrong-key"), {{QStringLiteral("ssid"), QStringLiteral("Café")}}),
                 "{\"act\":\"wrong-key\",\"ssid\":\"Café\"}: ssid: no access point \"Café\" has a passkey");
    // What goes well does not unsay it.
    QVERIFY(unit.act(QStringLiteral("link-regained"), OfEth0));
    QVERIFY(unit.errorString().endsWith(QStringLiteral("\"Café\" has a passkey")));
}

void TestUnitTest::tellsThatItIsNotStarted()
{
    TestUnit unit;
    VERIFY_FAILS(unit, unit.act(QStringLiteral("radio-off")), "{\"act\":\"radio-off\"}: the daemons are not started");
    VERIFY_FAILS(unit, unit.requests().size() > 0, "{\"look\":\"requests\",\"since\":0}: the daemons are not started");
    QVERIFY(unit.start());
    QVERIFY(unit.stop());
    VERIFY_FAILS(unit, unit.pass(1), "{\"pass\":1}: the daemons are not started");
}

void TestUnitTest::showsRequests()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.requests().isEmpty());
    const Request scan(WifiControl, "scan");
    const Request profile(HotspotControl, "retrieve_profile");
    QVERIFY(unit.waitForRequest(QStringLiteral("scan")).isValid());
    QVERIFY(unit.waitForRequest(QStringLiteral("retrieve_profile")).isValid());
    const QVector<TestRequest> requests = unit.requests();
    QCOMPARE(requests.size(), 2);
    const TestRequest first = requests.at(0).message == QLatin1String("scan") ? requests.at(0) : requests.at(1);
    QCOMPARE(first.at,
             unit.look(QStringLiteral("requests"))
                 .toArray()
                 .at(first.number - 1)
                 .toObject()
                 .value(QLatin1String("at"))
                 .toInt());
    QCOMPARE(first.daemon, QStringLiteral("wifi"));
    QVERIFY(first.text.startsWith(QLatin1String("scan id=")));
    QCOMPARE(first.answers, QStringList {QStringLiteral("ok")});
    QCOMPARE(first.interface, QString());
    QCOMPARE(requests.at(0).number, 1);
    QCOMPARE(requests.at(1).number, 2);
    QCOMPARE(unit.requests(1).size(), 1);
    QCOMPARE(unit.requests(1).at(0).number, 2);
    QVERIFY(unit.requests(2).isEmpty());
    // The same without the class.
    QCOMPARE(unit.look(QStringLiteral("requests")).toArray().size(), 2);
    QCOMPARE(unit.look(QStringLiteral("requests"), 1).toArray().size(), 1);
}

void TestUnitTest::showsWhatThereIs()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QCOMPARE(unit.published(Eth0, QStringLiteral("type")), QJsonValue(QStringLiteral("wired")));
    QVERIFY(unit.published(Eth0, QStringLiteral("nothing")).isUndefined());
    QCOMPARE(
        unit.look(QStringLiteral("objects")).toObject().value(HotspotStatus).toObject().value(QLatin1String("state")),
        QJsonValue(QStringLiteral("INACTIVE")));
    QVERIFY(unit.act(QStringLiteral("daemon-dies"), OfWifi));
    QCOMPARE(unit.daemonState(QStringLiteral("wifi")), QStringLiteral("dead"));
    QCOMPARE(unit.daemonState(QStringLiteral("tethering")), QStringLiteral("alive"));
    QVERIFY(unit.act(QStringLiteral("daemon-back"), OfWifi));
    QCOMPARE(unit.daemonState(QStringLiteral("wifi")), QStringLiteral("alive"));
    QVERIFY(unit.act(QStringLiteral("double")));
    QCOMPARE(unit.look(QStringLiteral("faults")).toArray().size(), 1);
}

void TestUnitTest::tellsWhatItDoesNotShow()
{
    TestUnit unit;
    QVERIFY(unit.start());
    VERIFY_FAILS(unit, unit.look(QStringLiteral("everything")).isArray(),
                 "{\"look\":\"everything\",\"since\":0}: look: \"everything\" is none of requests, objects, faults, "
                 "daemons, all");
}

void TestUnitTest::ends()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.stop());
    QVERIFY(!unit.isRunning());
    QVERIFY(!ZopObject(QLatin1String(WifiControl), ZopObject::ReadWrite, false).isValid());
    QVERIFY(ZopObject(WifiStatus, ZopObject::Subscribe, false).isValid());
    QVERIFY(unit.stop());
}

void TestUnitTest::endsBeforeItStarts()
{
    TestUnit unit;
    QVERIFY(unit.stop());
    unit.kill();
    QVERIFY(unit.start());
}

void TestUnitTest::isKilled()
{
    TestUnit unit;
    QVERIFY(unit.start());
    unit.kill();
    QVERIFY(!unit.isRunning());
    QVERIFY(QFile::exists(unit.root() + QStringLiteral("/.morvek-hostd.stage")));
    QVERIFY(unit.stop());
    QCOMPARE(unit.errorString(), QString());
    QVERIFY(unit.restart());
    QVERIFY(unit.act(QStringLiteral("radio-off")));
}

void TestUnitTest::restarts()
{
    TestUnit unit;
    QVERIFY(unit.start(QString::fromLatin1(OneInterface)));
    const qint64 first = unit.processId();
    QVERIFY(ZopObject::create(WifiStatus, {}));
    QVERIFY(unit.restart());
    QVERIFY(unit.processId() != first);
    QCOMPARE(unit.published(Eth0, QStringLiteral("mtu")), QJsonValue(1400));
    QVERIFY(ZopObject(WifiStatus, ZopObject::Subscribe, false).isValid());
}

void TestUnitTest::forgetsWithANewStart()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.stop());
    QVERIFY(ZopObject(HotspotStatus, ZopObject::Subscribe, false).isValid());
    QVERIFY(unit.start(QString::fromLatin1(OneInterface)));
    QVERIFY(!ZopObject(HotspotStatus, ZopObject::Subscribe, false).isValid());
    QCOMPARE(unit.published(Eth0, QStringLiteral("mtu")), QJsonValue(1400));
}

void TestUnitTest::restartsWithNewOptions()
{
    TestUnit unit;
    QVERIFY(unit.start());
    unit.setWithout({QStringLiteral("wifi")});
    QCOMPARE(unit.daemonState(QStringLiteral("wifi")), QStringLiteral("alive"));
    QVERIFY(unit.restart());
    QCOMPARE(unit.daemonState(QStringLiteral("wifi")), QStringLiteral("left out"));
}

void TestUnitTest::restartsOnlyWhatWasStarted()
{
    TestUnit unit;
    VERIFY_FAILS(unit, unit.restart(), "it was never started");
}

void TestUnitTest::tellsThatItHasDied()
{
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.act(QStringLiteral("radio-off")));
    const QString words = unit.output().trimmed().section(QLatin1Char('\n'), -1);
    ::kill(pid_t(unit.processId()), SIGKILL);
    const QString died = QStringLiteral("morvek-hostd was killed by signal 9: ") + words;
    VERIFY_FAILS(unit, unit.act(QStringLiteral("radio-on")),
                 (QStringLiteral("{\"act\":\"radio-on\"}: ") + died).toUtf8());
    QVERIFY(!unit.isRunning());
    VERIFY_FAILS(unit, unit.stop(), died.toUtf8());
    QVERIFY(unit.restart());
}

void TestUnitTest::tellsThatItDoesNotAnswer()
{
    TestUnit unit;
    QVERIFY(unit.start());
    ::kill(pid_t(unit.processId()), SIGSTOP);
    unit.setTimeout(5001);
    VERIFY_FAILS(unit, unit.pass(7), "{\"pass\":7}: morvek-hostd does not answer within 5001 ms");
    // The late answer is not taken for another one.
    ::kill(pid_t(unit.processId()), SIGCONT);
    QCOMPARE(unit.daemonState(QStringLiteral("wifi")), QStringLiteral("alive"));
    ::kill(pid_t(unit.processId()), SIGSTOP);
    unit.setTimeout(0);
    VERIFY_FAILS(unit, unit.stop(), "morvek-hostd does not end within 5000 ms");
    QVERIFY(!unit.isRunning());
}

void TestUnitTest::tellsWhatWasWritten()
{
    TestUnit unit;
    QCOMPARE(unit.output(), QString());
    QVERIFY(unit.start());
    QCOMPARE(unit.output(), QStringLiteral("ready: %1\n").arg(unit.root()));
    QVERIFY(unit.act(QStringLiteral("link-lost"), OfEth0));
    QVERIFY2(unit.output().contains(QRegularExpression(QStringLiteral("event +link-lost eth0\n"))),
             qPrintable(unit.output()));
}

QTEST_GUILESS_MAIN(TestUnitTest)
#include "tst_testunit.moc"
