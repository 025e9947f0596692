// SPDX-License-Identifier: Apache-2.0
#ifndef WIFIPROVIDERFIXTURE_H
#define WIFIPROVIDERFIXTURE_H

#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "operationend.h"
#include "textform.h"
#include "textlines.h"
#include "wificonnectionconfig.h"
#include "wifidaemon.h"
#include "wifievents.h"
#include "wifiproviderzop_p.h"

#include <memory>

using ScanPointer = std::unique_ptr<morvek::AsyncWifiScanOperation>;
using ScanEnd = OperationEnd<morvek::AsyncWifiScanOperation>;
using ConnectPointer = std::unique_ptr<morvek::AsyncWifiConnectOperation>;
using ConnectEnd = OperationEnd<morvek::AsyncWifiConnectOperation>;

/*! The numbers are those of the two enumerations. */
inline morvek::WifiConnectionConfig wifiConfig(const QString &ssid, const QString &passkey, int keyManagement,
                                               int protocol)
{
    morvek::WifiConnectionConfig config;
    config.setSsid(ssid);
    config.setPasskey(passkey);
    config.setKeyManagementType(morvek::WifiKeyManagementType(keyManagement));
    config.setSecurityProtocol(morvek::WifiSecurityProtocol(protocol));
    return config;
}

inline morvek::WifiConnectionConfig home()
{
    return wifiConfig(QStringLiteral("Home"), QStringLiteral("correct horse"), 0x2, 0x8);
}

/*! The request that joins home(). */
const char *const NewHome = R"(wnet_new {"key_mgmt":"WPA-PSK","psk":"correct horse","ssid":"Home"})";

/*! The commands that were sent, each as "name dat", or "name" alone when it has none. */
inline QStringList sent()
{
    QStringList commands;
    const QList<ZopDouble::Command> all = ZopDouble::commands();
    for (const ZopDouble::Command &command : all)
        commands.append(command.message
                        + (command.dat.isValid() ? QLatin1Char(' ') + command.dat.toString() : QString()));
    return commands;
}

inline int lastCommand()
{
    return ZopDouble::commands().size() - 1;
}

// What is logged of each "wifi_status".
const char *const ConnectionThere = "debug1 1300 Wi-Fi status ZOP object status attribute is valid. Populating "
                                    "currently connected access point";
const char *const ConnectionGone = "debug1 1300 Wi-Fi status ZOP object status attribute is invalid. Clearing "
                                   "currently connected access point";
/*! The access point of WifiDaemon::connection(), as a text. */
const char *const HomeText = "WifiAccessPoint { bssid: 02:00:00:00:01:0a, ssid: Home, rssi: 0, frequency: 0, ciphers: "
                             "2, key management: 2, protocols: 8, service set: 2 }";
const char *const NoneText = "WifiAccessPoint { bssid: , ssid: , rssi: 0, frequency: 0, ciphers: 1, key management: 1, "
                             "protocols: 1, service set: 2 }";

inline QString accessPointText(const morvek::WifiProvider &provider)
{
    morvek::WifiAccessPoint accessPoint = provider.connectedAccessPoint();
    return textForm(accessPoint);
}

/*! A ready provider. */
struct WifiProviderFixture
{
    WifiProviderFixture()
    {
        provider = std::make_unique<morvek::WifiProviderZop>();
        WifiDaemon::start();
        runQueued(); // the watcher goes
        events = std::make_unique<WifiEvents>(*provider);
        ZopDouble::clearJournal();
    }

    ConnectPointer join(const morvek::WifiConnectionConfig &config = home()) const
    {
        auto operation = std::make_unique<morvek::AsyncWifiConnectOperation>();
        provider->connectAccessPoint(operation.get(), config);
        return operation;
    }

    ScanPointer scan() const
    {
        auto operation = std::make_unique<morvek::AsyncWifiScanOperation>();
        provider->scan(operation.get());
        return operation;
    }

    std::unique_ptr<morvek::WifiProviderZop> provider;
    std::unique_ptr<WifiEvents> events;
};

#endif
