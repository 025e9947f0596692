// SPDX-License-Identifier: Apache-2.0
#include "scanning.h"

#include "asyncwifiscanoperation.h"
#include "bus.h"
#include "busaccesspoints.h"
#include "counts.h"
#include "measurement.h"
#include "process.h"
#include "report.h"
#include "rounds.h"
#include "scandaemon.h"
#include "services.h"
#include "timedapplication.h"

#include <QtCore/QMap>
#include <QtCore/QTimer>

#include <algorithm>
#include <array>
#include <csignal>
#include <functional>
#include <iostream>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace morvek;

namespace {

constexpr double ToParse = 2.5;
constexpr double ToDBus = 0.1;
constexpr double ToBlock = 1.6;
constexpr double ToLinear = 1.05;

constexpr int Sizes[] = {20, 200, 2000};
constexpr int BusSize = 200;

int countedRounds(int accessPoints)
{
    return accessPoints > 200 ? 200 : 1000;
}

/*! Scans, and calls \a done with what was found. */
void scan(WifiService *service, const std::function<void(const QList<WifiAccessPoint> &)> &done)
{
    AsyncWifiScanOperation *operation = service->scan();
    QObject::connect(operation, &AsyncWifiScanOperation::success, [operation, done] {
        operation->deleteLater();
        done(operation->results());
    });
}

void check(const QList<WifiAccessPoint> &results, int count)
{
    if (results.size() != count || results.constLast().bssid().isEmpty())
        qFatal("a scan found %d access points", int(results.size()));
}

int runScanDaemon(int count, Rounds *rounds)
{
    ScanDaemon daemon(count, rounds);
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}

int runScanner(int count, Rounds *rounds)
{
    WifiService *service = readyWifiService();
    const std::function<void()> next = [&] {
        scan(service, [&](const QList<WifiAccessPoint> &results) {
            check(results, count);
            if (rounds->arrived())
                next();
            else
                QCoreApplication::quit();
        });
    };
    next();
    const int result = QCoreApplication::exec();
    deleteWifiService(&service);
    return result;
}

/*! Prints what the longest event of a scan took, in microseconds; of many scans the median. */
int runLongestEvent(int count)
{
    WifiService *service = readyWifiService();
    TimedApplication *application = TimedApplication::instance();
    application->startTiming();
    QVector<qint64> longest;
    const std::function<void()> next = [&] {
        scan(service, [&](const QList<WifiAccessPoint> &results) {
            check(results, count);
            longest.append(application->takeLongest());
            if (longest.size() < countedRounds(count))
                QTimer::singleShot(0, service, next);
            else
                QCoreApplication::quit();
        });
    };
    next();
    const int result = QCoreApplication::exec();
    deleteWifiService(&service);
    std::sort(longest.begin(), longest.end());
    std::cout << double(longest[longest.size() / 2]) / 1000 << std::endl;
    return result;
}

/*! Parses the text of the results, which has just come through a socket, with nothing around it. */
int runBareParse(int count, Rounds *rounds)
{
    const QByteArray text = scanResults(count);
    std::array<int, 2> ends;
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
        qFatal("no socket");
    const pid_t sender = fork();
    if (sender == 0) {
        for (close(ends[0]); write(ends[1], text.constData(), size_t(text.size())) > 0;)
            rounds->awaitArrival();
        _exit(0);
    }
    close(ends[1]);
    QByteArray received(text.size(), 0);
    bool more = true;
    while (more) {
        if (recv(ends[0], received.data(), size_t(received.size()), MSG_WAITALL) != received.size())
            qFatal("the text did not come");
        rounds->next();
        if (QJsonDocument::fromJson(received).array().size() != count)
            qFatal("the text was not understood");
        more = rounds->arrived();
    }
    kill(sender, SIGKILL); // it may wait for one arrival more
    waitpid(sender, nullptr, 0);
    return 0;
}

std::unique_ptr<Process> startDaemon(int count, const QString &page = QString())
{
    auto daemon = Process::role({QStringLiteral("scan-daemon"), QString::number(count), page});
    daemon->readLine();
    return daemon;
}

Quantiles measureScan(int count)
{
    return measure(countedRounds(count) / 10, countedRounds(count), [&](const QString &page, const QString &) {
        const auto daemon = startDaemon(count, page);
        Process::role({QStringLiteral("scanner"), QString::number(count), page})->finish();
    });
}

Quantiles measureBareParse(int count)
{
    return measure(countedRounds(count) / 10, countedRounds(count), [&](const QString &page, const QString &) {
        Process::role({QStringLiteral("bare-parse"), QString::number(count), page})->finish();
    });
}

Quantiles measureBusScan()
{
    return measure(10, 200, [](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        const QString size = QString::number(BusSize);
        const auto sender = Process::role({QStringLiteral("bus-scan-sender"), size, page, address});
        Process::role({QStringLiteral("bus-scan-receiver"), size, page, address})->finish();
        sender->finish();
    });
}

double measureLongestEvent(int count)
{
    const Root root;
    const auto daemon = startDaemon(count);
    return Process::role({QStringLiteral("longest-event"), QString::number(count)})->finish().toDouble();
}

} // namespace

void measureScanning(Report *report)
{
    const QString microseconds = QStringLiteral("us");
    const QString parse = QStringLiteral("bare parse");
    useOneCore(true);
    for (const int count : Sizes) {
        const QString size = QStringLiteral(", %1 access points").arg(count);
        const double parsed = measureBareParse(count).median;
        const double scanned = measureScan(count).median;
        report->compare(QStringLiteral("scan published to success") + size, scanned, microseconds, parse, parsed,
                        ToParse);
        if (count == BusSize)
            report->compare(QStringLiteral("scan published to success") + size, scanned, microseconds,
                            QStringLiteral("objects over QtDBus"), measureBusScan().median, ToDBus);
        report->compare(QStringLiteral("longest event of a scan") + size, measureLongestEvent(count), microseconds,
                        parse, parsed, ToBlock);
    }
    useOneCore(false);

    double former = 0;
    for (const int count : Sizes) {
        const double each = instructionsOfScan(count);
        if (former == 0)
            former = each;
        report->compare(QStringLiteral("each of %1 access points").arg(count), each, QStringLiteral("instructions"),
                        QStringLiteral("with a tenth as many"), former, ToLinear);
        former = each;
    }
}

int runScanningRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    const int count = arguments.value(1).toInt();
    if (role == QLatin1String("longest-event"))
        return runLongestEvent(count);
    if (role == QLatin1String("scan-daemon")) {
        const QString page = arguments.value(2);
        const auto rounds = page.isEmpty() ? nullptr : std::make_unique<Rounds>(page);
        return runScanDaemon(count, rounds.get());
    }
    using Role = std::function<int(Rounds *)>;
    const QString address = arguments.value(3);
    const QMap<QString, Role> roles {
        {QStringLiteral("scanner"), [=](Rounds *rounds) { return runScanner(count, rounds); }},
        {QStringLiteral("bare-parse"), [=](Rounds *rounds) { return runBareParse(count, rounds); }},
        {QStringLiteral("bus-scan-sender"), [=](Rounds *rounds) { return runBusScanSender(address, count, rounds); }},
        {QStringLiteral("bus-scan-receiver"),
         [=](Rounds *rounds) { return runBusScanReceiver(address, count, rounds); }},
    };
    if (!roles.contains(role))
        return -1;
    Rounds rounds(arguments.value(2));
    return roles[role](&rounds);
}
