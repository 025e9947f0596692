// SPDX-License-Identifier: Apache-2.0
#include "errorcapture.h"
#include "eventlog.h"
#include "faultplan.h"
#include "lockholder.h"
#include "networkingdaemon.h"
#include "sleeps.h"
#include "wifidaemon.h"
#include "wirenames.h"
#include "worldfixture.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <sys/resource.h>
#include <unistd.h>

using namespace morvek;

Q_DECLARE_METATYPE(morvek::Fault)

namespace {

const char ControlPath[] = "/test/control";
const char StatePath[] = "/test/state";

constexpr int ReplyDelay = 100;
constexpr int Day = 86400000;

/*! A daemon that accepts everything, and counts. */
class PlainDaemon : public Daemon
{
public:
    explicit PlainDaemon(const DaemonTools &tools)
        : Daemon(QStringLiteral("plain"), QLatin1String(ControlPath), ControlFirst, tools, nullptr)
    {
        m_clock.start();
    }

    bool writeState(QString *error)
    {
        ZopChangeset changes;
        changes.assignments.insert(QStringLiteral("written"), QStringLiteral("yes"));
        return publisher().update(QLatin1String(StatePath), changes, error);
    }

    /*! The world changes, and the object with it. */
    void change(const char *name, const char *value)
    {
        ZopChangeset changes;
        changes.assignments.insert(QLatin1String(name), QString::fromLatin1(value));
        state.insert(QLatin1String(name), QString::fromLatin1(value));
        update(QLatin1String(StatePath), changes);
    }

    int published = 0;
    QVector<qint64> times; // of publishing
    Attributes state;
    QStringList performed;
    std::vector<AnswerCall> undecided; // of requests "undecided"

protected:
    Task read(const ZopChangeset &changes) override
    {
        Task task;
        task.request = ControlRequest(changes);
        task.carryOut = [this, message = task.request.message](const AnswerCall &answer) {
            if (message == QLatin1String("undecided"))
                return undecided.push_back(answer);
            answer({});
            performed += message;
        };
        return task;
    }

    bool publish(QString *error) override
    {
        ++published;
        times += m_clock.elapsed();
        return publisher().publish(QLatin1String(StatePath), state, ObjectPublisher::TellDifference, error);
    }

    void follow() override { }

private:
    QElapsedTimer m_clock;
};

/*! While it lives, the object at a path can be neither written nor removed, or not be made when it is not there. */
class Obstacle
{
public:
    explicit Obstacle(const QString &path)
        : m_holder(QFile::exists(fileOf(path)) ? fileOf(path) : QFileInfo(fileOf(path)).path())
    {
        if (!m_holder.holds())
            qFatal("no obstacle");
    }

private:
    static QString fileOf(const QString &path) { return qEnvironmentVariable("ZOP_ROOT") + path; }

    LockHolder m_holder;
};

/*! What the object at a path tells, one "NAME=TEXT" for each assignment. */
struct Told
{
    explicit Told(const QString &path)
        : object(path, ZopObject::Subscribe, false)
    {
        QObject::connect(&object, &ZopObject::attributeChanged, [this](const QString &name, const ZopVariant &value) {
            list += name + QLatin1Char('=') + value.toString();
        });
    }

    ZopObject object;
    QStringList list;
};

/*! A networking daemon that publishes "eth0", and what is told of it and of the status. */
struct NetworkFixture
{
    NetworkFixture()
    {
        qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
        daemon = std::make_unique<NetworkingDaemon>(fixture.network.get(),
                                                    DaemonTools {&fixture.world, &faults, &fixture.pace, &log});
        if (!daemon->start(&error))
            qFatal("%s", qPrintable(error));
        eth0 = std::make_unique<Told>(pathOf("eth0"));
        status = std::make_unique<Told>(Wire::StatusObject);
    }

    static QString pathOf(const char *interface)
    {
        return Wire::InterfacesDirectory + QLatin1Char('/') + QLatin1String(interface);
    }

    static Attributes attribute(const QString &name, const char *value)
    {
        return {{name, ZopVariant(QString::fromLatin1(value))}};
    }

    void changeStatus(const QString &name, const char *value)
    {
        ZopChangeset changes;
        changes.assignments = attribute(name, value);
        fixture.world.changeStatus(Service::Networking, changes);
    }

