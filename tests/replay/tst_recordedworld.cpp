// SPDX-License-Identifier: Apache-2.0
#include "eventlog.h"
#include "pace.h"
#include "recordedworld.h"
#include "world.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char Interfaces[] = "/zop/services/networking/all/interfaces/";

RecordedEvent objectEvent(RecordedEvent::Kind kind, int time, const QString &object, int mtu)
{
    RecordedEvent result;
    result.kind = kind;
    result.time = time;
    result.object = object;
    if (kind != RecordedEvent::Gone)
        result.changes.assignments.insert(QStringLiteral("mtu"), mtu);
    return result;
}

RecordedEvent interfaceEvent(RecordedEvent::Kind kind, int time, const char *name, int mtu = 0)
{
    return objectEvent(kind, time, QLatin1String(Interfaces) + QLatin1String(name), mtu);
}

/*! What happens in a world, and the real time at which it does. */
struct Witness
{
    explicit Witness(const World &world)
    {
        QObject::connect(&world, &World::interfaceAdded, &context, [this](const QString &name) { note('+' + name); });
        QObject::connect(&world, &World::interfaceRemoved, &context, [this](const QString &name) { note('-' + name); });
        QObject::connect(&world, &World::interfaceChanged, &context,
                         [this](const QString &name, const ZopChangeset &changes) { note(name + textOf(changes)); });
        QObject::connect(&world, &World::statusChanged, &context, [this](Service service, const ZopChangeset &changes) {
            note(QStringLiteral("status%1").arg(int(service)) + textOf(changes));
        });
        since.start();
    }

    static QString textOf(const ZopChangeset &changes)
    {
        const QString mtu = QStringLiteral("mtu");
        return changes.removals.contains(mtu) ? QStringLiteral(" none")
                                              : QLatin1Char(' ') + changes.assignments.value(mtu).toString();
    }

    void note(const QString &text)
    {
        notes += text;
        times += since.elapsed();
        turns += turn;
    }

    QObject context;
    QElapsedTimer since;
    QStringList notes;
    QVector<qint64> times;
    QVector<int> turns; // of the event loop
    int turn = 0;
};

} // namespace

/*! What a recording tells, as the daemons hear of it. */
class RecordedWorldTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void servicesAndThePresent();
    void givesClientsTime_data();
    void givesClientsTime();
    void keepsTheTimes();
};

void RecordedWorldTest::servicesAndThePresent()
{
    const EventLog log(false);
    Pace pace(1, 0);
    World world;
    Recording recording;
    recording.events = {interfaceEvent(RecordedEvent::Present, 0, "eth0", 7),
                        interfaceEvent(RecordedEvent::Present, 0, "a/b", 7),
                        interfaceEvent(RecordedEvent::Present, 0, "", 7),
                        objectEvent(RecordedEvent::Present, 0, QStringLiteral("/zop/services/tethering/status"), 8),
                        objectEvent(RecordedEvent::Created, 5, QStringLiteral("/zop/services/wifi/status"), 9)};
    const RecordedWorld recorded(recording, &world, &pace, &log);
    QCOMPARE(recorded.services(), (std::set<Service> {Service::Networking, Service::Wifi, Service::Tethering}));
    QCOMPARE(world.interfaces(), QStringList {QStringLiteral("eth0")});
    QCOMPARE(world.interfaceAttributes(QStringLiteral("eth0")).value(QStringLiteral("mtu")).toString(),
             QStringLiteral("7"));
    QCOMPARE(world.status(Service::Tethering).value(QStringLiteral("mtu")).toString(), QStringLiteral("8"));
    QVERIFY(world.status(Service::Wifi).isEmpty()); // not yet
    const Fault refusal = RecordedWorld::refusal();
    QCOMPARE(refusal.word, QStringLiteral("refuse"));
    QCOMPARE(int(refusal.code), 14);
}

void RecordedWorldTest::givesClientsTime_data()
{
    QTest::addColumn<bool>("isHeld");
    QTest::newRow("held") << true;
    QTest::newRow("fast") << false;
}

void RecordedWorldTest::givesClientsTime()
{
    QFETCH(bool, isHeld);
    const EventLog log(false);
    Pace pace(1000, 0);
    if (isHeld)
        pace.hold();
    World world;
    const QString hotspot = QStringLiteral("/zop/services/tethering/status");
    Recording recording;
    recording.events = {interfaceEvent(RecordedEvent::Created, 10, "a", 1),
                        interfaceEvent(RecordedEvent::Updated, 10, "a", 2), // it may be read when it is there only
                        interfaceEvent(RecordedEvent::Updated, 10, "a", 3),
                        interfaceEvent(RecordedEvent::Updated, 15, "a", 4),
                        interfaceEvent(RecordedEvent::Updated, 5000, "a", 5),
                        objectEvent(RecordedEvent::Created, 5000, hotspot, 6),
                        objectEvent(RecordedEvent::Updated, 5000, hotspot, 7),
                        interfaceEvent(RecordedEvent::Updated, 5000, "a", 8),
                        interfaceEvent(RecordedEvent::Gone, 5000, "a"),
                        objectEvent(RecordedEvent::Gone, 5000, hotspot, 0)};
    RecordedWorld recorded(recording, &world, &pace, &log);
    Witness witness(world);
    QTimer turns;
    connect(&turns, &QTimer::timeout, &turns, [&witness] { ++witness.turn; });
    turns.start(0);
    recorded.start();
    if (isHeld) {
        pace.pass(9);
        QCOMPARE(witness.notes.size(), 0);
        pace.pass(4991);
    }
    QTRY_COMPARE(witness.notes.size(), 10);
    QCOMPARE(witness.notes,
             QStringList({QStringLiteral("+a"), QStringLiteral("a 2"), QStringLiteral("a 3"), QStringLiteral("a 4"),
                          QStringLiteral("a 5"), QStringLiteral("status2 6"), QStringLiteral("status2 7"),
                          QStringLiteral("a 8"), QStringLiteral("-a"), QStringLiteral("status2 none")}));
    // At least; a rounded time may lack one.
    const QVector<int> rests {20, 0, 5, 20, 20, 20, 20, 20, 20};
    for (int i = 0; i < rests.size(); ++i)
        QVERIFY2(witness.times.at(i + 1) - witness.times.at(i) >= rests.at(i) - 1, qPrintable(witness.notes.at(i + 1)));
    QCOMPARE(witness.turns.at(2), witness.turns.at(1)); // what came together comes together
}

/*! As recorded, over the factor. */
void RecordedWorldTest::keepsTheTimes()
{
    const EventLog log(false);
    Pace pace(10, 0);
    World world;
    Recording recording;
    recording.events = {interfaceEvent(RecordedEvent::Created, 1000, "a", 1),
                        interfaceEvent(RecordedEvent::Updated, 3000, "a", 2)};
    RecordedWorld recorded(recording, &world, &pace, &log);
    Witness witness(world);
    recorded.start();
    QTRY_COMPARE(witness.notes.size(), 2);
    QVERIFY(witness.times.at(0) >= 100 - 1);
    QVERIFY(witness.times.at(1) >= 300 - 1);
}

QTEST_GUILESS_MAIN(RecordedWorldTest)

#include "tst_recordedworld.moc"
