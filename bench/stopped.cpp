// SPDX-License-Identifier: Apache-2.0
#include "stopped.h"

#include "process.h"
#include "publisher.h"
#include "report.h"
#include "services.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>

#include <algorithm>
#include <csignal>
#include <iostream>

using namespace morvek;

namespace {

constexpr int Updates = 100000;
constexpr double LargestFile = 5 * 1024; // KiB

/*! With a line, updates the interface very often, and prints how large its file was, in KiB. */
int runFlood()
{
    Publisher publisher(1);
    const QString path =
        QFile::decodeName(qgetenv("ZOP_ROOT")) + QStringLiteral("/zop/services/networking/all/interfaces/if0000");
    onLines(&publisher, [&](const QByteArray &) {
        qint64 largest = 0;
        for (int i = 0; i < Updates; ++i) {
            publisher.update();
            largest = std::max(largest, QFile(path).size());
        }
        std::cout << largest / 1024 << std::endl;
    });
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}

/*! Prints how many updates it was told, as soon as it knows the last one. */
int runTold()
{
    NetworkInterfaceService *service = readyNetworkInterfaceService();
    int told = 0;
    QObject::connect(service, &NetworkInterfaceService::interfaceConfigurationChanged, service,
                     [&told](const NetworkInterface &networkInterface) {
                         ++told;
                         if (networkInterface.maxTransmissionUnit() == Updates)
                             std::cout << told << std::endl;
                     });
    onLines(service, [](const QByteArray &) {});
    std::cout << "ready" << std::endl;
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&service);
    return result;
}

} // namespace

void measureStopped(Report *report)
{
    const Root root;
    const auto daemon = Process::role({QStringLiteral("flood")});
    daemon->readLine();
    const auto application = Process::role({QStringLiteral("told")});
    application->readLine();

    const auto process = pid_t(application->id());
    kill(process, SIGSTOP);
    daemon->writeLine("flood");
    const double size = daemon->readLine().toDouble();
    QElapsedTimer timer;
    timer.start();
    kill(process, SIGCONT);
    const double told = application->readLine().toDouble();
    const double milliseconds = double(timer.nsecsElapsed()) / 1000000;

    report->bound(QStringLiteral("an object's file after %1 updates, a reader stopped").arg(Updates), size,
                  QStringLiteral("KiB"), LargestFile);
    report->bound(QStringLiteral("what that reader is told when it goes on"), told, QStringLiteral("updates"), 1);
    report->add(QStringLiteral("until it is told the last one"), milliseconds, QStringLiteral("ms"));
}

int runStoppedRole(const QStringList &arguments)
{
    const QString role = arguments.value(0);
    if (role == QLatin1String("flood"))
        return runFlood();
    return role == QLatin1String("told") ? runTold() : -1;
}