    const QTemporaryDir root;
    WorldFixture fixture {R"({'interfaces': [{'name': 'eth0', 'type': 'wired', 'up': false}]})"};
    FaultPlan faults;
    const EventLog log {false};
    std::unique_ptr<NetworkingDaemon> daemon;
    std::unique_ptr<Told> eth0;
    std::unique_ptr<Told> status;
    QString error;
};

/*! A root with such a daemon, not started yet, and a client of it. */
struct PlainFixture
{
    explicit PlainFixture(const QVector<Fault> &list = {})
        : faults(list)
    {
        qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    }

    bool start()
    {
        if (!daemon.start(&error))
            return false;
        control = std::make_unique<ZopObject>(QLatin1String(ControlPath), ZopObject::ReadWrite, false);
        QObject::connect(control.get(), &ZopObject::attributesChanged, control.get(),
                         [this](const ZopChangeset &reply) {
                             const auto text = [&reply](const char *name) {
                                 return reply.assignments.value(QLatin1String(name)).toString();
                             };
                             replies += text("res") + QLatin1Char(' ') + text("err");
                         });
        return true;
    }

    bool ask(const char *message)
    {
        ZopChangeset request;
        request.assignments.insert(QStringLiteral("msg"), QString::fromLatin1(message));
        request.assignments.insert(QStringLiteral("id"), ++asked);
        return control->setAttributes(request);
    }

    /*! Puts what is no object into the place of the object at \a path. */
    bool spoil(const char *path) const
    {
        QFile file(root.path() + QLatin1String(path));
        file.remove();
        QDir().mkpath(QFileInfo(file).path());
        return file.open(QIODevice::WriteOnly) && file.write("no object") > 0;
    }

    static QString stateAttribute(const char *name)
    {
        ZopObject object(QLatin1String(StatePath), ZopObject::Subscribe, false);
        object.setAttributeCacheEnabled(true);
        return object.attribute(QLatin1String(name)).toString();
    }

    /*! Lets what takes up to \a milliseconds happen. */
    bool pass(int milliseconds)
    {
        bool done = false;
        pace.after(milliseconds, &world, [&done] { done = true; });
        return QTest::qWaitFor([&done] { return done; });
    }

    const QTemporaryDir root;
    World world;
    FaultPlan faults;
    Pace pace {1, 1};
    const EventLog log {false};
    PlainDaemon daemon {{&world, &faults, &pace, &log}};
    std::unique_ptr<ZopObject> control;
    QStringList replies; //!< "MESSAGE CODE"
    QString error;
    int asked = 0;
};

/*! Faults of requests "slow" that are answered, or carried out, after the daemon's reply delay. */
void addSlowRows()
{
    QTest::addColumn<Fault>("fault");

    const auto row = [](const char *name, Fault fault) {
        fault.message = QStringLiteral("slow");
        QTest::addRow("%s", name) << fault;
    };
    Fault none;
    none.times = 0;
    row("no fault", none);
    Fault refuse;
    refuse.code = 7;
    row("refuse", refuse);
    Fault performs;
    performs.kind = Fault::NoReply;
    performs.performs = true;
    row("no reply, but performed", performs);
    Fault twice;
    twice.kind = Fault::Double;
    row("double", twice);
    Fault ignore;
    ignore.kind = Fault::Answer;
    ignore.reply.insert(QStringLiteral("err"), QStringLiteral("0"));
    row("ignore", ignore);
    Fault answer = ignore;
    answer.reply.insert(QStringLiteral("dat"), 7);
    row("answer", answer);
}

} // namespace

