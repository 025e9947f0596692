// SPDX-License-Identifier: Apache-2.0
#include <networkinterfaceservice.h>
#include <networklibraryexports.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);

    morvek::NetworkInterfaceService *service = newNetworkInterfaceService();
    if (!service->ready()) {
        out << "The networking daemon is not there." << Qt::endl;
        deleteNetworkInterfaceService(&service);
        return 1;
    }
    const QList<morvek::NetworkInterface> interfaces = service->interfaces();
    for (const morvek::NetworkInterface &networkInterface : interfaces)
        out << networkInterface.name() << (networkInterface.connected() ? " is connected" : " is not connected")
            << Qt::endl;

    QObject::connect(service, &morvek::NetworkInterfaceService::preferredInterfaceChanged,
                     [&](const morvek::NetworkInterface &preferred) { out << "now: " << preferred << Qt::endl; });
    const int result = application.exec();
    deleteNetworkInterfaceService(&service);
    return result;
}
