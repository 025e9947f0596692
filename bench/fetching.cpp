// SPDX-License-Identifier: Apache-2.0
#include "fetching.h"

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "measurement.h"
#include "process.h"
#include "profiledaemon.h"
#include "report.h"
#include "rounds.h"
#include "services.h"

#include <functional>
#include <iostream>
#include <memory>
#include <vector>

#include <malloc.h>

using namespace morvek;

namespace {

constexpr double ToRoundTrip = 2;
constexpr int WarmUp = 200;
constexpr int Counted = 3000;
constexpr int ManyRequests = 10000;

int runProfileDaemon()
{
    ProfileDaemon daemon;
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}

int runFetcher(Rounds *rounds)
{
    HotSpotService *service = readyHotSpotService();
    const std::function<void()> fetch = [&] {
        if (!rounds->next()) {
            QCoreApplication::quit();
            return;
        }
        AsyncHotspotConfigOperation *operation = service->configuration();
        QObject::connect(operation, &AsyncHotspotConfigOperation::success, [&, operation] {
            rounds->arrived();
            rounds->awaitArrival();
            if (operation->results().constFirst().isEmpty())
                qFatal("there is no profile");
            operation->deleteLater();
            fetch();
        });
    };
    fetch();
    const int result = QCoreApplication::exec();
    deleteHotSpotService(&service);
    return result;
}

/*! The same request and its reply, with nothing of the library around them. */
int runRoundTrip(Rounds *rounds)
{
    ZopObject control(QStringLiteral("/zop/services/tethering/control"), ZopObject::ReadWrite, false);
    ZopChangeset changes;
    changes.assignments = {
        {QStringLiteral("msg"), QStringLiteral("retrieve_profile")},
        {QStringLiteral("dat"),
         QJsonObject {{QStringLiteral("type"), QStringLiteral("lan")},
                      {QStringLiteral("lan_type"), QStringLiteral("wlanap")}}},
    };
    int id = 0;
    const auto request = [&] {
        if (!rounds->next()) {
            QCoreApplication::quit();
            return;
        }
        changes.assignments.insert(QStringLiteral("id"), ++id);
        if (!control.setAttributes(changes))
            qFatal("cannot write: %s", qPrintable(control.errorString()));
    };
    QObject::connect(&control, &ZopObject::attributesChanged, [&] {
        rounds->arrived();
        rounds->awaitArrival();
        request();
    });
    request();
    return QCoreApplication::exec();
}

/*! Prints the bytes that each of many fetches takes while it waits for its reply, and those that stay afterwards. */
int runMemory()
{
    HotSpotService *service = readyHotSpotService();
    double pending = 0;
    double kept = 0;
    for (const int requests : {100, ManyRequests}) { // the first ones do not count
        std::vector<std::unique_ptr<AsyncHotspotConfigOperation>> operations(static_cast<size_t>(requests));
        const auto before = mallinfo2().uordblks;
        await(service->setEnabled(false));
        for (auto &operation : operations)
            operation.reset(service->configuration());
        await(service->setEnabled(false)); // now the daemon has them all
        pending = double(mallinfo2().uordblks - before) / requests;
        await(service->setEnabled(true)); // now it has answered
        for (const auto &operation : operations) {
            if (operation->results().size() != 1)
                qFatal("a fetch has not ended");
        }
        for (auto &operation : operations)
            operation.reset();
        kept = (double(mallinfo2().uordblks) - double(before)) / requests;
    }
    std::cout << pending << ' ' << kept << std::endl;
    deleteHotSpotService(&service);
    return 0;
}

std::unique_ptr<Process> startDaemon()
{
    auto daemon = Process::role({QStringLiteral("profile-daemon")});
    daemon->readLine();
    return daemon;
}

Quantiles measureRole(const QString &role)
{
    return measure(WarmUp, Counted, [&](const QString &page, const QString &) {
        const auto daemon = startDaemon();
        Process::role({role, page})->finish();
    });
}

} // namespace

void measureFetching(Report *report)
{
    useOneCore(true);
    report->compare(QStringLiteral("profile fetched"), measureRole(QStringLiteral("fetcher")).median,
                    QStringLiteral("us"), QStringLiteral("bare round trip"),
                    measureRole(QStringLiteral("round-trip")).median, ToRoundTrip);
    useOneCore(false);

    const Root root;
    const auto daemon = startDaemon();
    const QList<QByteArray> bytes = Process::role({QStringLiteral("fetch-memory")})->finish().trimmed().split(' ');
    report->add(QStringLiteral("a pending fetch takes"), bytes.value(0).toDouble(), QStringLiteral("bytes"));
    report->add(QStringLiteral("a finished fetch keeps"), bytes.value(1).toDouble(), QStringLiteral("bytes"));
}

int runFetchingRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    if (role == QLatin1String("profile-daemon"))
        return runProfileDaemon();
    if (role == QLatin1String("fetch-memory"))
        return runMemory();
    if (role != QLatin1String("fetcher") && role != QLatin1String("round-trip"))
        return -1;
    Rounds rounds(arguments.value(1));
    return role == QLatin1String("fetcher") ? runFetcher(&rounds) : runRoundTrip(&rounds);
}
