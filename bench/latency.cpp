// SPDX-License-Identifier: Apache-2.0
#include "latency.h"

#include "bareloops.h"
#include "bus.h"
#include "measurement.h"
#include "process.h"
#include "publisher.h"
#include "report.h"
#include "rounds.h"
#include "services.h"

#include <functional>
#include <iostream>

using namespace morvek;

namespace {

constexpr double ToJournalLoop = 1.4;
constexpr double ToCall = 0.25;
constexpr double ToDBus = 1.0 / 3;
constexpr int WarmUp = 200;
constexpr int Counted = 3000;

int runObjectSender(Rounds *rounds)
{
    Publisher publisher(1);
    std::cout << "ready" << std::endl;
    rounds->awaitReady();
    while (rounds->next()) {
        publisher.update();
        rounds->awaitArrival();
    }
    return 0;
}

int runServiceReceiver(Rounds *rounds)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    QObject::connect(service, &NetworkInterfaceService::interfaceConfigurationChanged, service, [rounds] {
        if (!rounds->arrived())
            QCoreApplication::quit();
    });
    rounds->setReady();
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

int runServiceRequester(Rounds *rounds)
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    const ManualRequests requests(service);
    std::function<void()> request = [&] {
        if (!rounds->next()) {
            QCoreApplication::quit();
            return;
        }
        AsyncNetworkInterfaceOperation *operation = requests.next();
        QObject::connect(operation, &AsyncNetworkInterfaceOperation::failure,
                         [operation] { qFatal("a request failed: %s", qPrintable(operation->error().message())); });
        QObject::connect(operation, &AsyncNetworkInterfaceOperation::success, [&, operation] {
            operation->deleteLater();
            rounds->arrived();
            rounds->awaitArrival();
            request();
        });
    };
    request();
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

Quantiles measureBareWakeUp()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &folder) {
        Process::role({QStringLiteral("bare-wake-up"), page, folder})->finish();
    });
}

Quantiles measureBareSocket()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        Process::role({QStringLiteral("bare-socket"), page})->finish();
    });
}

Quantiles measureUpdate(const QString &receiverRole)
{
    return measure(WarmUp, Counted, [&](const QString &page, const QString &) {
        const auto sender = Process::role({QStringLiteral("object-sender"), page});
        sender->readLine();
        const auto receiver = Process::role({receiverRole, page});
        sender->finish();
        receiver->finish();
    });
}

Quantiles measureRequest()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        const auto publisher = Process::role({QStringLiteral("publisher"), QStringLiteral("1")});
        publisher->readLine();
        Process::role({QStringLiteral("service-requester"), page})->finish();
    });
}

Quantiles measureBusSignal()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        const auto sender = Process::role({QStringLiteral("bus-sender"), page, address});
        const auto receiver = Process::role({QStringLiteral("bus-receiver"), page, address});
        sender->finish();
        receiver->finish();
    });
}

Quantiles measureBusCall()
{
    return measure(WarmUp, Counted, [](const QString &page, const QString &) {
        QString address;
        const auto bus = startBus(&address);
        const auto daemon = Process::role({QStringLiteral("bus-daemon"), page, address});
        daemon->readLine();
        Process::role({QStringLiteral("bus-requester"), page, address})->finish();
    });
}

void compare(Report *report, const QString &name, const Quantiles &ours, const QString &yardstick,
             const Quantiles &theirs, double limit)
{
    report->compare(name + QStringLiteral(", median"), ours.median, QStringLiteral("us"), yardstick, theirs.median,
                    limit);
    report->compare(name + QStringLiteral(", 99th percentile"), ours.percentile99, QStringLiteral("us"), yardstick,
                    theirs.percentile99);
}

} // namespace

void measureLatency(Report *report)
{
    // Only on one core are the ratios steady enough to be judged: to wake an idle core takes longer than all else.
    for (const bool oneCore : {true, false}) {
        useOneCore(oneCore);
        const QString where = oneCore ? QStringLiteral(", one core") : QStringLiteral(", all cores");
        const QString update = QStringLiteral("update to slot") + where;
        const Quantiles updates = measureUpdate(QStringLiteral("service-receiver"));
        compare(report, update, updates, QStringLiteral("bare inotify wake-up"), measureBareWakeUp(), 0);
        compare(report, update, updates, QStringLiteral("loop that only reads the journal"),
                measureUpdate(QStringLiteral("journal-loop")), oneCore ? ToJournalLoop : 0);
        compare(report, update, updates, QStringLiteral("QtDBus signal"), measureBusSignal(), oneCore ? ToDBus : 0);
        const QString request = QStringLiteral("request to result") + where;
        const Quantiles requests = measureRequest();
        compare(report, request, requests, QStringLiteral("bare socket round trip"), measureBareSocket(), 0);
        compare(report, request, requests, QStringLiteral("QtDBus call"), measureBusCall(), oneCore ? ToCall : 0);
    }
    useOneCore(false);
}

int runLatencyRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    if (role == QLatin1String("publisher"))
        return runPublisher(arguments.mid(1));
    const QString page = arguments.value(1);
    const QString detail = arguments.value(2);
    if (page.isEmpty())
        return -1;
    Rounds rounds(page);
    if (role == QLatin1String("bare-wake-up"))
        return runBareWakeUp(detail, arguments.value(3, QStringLiteral("1")).toInt(), &rounds);
    if (role == QLatin1String("journal-loop"))
        return runJournalLoop(&rounds);
    if (role == QLatin1String("bare-socket"))
        return runBareSocket(&rounds);
    if (role == QLatin1String("object-sender"))
        return runObjectSender(&rounds);
    if (role == QLatin1String("service-receiver"))
        return runServiceReceiver(&rounds);
    if (role == QLatin1String("service-requester"))
        return runServiceRequester(&rounds);
    if (role == QLatin1String("bus-sender"))
        return runBusSender(detail, &rounds);
    if (role == QLatin1String("bus-receiver"))
        return runBusReceiver(detail, &rounds);
    if (role == QLatin1String("bus-daemon"))
        return runBusDaemon(detail);
    if (role == QLatin1String("bus-requester"))
        return runBusRequester(detail, &rounds);
    return -1;
}