/*! What only a daemon in the test's own process can show. */
class DaemonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repliesBeforeTheWorldChanges_data();
    void repliesBeforeTheWorldChanges();
    void servesNothingWhenItCannotPublish();
    void answersNothingOfAFormerLife_data();
    void answersNothingOfAFormerLife();
    void answersWhenItIsDecided();
    void decidesNothingOfAFormerLife();
    void repliesTakeTheirTime_data() { addSlowRows(); }
    void repliesTakeTheirTime();
    void deadDaemonDoesNotDie();
    void neverStartedDaemonDoesNotDie();
    void deadDaemonWritesNothing();
    void aChangeThatCouldNotBePublishedWasLost();
    void anUpdateOfAnEqualValueWasLost();
    void updatesOvertookOneThatFailedAndItWasToldTwice();
    void updatesThatFailedWereMerged();
    void whatWaitedWasWaitedForAgain();
    void whatWaitedHadNoLimit();
    void anInterfaceThatCameAndWentPiledUp();
    void anObjectMadeAnewWasToldTwice();
    void aSoundObjectWasRemovedForWantOfDescriptors();
    void everyInterfaceWasToldAgainForTheStatus();
    void aLateInterfaceWasPassedOver();
    void aRemovalThatFailedWasForgotten();
    void theRemovalOfWhatWasGoneFailed();
    void aSecondTroubleWasNotTold();
    void aDeadDaemonWentOnTrying();
    void anotherLifeToldWhatHadWaited();
    void aDaemonThatCouldNotComeBackShowedItselfAllTheTime();
    void aMalformedObjectKeptTheDaemonFromStarting();
    void aDaemonThatCouldNotComeBackStayedDead();
};

void DaemonTest::repliesBeforeTheWorldChanges_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("dat");

    QTest::addRow("power") << "wifi_power"
                           << "off";
    QTest::addRow("scan") << "scan" << QString();
    QTest::addRow("select") << "wnet_select"
                            << "0";
    QTest::addRow("disable all") << "wnet_disableall" << QString();
}

void DaemonTest::repliesBeforeTheWorldChanges()
{
    QFETCH(QString, message);
    QFETCH(QString, dat);
    const QTemporaryDir root;
    qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'connected': true,
            'lease': {'ip_addresses': ['192.168.1.7/255.255.255.0']}}],
        'wifi': {'interface': 'wlan0', 'connected': '02:00:00:00:00:01', 'access_points': [
            {'bssid': '02:00:00:00:00:01', 'ssid': 'Home', 'frequency': 1, 'signal_level': 0, 'flags': []}]}})");
    FaultPlan faults;
    const EventLog log(false);
    WifiDaemon daemon(fixture.radio.get(), {&fixture.world, &faults, &fixture.pace, &log});
    QString error;
    QVERIFY2(daemon.start(&error), qPrintable(error));

    ZopObject control(QStringLiteral("/zop/services/wifi/control"), ZopObject::ReadWrite, true);
    ZopControlCommand command(&control);
    command.setMessage(message);
    command.setDat(dat);
    QSignalSpy finished(&command, &ZopControlCommand::finished);
    // The reply can only arrive while the world waits here if it was on its way before.
    int arrived = -1;
    connect(&fixture.world, &World::statusChanged, &command, [&finished, &arrived](Service service) {
        if (service == Service::Wifi && arrived == -1)
            arrived = finished.count() > 0 || finished.wait() ? 1 : 0;
    });
    command.start();
    QTRY_VERIFY(arrived != -1);
    QCOMPARE(arrived, 1);
    QVERIFY2(!command.hasError(), qPrintable(command.errorString()));
}

void DaemonTest::servesNothingWhenItCannotPublish()
{
    const QTemporaryDir root;
    qputenv("ZOP_ROOT", QFile::encodeName(root.path()));
    const QString status = QStringLiteral("/zop/services/wifi/status");
    QVERIFY(ZopObject::create(status, ZopChangeset()));
    const Obstacle obstacle(status);
    WorldFixture fixture(R"({'interfaces': [{'name': 'wlan0', 'type': 'wifi', 'up': false}],
        'wifi': {'interface': 'wlan0', 'access_points': []}})");
    FaultPlan faults;
    const EventLog log(false);
    WifiDaemon daemon(fixture.radio.get(), {&fixture.world, &faults, &fixture.pace, &log});
    QString error;
    QVERIFY(!daemon.start(&error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!ZopObject(QStringLiteral("/zop/services/wifi/control"), ZopObject::ReadWrite, true).isValid());
}

void DaemonTest::answersNothingOfAFormerLife_data()
{
    addSlowRows();
    Fault late;
    late.kind = Fault::Late;
    late.message = QStringLiteral("slow");
    late.delay = ReplyDelay;
    QTest::addRow("late") << late;
}

