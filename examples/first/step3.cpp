// SPDX-License-Identifier: Apache-2.0
#include <networkservices.h>
#include <wificontroller.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

using namespace morvek;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QString ssid = application.arguments().value(1);
    const QString passkey = application.arguments().value(2);
    QTextStream out(stdout);

    NetworkServices services;
    WifiController wifi(&services);
    const auto join = [&] {
        if (wifi.availability() != WifiController::Ready)
            return;
        NetworkRequest *request = wifi.join(ssid, passkey);
        QObject::connect(request, &NetworkRequest::finished, [request, &wifi, &out] {
            out << (request->isDone() ? wifi.stateText() : request->sentence()) << Qt::endl;
            QCoreApplication::exit(request->isDone() ? 0 : 1);
        });
    };
    QObject::connect(&wifi, &WifiController::availabilityChanged, join);
    join();
    return application.exec();
}
