// SPDX-License-Identifier: Apache-2.0
#include "restingapplication.h"

#include "services.h"

#include <iostream>

using namespace morvek;

namespace {

const QString RoleName = QStringLiteral("resting");
const QString Networking = QStringLiteral("networking");
const QString Wifi = QStringLiteral("Wi-Fi");
const QString Hotspot = QStringLiteral("hotspot");

} // namespace

std::unique_ptr<Process> startHostd(const QStringList &arguments)
{
    auto hostd = std::make_unique<Process>(
        QCoreApplication::applicationDirPath() + QStringLiteral("/../host/hostd/morvek-hostd"), arguments);
    hostd->readLine();
    return hostd;
}

QStringList serviceNames()
{
    return {Networking, Wifi, Hotspot};
}

std::unique_ptr<Process> startRestingApplication(const QString &service)
{
    auto application = Process::role({RoleName, service});
    application->readLine();
    return application;
}

int runRestingApplication(const QStringList &arguments)
{
    if (arguments.value(0) != RoleName)
        return -1;
    const QString service = arguments.value(1);
    NetworkInterfaceService *networking = service == Networking ? readyNetworkInterfaceService() : nullptr;
    WifiService *wifi = service == Wifi ? readyWifiService() : nullptr;
    HotSpotService *hotspot = service == Hotspot ? readyHotSpotService() : nullptr;
    QObject input;
    onLines(&input, [](const QByteArray &) {});
    std::cout << "ready" << std::endl;
    const int result = QCoreApplication::exec();
    deleteNetworkInterfaceService(&networking);
    deleteWifiService(&wifi);
    deleteHotSpotService(&hotspot);
    return result;
}