void DaemonTest::answersNothingOfAFormerLife()
{
    QFETCH(Fault, fault);
    // The time of the reply comes when the daemon is back, and while it is dead.
    for (const int backAfter : {0, 2 * ReplyDelay}) {
        Fault die;
        die.kind = Fault::Die;
        die.message = QStringLiteral("die");
        die.backAfter = backAfter;
        PlainFixture fixture({fault, die});
        fixture.daemon.setReplyDelay({ReplyDelay, ReplyDelay});
        QVERIFY2(fixture.start(), qPrintable(fixture.error));
        QVERIFY(fixture.ask("slow") && fixture.ask("die"));
        QTRY_COMPARE(fixture.replies, QStringList({QStringLiteral("slow -1"), QStringLiteral("die -1")}));
        QVERIFY(QTest::qWaitFor([&fixture] { return fixture.ask("next"); }));
        QTRY_VERIFY(fixture.replies.size() > 2 && fixture.replies.last() == QLatin1String("next 0"));
        QCOMPARE(fixture.replies.size(), 3);
        QCOMPARE(fixture.daemon.performed, QStringList {QStringLiteral("next")});
    }
}

void DaemonTest::answersWhenItIsDecided()
{
    Fault twice;
    twice.kind = Fault::Double;
    twice.skip = 1;
    twice.times = 1;
    twice.message = QStringLiteral("undecided");
    PlainFixture fixture({twice});
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    QVERIFY(fixture.ask("undecided") && fixture.ask("undecided") && fixture.ask("next"));
    QTRY_COMPARE(fixture.replies, QStringList {QStringLiteral("next 0")});
    QCOMPARE(fixture.daemon.undecided.size(), std::size_t(2));
    // In whatever order it comes to that.
    fixture.daemon.undecided.at(1)({});
    fixture.daemon.undecided.at(0)({{Refusal::ManagerRefused, QStringLiteral("no")}, {}});
    QTRY_COMPARE(fixture.replies,
                 QStringList({QStringLiteral("next 0"), QStringLiteral("undecided 0"), QStringLiteral("undecided 0"),
                              QStringLiteral("undecided 13")}));
}

void DaemonTest::decidesNothingOfAFormerLife()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    QVERIFY(fixture.ask("undecided"));
    QTRY_COMPARE(fixture.daemon.undecided.size(), std::size_t(1));
    fixture.daemon.die(-1);
    QTRY_COMPARE(fixture.replies, QStringList {QStringLiteral("undecided -1")});
    fixture.daemon.undecided.at(0)({}); // while it is dead
    fixture.daemon.comeBack();
    fixture.daemon.undecided.at(0)({}); // and when it is back
    QVERIFY(QTest::qWaitFor([&fixture] { return fixture.ask("next"); }));
    QTRY_COMPARE(fixture.replies, QStringList({QStringLiteral("undecided -1"), QStringLiteral("next 0")}));
}

void DaemonTest::repliesTakeTheirTime()
{
    QFETCH(Fault, fault);
    Fault quick;
    quick.kind = Fault::Late;
    quick.message = QStringLiteral("quick");
    PlainFixture fixture({fault, quick});
    fixture.daemon.setReplyDelay({Day, Day});
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    QVERIFY(fixture.ask("slow") && fixture.ask("quick"));
    QTRY_VERIFY(!fixture.daemon.performed.isEmpty() && !fixture.replies.isEmpty());
    QCOMPARE(fixture.replies, QStringList {QStringLiteral("quick 0")});
    QCOMPARE(fixture.daemon.performed, QStringList {QStringLiteral("quick")});
}

void DaemonTest::deadDaemonDoesNotDie()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.die(ReplyDelay);
    fixture.daemon.die(0);
    QVERIFY(fixture.pass(2 * ReplyDelay));
    QCOMPARE(fixture.daemon.published, 2);
    QVERIFY(fixture.ask("anything"));
}

void DaemonTest::neverStartedDaemonDoesNotDie()
{
    PlainFixture fixture;
    fixture.daemon.die(0);
    QVERIFY(fixture.pass(0));
    QCOMPARE(fixture.daemon.published, 0);
}

void DaemonTest::deadDaemonWritesNothing()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    QVERIFY(fixture.daemon.writeState(&fixture.error));
    fixture.daemon.die(-1);
    QVERIFY(!fixture.daemon.writeState(&fixture.error));
    QCOMPARE(fixture.error, QStringLiteral("not published"));
}

