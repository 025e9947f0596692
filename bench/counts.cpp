// SPDX-License-Identifier: Apache-2.0
#include "counts.h"

#include "pace.h"
#include "process.h"
#include "report.h"
#include "starting.h"
#include "tracing.h"

namespace {

const QString Instructions = QStringLiteral("instructions");
const QString SystemCalls = QStringLiteral("system calls");

constexpr int Few = 100;
constexpr int Many = 1000;
constexpr int AccessPoints = 200;

using Counter = QVector<Cost> (*)(const QStringList &arguments, const std::function<void(Process *traced)> &feed);

enum class Side { Application, Daemon };

/*! An application and a daemon with \a interfaces, of which one is counted while both are driven line by line. */
class PacedPair
{
public:
    PacedPair(const QStringList &application, int interfaces)
        : m_applicationRole(application + QStringList(page(QStringLiteral("application")))),
          m_daemonRole({QStringLiteral("publisher"), QString::number(interfaces), QStringLiteral("plain"),
                        page(QStringLiteral("daemon"))})
    {
    }

    using Feed = std::function<void(PacedPair *pair, Process *application, Process *daemon)>;

    QVector<Cost> run(Side side, Counter count, const Feed &feed)
    {
        if (side == Side::Application) {
            const auto daemon = Process::role(m_daemonRole);
            daemon->readLine();
            return count(m_applicationRole, [&](Process *application) {
                applicationPace.awaitReady();
                feed(this, application, daemon.get());
            });
        }
        return count(m_daemonRole, [&](Process *daemon) {
            daemon->readLine();
            const auto application = Process::role(m_applicationRole);
            applicationPace.awaitReady();
            feed(this, application.get(), daemon);
        });
    }

private:
    QString page(const QString &name) const { return m_root.folder() + QLatin1Char('/') + name; }

    Root m_root;
    QStringList m_applicationRole;
    QStringList m_daemonRole;

public:
    Pace applicationPace {page(QStringLiteral("application"))};
    Pace daemonPace {page(QStringLiteral("daemon"))};
};

/*! Each character of \a steps is the number of attributes that an update has; 0 updates nothing. */
QVector<Cost> costsOfUpdates(Side side, Counter count, const QByteArray &steps, int interfaces = 1)
{
    const int all = steps.size() - steps.count('0');
    PacedPair pair({QStringLiteral("updated"), QString::number(all)}, interfaces);
    return pair.run(side, count, [&](PacedPair *paced, Process *, Process *daemon) {
        int updates = 0;
        for (int i = 0; i < steps.size(); ++i) {
            daemon->writeLine(steps.mid(i, 1));
            paced->daemonPace.awaitRest(i + 1);
            if (steps[i] != '0')
                ++updates;
            // The last one ends the application.
            if (updates < all)
                paced->applicationPace.awaitRest(updates);
        }
    });
}

/*! Each "1" of \a steps is a request; the daemon answers it when the application has come to rest. */
QVector<Cost> costsOfRequests(Side side, Counter count, const QByteArray &steps)
{
    PacedPair pair({QStringLiteral("requesting"), QString()}, 1);
    return pair.run(side, count, [&](PacedPair *paced, Process *application, Process *) {
        int requests = 0;
        for (int i = 0; i < steps.size(); ++i) {
            application->writeLine(steps.mid(i, 1));
            if (steps[i] != '0') {
                paced->daemonPace.awaitBegun(++requests);
                paced->applicationPace.awaitSleep();
                paced->daemonPace.mayGoOn();
            }
            paced->daemonPace.awaitRest(requests);
            paced->applicationPace.awaitRest(i + 1);
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
    report->bound(QStringLiteral("an application with %1 interfaces").arg(Many), descriptors(),
                  QStringLiteral("descriptors"), 100);
    const double calls =
        costOfStart(countSystemCalls, Many, plain).systemCalls - costOfStart(countSystemCalls, Few, plain).systemCalls;
    report->bound(further, calls / (Many - Few), SystemCalls, 10);
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
