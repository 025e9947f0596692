// SPDX-License-Identifier: Apache-2.0
#include <networkservices.h>
#include <wificontroller.h>
#include <wifinetworkmodel.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

using namespace morvek;

static void list(const WifiNetworkModel &networks, QTextStream &out)
{
    for (int row = 0; row < networks.count(); ++row) {
        const QModelIndex network = networks.index(row);
        out << (network.data(WifiNetworkModel::InUseRole).toBool() ? "* " : "  ")
            << network.data(WifiNetworkModel::DisplayNameRole).toString() << ", "
            << network.data(WifiNetworkModel::SecurityRole).toString() << Qt::endl;
    }
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);

    NetworkServices services;
    WifiController wifi(&services);
    const auto look = [&wifi, &out] {
        if (wifi.availability() != WifiController::Ready)
            return;
        NetworkRequest *scan = wifi.scan();
        QObject::connect(scan, &NetworkRequest::finished, [&wifi, &out] { list(*wifi.networks(), out); });
    };
    QObject::connect(&wifi, &WifiController::availabilityChanged, look);
    look();
    return application.exec();
}