void DaemonTest::aChangeThatCouldNotBePublishedWasLost()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    QVERIFY(fixture.spoil(StatePath));
    fixture.daemon.change("first", "1");
    fixture.daemon.change("second", "2");
    QTRY_COMPARE(PlainFixture::stateAttribute("first"), QStringLiteral("1"));
    QCOMPARE(PlainFixture::stateAttribute("second"), QStringLiteral("2"));
    fixture.daemon.change("first", "3");
    QCOMPARE(PlainFixture::stateAttribute("first"), QStringLiteral("3"));
}

void DaemonTest::anUpdateOfAnEqualValueWasLost()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.change("event", "failed");
    const Told told {QLatin1String(StatePath)};
    {
        const Obstacle obstacle {QLatin1String(StatePath)};
        fixture.daemon.change("event", "failed");
    }
    QTRY_COMPARE(told.list, QStringList {QStringLiteral("event=failed")});
}

void DaemonTest::updatesOvertookOneThatFailedAndItWasToldTwice()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    const Told told {QLatin1String(StatePath)};
    {
        const Obstacle obstacle {QLatin1String(StatePath)};
        fixture.daemon.change("event", "first");
    }
    fixture.daemon.change("event", "second");
    fixture.daemon.change("other", "third");
    QStringList expected {QStringLiteral("event=first"), QStringLiteral("event=second"), QStringLiteral("other=third")};
    QTRY_COMPARE(told.list, expected);
    fixture.daemon.change("event", "last");
    expected += QStringLiteral("event=last");
    QTRY_COMPARE(told.list, expected);
}

void DaemonTest::updatesThatFailedWereMerged()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    Told told {QLatin1String(StatePath)};
    QSignalSpy updates(&told.object, &ZopObject::attributesChanged);
    {
        const Obstacle obstacle {QLatin1String(StatePath)};
        fixture.daemon.change("event", "first");
        fixture.daemon.change("event", "second");
        fixture.daemon.change("other", "third");
    }
    QTRY_COMPARE(
        told.list,
        QStringList({QStringLiteral("event=first"), QStringLiteral("event=second"), QStringLiteral("other=third")}));
    QTRY_COMPARE(updates.count(), 3);
}

void DaemonTest::whatWaitedWasWaitedForAgain()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    ObjectPublisher publisher;
    const QString path = QLatin1String(StatePath);
    QVERIFY(publisher.publish(path, {}, ObjectPublisher::TellAll, &fixture.error));
    const Obstacle obstacle(path);
    const ZopChangeset changes {{{QStringLiteral("event"), QStringLiteral("failed")}}, {}};
    QVERIFY(!publisher.update(path, changes, &fixture.error));
    QCOMPARE(leastSleepsIn([&] { publisher.update(path, changes, &fixture.error); }), 0L);
    QCOMPARE(leastSleepsIn([&] { publisher.retry(); }), 0L);
    QVERIFY(publisher.isWaiting());
}

void DaemonTest::whatWaitedHadNoLimit()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    Told told {QLatin1String(StatePath)};
    QSignalSpy updates(&told.object, &ZopObject::attributesChanged);
    const ErrorCapture errors;
    const auto change = [&fixture](int count) {
        for (int i = 0; i < count; ++i)
            fixture.daemon.change("value", QByteArray(100000, char('a' + i % 26)).constData());
    };
    {
        const Obstacle obstacle {QLatin1String(StatePath)};
        change(40);
    }
    QTRY_COMPARE(updates.count(), 40);
    QVERIFY(!errors.text().contains("lost"));
    updates.clear();
    {
        const Obstacle obstacle {QLatin1String(StatePath)};
        fixture.daemon.change("first", "1");
        change(45);
        fixture.daemon.change("last", "2");
        change(45);
        QCOMPARE(errors.text().count("morvek-hostd: \"/test/state\": updates were lost: too many wait, and are told as "
                                     "one\n"),
                 1);
    }
    QTRY_VERIFY(!updates.isEmpty());
    fixture.daemon.change("end", "3");
    QTRY_COMPARE(PlainFixture::stateAttribute("end"), QStringLiteral("3"));
    QTRY_COMPARE(updates.count(), 2);
    const ZopChangeset all = updates.first().first().value<ZopChangeset>();
    QCOMPARE(all.assignments.keys(),
             QStringList({QStringLiteral("first"), QStringLiteral("last"), QStringLiteral("value")}));
    QCOMPARE(all.assignments.value(QStringLiteral("value")).toString(), QString(100000, QLatin1Char('a' + 44 % 26)));
    QVERIFY(all.removals.isEmpty());
}

