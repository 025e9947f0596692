// SPDX-License-Identifier: Apache-2.0
#include "counts.h"

#include "networks.h"
#include "pace.h"
#include "process.h"
#include "report.h"
#include "starting.h"
#include "tracing.h"

#include <cmath>

namespace {

const QString Instructions = QStringLiteral("instructions");
const QString SystemCalls = QStringLiteral("system calls");

constexpr int Few = 100;
constexpr int Many = 1000;
constexpr int AccessPoints = 200;

using Counter = QVector<Cost> (*)(const QStringList &arguments, const std::function<void(Process *traced)> &feed);

enum class Side { Application, Daemon };

/*! The root and the paces of an application and a daemon, of which one is counted while both are driven line by line.
 */
struct PacedPair
{
    const Root root;
    const Pace application {root.folder() + QStringLiteral("/application")};
    const Pace daemon {root.folder() + QStringLiteral("/daemon")};

    using Feed = std::function<void(Process *application, Process *daemon)>;
    QVector<Cost> run(Side counted, Counter count, const QStringList &role, int interfaces, const Feed &feed) const;
};

QVector<Cost> PacedPair::run(Side counted, Counter count, const QStringList &role, int interfaces,
                             const Feed &feed) const
{
    const QStringList applicationRole = role + QStringList(root.folder() + QStringLiteral("/application"));
    const QStringList daemonRole {QStringLiteral("publisher"), QString::number(interfaces), QStringLiteral("plain"),
                                  root.folder() + QStringLiteral("/daemon")};
    if (counted == Side::Application) {
        const auto other = Process::role(daemonRole);
        other->readLine();
        return count(applicationRole, [&](Process *traced) {
            application.awaitReady();
            feed(traced, other.get());
        });
    }
    return count(daemonRole, [&](Process *traced) {
        traced->readLine();
        const auto other = Process::role(applicationRole);
        application.awaitReady();
        feed(other.get(), traced);
    });
}

/*! Each character of \a steps is the number of attributes that an update has; 0 updates nothing. */
QVector<Cost> costsOfUpdates(Side counted, Counter count, const QByteArray &steps, int interfaces = 1)
{
    const int all = steps.size() - steps.count('0');
    const PacedPair pair;
    const QStringList role {QStringLiteral("updated"), QString::number(all)};
    return pair.run(counted, count, role, interfaces, [&](Process *, Process *daemon) {
        int updates = 0;
        for (int i = 0; i < steps.size(); ++i) {
            daemon->writeLine(steps.mid(i, 1));
            pair.daemon.awaitRest(i + 1);
            if (steps[i] != '0')
                ++updates;
            if (updates < all) // the last one ends the application
                pair.application.awaitRest(updates);
        }
    });
}

/*! Each "1" of \a steps is a request; the daemon answers it when the application has come to rest. */
QVector<Cost> costsOfRequests(Side counted, Counter count, const QByteArray &steps)
{
    const PacedPair pair;
    return pair.run(counted, count, {QStringLiteral("requesting"), QString()}, 1, [&](Process *application, Process *) {
        int requests = 0;
        for (int i = 0; i < steps.size(); ++i) {
            application->writeLine(steps.mid(i, 1));
            if (steps[i] != '0') {
                pair.daemon.awaitBegun(++requests);
                pair.application.awaitSleep();
                pair.daemon.mayGoOn();
            }
            pair.daemon.awaitRest(requests);
            pair.application.awaitRest(i + 1);
        }
    });
}

QByteArray times(int count, char step)
{
    return QByteArray(count, step);
}

// An application's mark falls into a slot, so an update counts from there to the next one's slot.
const QByteArray &applicationUpdates()
{
    static const QByteArray steps = times(Pace::WarmUp + Pace::Counted + 1, '3') + times(2 * Pace::Counted, '1');
    return steps;
}

void reportUpdates(Report *report)
{
    const QString one = QStringLiteral("an update of one attribute");
    const QString three = QStringLiteral("an update of three attributes");
    const QVector<Cost> instructions = costsOfUpdates(Side::Application, countInstructions, applicationUpdates());
    report->bound(one, instructions.value(2).instructions / Pace::Counted, Instructions, 13000);
    report->bound(three, instructions.value(0).instructions / Pace::Counted, Instructions, 16000);
    const QVector<Cost> calls = costsOfUpdates(Side::Application, countSystemCalls, applicationUpdates());
    report->bound(one + QStringLiteral(", application"), calls.value(2).systemCalls, SystemCalls, 3);
    report->bound(three + QStringLiteral(", application"), calls.value(0).systemCalls, SystemCalls, 3);
    const QVector<Cost> daemon = costsOfUpdates(Side::Daemon, countSystemCalls,
                                                times(Pace::WarmUp + Pace::Counted, '3') + times(Pace::Counted, '1')
                                                    + times(Pace::Counted + 1, '0'));
    report->bound(one + QStringLiteral(", daemon"), daemon.value(1).systemCalls - daemon.value(2).systemCalls,
                  SystemCalls, 5);
    report->bound(three + QStringLiteral(", daemon"), daemon.value(0).systemCalls - daemon.value(2).systemCalls,
                  SystemCalls, 5);
}

void reportRequests(Report *report)
{
    const QString request = QStringLiteral("a request with three addresses");
    const QByteArray steps = times(Pace::WarmUp + Pace::Counted, '1') + times(Pace::Counted + 1, '0');
    const QVector<Cost> instructions = costsOfRequests(Side::Application, countInstructions, steps);
    report->bound(request, (instructions.value(0).instructions - instructions.value(1).instructions) / Pace::Counted,
                  Instructions, 60000);
    const QVector<Cost> calls = costsOfRequests(Side::Application, countSystemCalls, steps);
    report->bound(request + QStringLiteral(", application"), calls.value(0).systemCalls - calls.value(1).systemCalls,
                  SystemCalls, 10);
    const QVector<Cost> daemon =
        costsOfRequests(Side::Daemon, countSystemCalls, times(Pace::WarmUp + Pace::Counted + 1, '1'));
    report->bound(request + QStringLiteral(", daemon"), daemon.value(0).systemCalls, SystemCalls, 3);
}

Cost costOfStart(Counter count, int interfaces, const QString &kind)
{
    const Root root;
    const auto publisher = Process::role({QStringLiteral("publisher"), QString::number(interfaces), kind});
    publisher->readLine();
    return count({QStringLiteral("counted-start"), QString::number(interfaces)}, {}).value(0);
}

double descriptors()
{
    const Root root;
    const auto publisher = Process::role({QStringLiteral("publisher"), QString::number(Many)});
    publisher->readLine();
    return Process::role({QStringLiteral("descriptors")})->finish().toDouble();
}

void reportStarts(Report *report)
{
    const QString plain = QStringLiteral("plain");
    report->bound(QStringLiteral("start-up with one interface"), instructionsOfStart(1), Instructions, 300000);
    const double few = instructionsOfStart(Few);
    const double many = instructionsOfStart(Many);
    const QString further = QStringLiteral("each further interface at start-up");
    report->add(further, (many - few) / (Many - Few), Instructions);
    report->compare(QStringLiteral("start-up with %1 virtual interfaces").arg(Many),
                    instructionsOfStart(Many, QStringLiteral("virtual")), Instructions, QStringLiteral("plain ones"),
                    many, 1.3);
    report->compare(QStringLiteral("a service with %1 interfaces").arg(Many), descriptors(),
                    QStringLiteral("descriptors"), QStringLiteral("objects that it reads"), Many + 1, 1.02);
    const double calls =
        costOfStart(countSystemCalls, Many, plain).systemCalls - costOfStart(countSystemCalls, Few, plain).systemCalls;
    // In tenths: few are for all of them, such as reading the names of a folder in parts.
    report->bound(further, std::round(calls / (Many - Few) * 10) / 10, SystemCalls, 10);
}

Cost costOfScan(int accessPoints)
{
    const Root root;
    const auto daemon = Process::role({QStringLiteral("scan-daemon"), QString::number(accessPoints)});
    daemon->readLine();
    return countInstructions({QStringLiteral("counted-scan"), QString::number(accessPoints)}).value(0);
}

void reportScans(Report *report)
{
    const QString accessPoint = QStringLiteral("a scan's access point");
    const Cost scan = costOfScan(AccessPoints);
    const Cost parse = countInstructions({QStringLiteral("counted-parse"), QString::number(AccessPoints)}).value(0);
    report->compare(accessPoint, scan.instructions / AccessPoints, Instructions, QStringLiteral("bare parse"),
                    parse.instructions / AccessPoints, 1.6);
    report->compare(accessPoint, scan.allocations / AccessPoints, QStringLiteral("allocations"),
                    QStringLiteral("bare parse"), parse.allocations / AccessPoints);
}

double instructionsOfOpening(const QString &what)
{
    const Root root;
    Process::role({QStringLiteral("filling"), what})->finish();
    return countInstructions({QStringLiteral("opening")}).value(0).instructions;
}

void reportOpening(Report *report)
{
    report->compare(QStringLiteral("opening a full object"), instructionsOfOpening(QStringLiteral("full")),
                    Instructions, QStringLiteral("an empty one"), instructionsOfOpening(QStringLiteral("empty")));
}

} // namespace

void measureCounts(Report *report)
{
    reportRequests(report);
    reportUpdates(report);
    reportStarts(report);
    reportScans(report);
    reportOpening(report);
    countStarting(report);
    countNetworks(report);
}

double instructionsOfUpdate(int interfaces)
{
    return costsOfUpdates(Side::Application, countInstructions, times(Pace::WarmUp + Pace::Counted + 1, '3'),
                          interfaces)
               .value(0)
               .instructions
        / Pace::Counted;
}

double instructionsOfStart(int interfaces, const QString &kind)
{
    return costOfStart(countInstructions, interfaces, kind).instructions;
}

double instructionsOfScan(int accessPoints)
{
    return costOfScan(accessPoints).instructions / accessPoints;
}
