// SPDX-License-Identifier: Apache-2.0
#ifndef HOTSPOTPROVIDERFIXTURE_H
#define HOTSPOTPROVIDERFIXTURE_H

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "hotspotevents.h"
#include "hotspotproviderzop_p.h"
#include "operationend.h"
#include "tetheringdaemon.h"
#include "textlines.h"

#include <memory>

using ConfigPointer = std::unique_ptr<morvek::AsyncHotspotConfigOperation>;
using ConfigEnd = OperationEnd<morvek::AsyncHotspotConfigOperation>;
using EnablePointer = std::unique_ptr<morvek::AsyncHotspotEnableOperation>;
using EnableEnd = OperationEnd<morvek::AsyncHotspotEnableOperation>;

/*! The profile that TetheringDaemon::CarProfile is. */
inline morvek::WifiHotspot car()
{
    morvek::WifiHotspot hotspot;
    hotspot.setName(QStringLiteral("Car"));
    hotspot.setPassphrase(QStringLiteral("open sesame"));
    hotspot.setSecurityType(morvek::WifiSecurityProtocolWpa2);
    hotspot.setBand(morvek::WifiBand5GHz);
    hotspot.setMaxClients(10);
    hotspot.setInactivityTime(0);
    hotspot.setBlockConn(true);
    return hotspot;
}

/*! car() as it is written to the manager. */
const char *const CarWritten =
    R"({"lancfg":{"dhcp_lease_time":"120","gateway_address":"192.168.0.1","gateway_subnet":"255.255.255.0"},)"
    R"("lanprofile":{"autoshutdown_time":0,"block_conn":true,"max_num_sta":10,"mhs_band":"5.0",)"
    R"("passphrase":"open sesame","privacy":false,"security_type":"wpa2","ssid":"Car"},)"
    R"("lantype":"wlanap","type":"lan","wantype":"bridge"})";

const char *const EmptyProfileLine =
    "warning 1300 Attempt to serialize WifiHotspot profile, but WifiHotspot profile is empty.";

/*! Requests of a provider. */
inline EnablePointer switchOn(morvek::HotspotProvider &provider)
{
    auto operation = std::make_unique<morvek::AsyncHotspotEnableOperation>();
    provider.setEnabled(operation.get(), true);
    return operation;
}

inline EnablePointer switchOff(morvek::HotspotProvider &provider)
{
    auto operation = std::make_unique<morvek::AsyncHotspotEnableOperation>();
    provider.setEnabled(operation.get(), false);
    return operation;
}

inline ConfigPointer fetch(morvek::HotspotProvider &provider)
{
    auto operation = std::make_unique<morvek::AsyncHotspotConfigOperation>();
    provider.configuration(operation.get());
    return operation;
}

inline ConfigPointer update(morvek::HotspotProvider &provider, const morvek::WifiHotspot &profile = car())
{
    auto operation = std::make_unique<morvek::AsyncHotspotConfigOperation>();
    provider.setConfiguration(operation.get(), profile);
    return operation;
}

/*! A ready provider. */
struct HotspotProviderFixture
{
    HotspotProviderFixture()
    {
        provider = std::make_unique<morvek::HotspotProviderZop>();
        TetheringDaemon::start();
        runQueued(); // the watcher goes
        events = std::make_unique<HotspotEvents>(*provider);
        ZopDouble::clearJournal();
    }

    /*! Lets the provider fetch car(). */
    void fetchCar() const
    {
        const ConfigPointer operation = fetch(*provider);
        TetheringDaemon::accept("retrieve_profile", TetheringDaemon::lastId(), json(TetheringDaemon::CarProfile));
        events->take();
    }

    std::unique_ptr<morvek::HotspotProviderZop> provider;
    std::unique_ptr<HotspotEvents> events;
};

/*! An operation of either kind, sent with the request of its name, and how it ended. */
struct Pending
{
    Pending(morvek::HotspotProvider &provider, const QString &request)
    {
        if (request == QLatin1String("start") || request == QLatin1String("stop")) {
            enable = request == QLatin1String("start") ? switchOn(provider) : switchOff(provider);
            enableEnd = std::make_unique<EnableEnd>(enable.get());
        } else {
            config = request == QLatin1String("update_profile") ? update(provider) : fetch(provider);
            configEnd = std::make_unique<ConfigEnd>(config.get());
        }
        id = TetheringDaemon::lastId();
    }

    morvek::AsyncOperationBase *operation() const
    {
        return config ? static_cast<morvek::AsyncOperationBase *>(config.get()) : enable.get();
    }
    QString end() const { return config ? configEnd->text() : enableEnd->text(); }

    int id;
    ConfigPointer config;
    EnablePointer enable;
    std::unique_ptr<ConfigEnd> configEnd;
    std::unique_ptr<EnableEnd> enableEnd;
};

/*! Another profile as the manager answers it. */
const char *const VanProfile = R"({"lanprofile":{"ssid":"Van","passphrase":"p","mhs_band":"2.4","max_num_sta":1,)"
                               R"("security_type":"none","autoshutdown_time":2,"privacy":true,"block_conn":false}})";

/*! What is logged of a reply that nobody waits for. */
inline QStringList unknownId(int id)
{
    return {QStringLiteral("warning 1300 No operation for message with id:%1").arg(id)};
}

#endif