void DaemonTest::anInterfaceThatCameAndWentPiledUp()
{
    PlainFixture fixture;
    ObjectPublisher publisher;
    QString error;
    const QString path = QLatin1String(StatePath);
    QVERIFY(publisher.publish(path, {}, ObjectPublisher::TellAll, &error));
    const QStringList once {path};
    {
        const Obstacle obstacle(path);
        for (int i = 0; i < 3; ++i) {
            publisher.remove(path, &error);
            publisher.publish(path, {}, ObjectPublisher::TellAll, &error);
        }
    }
    QCOMPARE(publisher.retry(), once);
    QVERIFY(!publisher.isWaiting());
}

void DaemonTest::anObjectMadeAnewWasToldTwice()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.change("before", "0");
    const Told told {QLatin1String(StatePath)};
    QVERIFY(fixture.spoil(StatePath));
    fixture.daemon.change("first", "1");
    fixture.daemon.change("first", "2");
    QStringList expected {QStringLiteral("before=0"), QStringLiteral("first=2")};
    QTRY_COMPARE(told.list, expected);
    fixture.daemon.change("last", "3");
    expected += QStringLiteral("last=3");
    QTRY_COMPARE(told.list, expected);
}

void DaemonTest::aSoundObjectWasRemovedForWantOfDescriptors()
{
    PlainFixture fixture;
    ZopChangeset values;
    values.assignments.insert(QStringLiteral("old"), QStringLiteral("value"));
    QVERIFY(ZopObject::create(QLatin1String(StatePath), values));
    const QString file = fixture.root.path() + QLatin1String(StatePath);
    rlimit usual = {};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit starved = usual;
    const int lowestFree = dup(STDOUT_FILENO);
    close(lowestFree);
    // One is enough to remove an object, but not to open it.
    starved.rlim_cur = rlim_t(lowestFree) + 1;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &starved), 0);
    ObjectPublisher publisher;
    QString error;
    const bool done = publisher.publish(QLatin1String(StatePath), {}, ObjectPublisher::TellDifference, &error);
    const bool isThere = QFile::exists(file);
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &usual), 0);
    QVERIFY(!done);
    QVERIFY(isThere);
    QCOMPARE(PlainFixture::stateAttribute("old"), QStringLiteral("value"));
    QCOMPARE(publisher.retry(), QStringList {QLatin1String(StatePath)});
    QCOMPARE(PlainFixture::stateAttribute("old"), QString());
}

void DaemonTest::everyInterfaceWasToldAgainForTheStatus()
{
    NetworkFixture network;
    {
        const Obstacle obstacle(Wire::StatusObject);
        network.changeStatus(Wire::DefaultInterface, "eth0");
    }
    QTRY_COMPARE(network.status->list, QStringList {QStringLiteral("default_interface=eth0")});
    ZopChangeset changes;
    changes.assignments = NetworkFixture::attribute(Wire::Mtu, "1400");
    network.fixture.world.changeInterface(QStringLiteral("eth0"), changes);
    QTRY_COMPARE(network.eth0->list, QStringList {QStringLiteral("mtu=1400")});
}

void DaemonTest::aLateInterfaceWasPassedOver()
{
    NetworkFixture network;
    const QString path = NetworkFixture::pathOf("usb0");
    bool known = false;
    connect(&network.status->object, &ZopObject::attributesChanged,
            [&] { known = ZopObject(path, ZopObject::Subscribe, false).isValid(); });
    {
        const Obstacle obstacle(path);
        network.fixture.world.addInterface(QStringLiteral("usb0"), NetworkFixture::attribute(Wire::Type, "usb"));
        network.changeStatus(Wire::DefaultInterface, "usb0");
        ZopChangeset changes;
        changes.assignments = NetworkFixture::attribute(Wire::Mtu, "1400");
        network.fixture.world.changeInterface(QStringLiteral("usb0"), changes);
        QTRY_COMPARE(network.status->list, QStringList {QStringLiteral("default_interface=usb0")});
        QVERIFY(!known);
    }
    QTRY_COMPARE(network.status->list.mid(1),
                 QStringList({QStringLiteral("default_interface=usb0"), QStringLiteral("priority=[\"eth0\"]")}));
    QTRY_VERIFY(known);
    Told usb0(path);
    usb0.object.setAttributeCacheEnabled(true);
    QCOMPARE(usb0.list, QStringList({QStringLiteral("mtu=1400"), QStringLiteral("type=usb")}));
}

