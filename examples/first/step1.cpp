// SPDX-License-Identifier: Apache-2.0
#include <networkservices.h>
#include <wificontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

using namespace morvek;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);

    NetworkServices services;
    WifiController wifi(&services);
    const auto show = [&wifi, &out] { out << wifi.stateText() << Qt::endl; };
    QObject::connect(&wifi, &WifiController::stateChanged, show);
    show();
    return application.exec();
}
