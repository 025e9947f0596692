// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_TOLDSTATES_H
#define MORVEK_TEST_TOLDSTATES_H

#include <wificontroller.h>

#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <utility>

/*! What a controller tells, one line each time, such as "Joining on Home/01 joining Garage". */
class ToldStates : public QObject
{
public:
    explicit ToldStates(const morvek::WifiController &controller)
    {
        connect(&controller, &morvek::WifiController::stateChanged, this,
                [this, &controller] { lines += line(controller); });
    }

    static QString line(const morvek::WifiController &controller)
    {
        QStringList words {QVariant::fromValue(controller.state()).toString()};
        words += controller.isPowered() ? QStringLiteral("on") : QStringLiteral("off");
        if (controller.isConnected())
            words += QStringLiteral("%1/%2").arg(controller.ssid(), controller.bssid().right(2));
        if (!controller.joiningSsid().isEmpty())
            words += QStringLiteral("joining ") + controller.joiningSsid();
        return words.join(QLatin1Char(' '));
    }

    QStringList take() { return std::exchange(lines, {}); }

    QStringList lines;
};

#endif