void DaemonTest::aRemovalThatFailedWasForgotten()
{
    NetworkFixture network;
    const QString path = NetworkFixture::pathOf("eth0");
    {
        const Obstacle obstacle(path);
        network.fixture.world.removeInterface(QStringLiteral("eth0"));
    }
    QVERIFY(ZopObject(path, ZopObject::Subscribe, false).isValid());
    QTRY_VERIFY(!ZopObject(path, ZopObject::Subscribe, false).isValid());
}

void DaemonTest::theRemovalOfWhatWasGoneFailed()
{
    NetworkFixture network;
    QVERIFY(ZopObject::remove(NetworkFixture::pathOf("eth0")));
    const ErrorCapture errors;
    network.fixture.world.removeInterface(QStringLiteral("eth0"));
    QCOMPARE(errors.text(), QByteArray());
}

void DaemonTest::aSecondTroubleWasNotTold()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    const Told told {QLatin1String(StatePath)};
    const ErrorCapture errors;
    for (int trouble = 1; trouble <= 2; ++trouble) {
        {
            const Obstacle obstacle {QLatin1String(StatePath)};
            fixture.daemon.change("event", "failed");
            fixture.daemon.change("event", "again");
        }
        QCOMPARE(errors.text().count("cannot publish"), trouble);
        QTRY_COMPARE(told.list.size(), 2 * trouble);
    }
}

void DaemonTest::aDeadDaemonWentOnTrying()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    const ErrorCapture errors;
    for (int life = 1; life <= 2; ++life) {
        {
            const Obstacle obstacle {QLatin1String(StatePath)};
            fixture.daemon.change("event", "failed");
        }
        // Only a daemon that is not trying already says so.
        QCOMPARE(errors.text().count("cannot publish"), life);
        fixture.daemon.die(-1);
        QVERIFY2(fixture.start(), qPrintable(fixture.error));
    }
}

void DaemonTest::anotherLifeToldWhatHadWaited()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.change("event", "failed");
    const Told told {QLatin1String(StatePath)};
    {
        const Obstacle obstacle {QLatin1String(StatePath)};
        fixture.daemon.change("event", "failed");
    }
    fixture.daemon.die(-1);
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.change("other", "first");
    QTRY_COMPARE(told.list, QStringList {QStringLiteral("other=first")});
}

void DaemonTest::aDaemonThatCouldNotComeBackShowedItselfAllTheTime()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.die(0);
    fixture.daemon.state.insert(QStringLiteral("event"), QStringLiteral("of this life"));
    const Obstacle obstacle {QLatin1String(StatePath)};
    const QVector<qint64> &times = fixture.daemon.times;
    QTRY_VERIFY(times.size() >= 5);
    // Attempts come late on a busy machine, but never early: 200, 400 and 800 ms, less what a coarse timer may miss.
    QVERIFY(times[4] - times[1] >= 1300);
}

void DaemonTest::aMalformedObjectKeptTheDaemonFromStarting()
{
    PlainFixture fixture;
    QVERIFY(QFile::setPermissions(fixture.root.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(fixture.spoil(StatePath));
    fixture.daemon.state.insert(QStringLiteral("first"), QStringLiteral("1"));
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    QCOMPARE(PlainFixture::stateAttribute("first"), QStringLiteral("1"));
}

void DaemonTest::aDaemonThatCouldNotComeBackStayedDead()
{
    PlainFixture fixture;
    QVERIFY2(fixture.start(), qPrintable(fixture.error));
    fixture.daemon.die(1);
    QVERIFY(fixture.spoil(ControlPath));
    QVERIFY(fixture.pass(50));
    QVERIFY(QFile::remove(fixture.root.path() + QLatin1String(ControlPath)));
    QTRY_VERIFY(ZopObject(QLatin1String(ControlPath), ZopObject::Subscribe, false).isValid());
}

QTEST_GUILESS_MAIN(DaemonTest)
#include "tst_daemon.moc"
