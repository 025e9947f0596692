// SPDX-License-Identifier: Apache-2.0
#ifndef WIFIPROVIDERFIXTURE_H
#define WIFIPROVIDERFIXTURE_H

#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "operationend.h"
#include "wificonnectionconfig.h"
#include "wifidaemon.h"
#include "wifievents.h"
#include "wifiproviderzop_p.h"

#include <initializer_list>
#include <memory>

using ScanPointer = std::unique_ptr<morvek::AsyncWifiScanOperation>;
using ScanEnd = OperationEnd<morvek::AsyncWifiScanOperation>;
using ConnectPointer = std::unique_ptr<morvek::AsyncWifiConnectOperation>;
using ConnectEnd = OperationEnd<morvek::AsyncWifiConnectOperation>;

inline QStringList lines(std::initializer_list<const char *> texts)
{
    QStringList list;
    for (const char *text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

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
