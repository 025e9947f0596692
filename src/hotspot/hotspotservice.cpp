// SPDX-License-Identifier: Apache-2.0
#include "hotspotservice.h"

#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncoperationwriter_p.h"
#include "hotspotproviderzop_p.h"
#include "hotspotservice_p.h"
#include "networklog_p.h"

namespace morvek {

namespace {

const QLatin1String NotReadyMessage("The service is not ready.");

const char SetEnabledSignature[] = "morvek::AsyncHotspotEnableOperation* morvek::HotSpotService::setEnabled(bool)";
const char SetConfigurationSignature[] =
    "morvek::AsyncHotspotConfigOperation* morvek::HotSpotService::setConfiguration(const morvek::WifiHotspot&)";
const char ConfigurationSignature[] =
    "morvek::AsyncHotspotConfigOperation* morvek::HotSpotService::configuration() const";

template<typename T>
void refuse(AsyncOperation<T> &operation, const char *signature)
{
    AsyncOperationWriter::setError(operation, NotReadyMessage);
    NetworkLog::error(NotReadyMessage, signature);
}

} // namespace

HotSpotService::HotSpotService()
    : d(new Private(this))
{
}

HotSpotService::~HotSpotService() = default;

bool HotSpotService::available() const
{
    return true;
}

bool HotSpotService::ready() const
{
    return d->provider && d->provider->ready();
}

AsyncHotspotEnableOperation *HotSpotService::setEnabled(bool enable)
{
    auto operation = std::make_unique<AsyncHotspotEnableOperation>();
    if (ready())
        d->provider->setEnabled(operation.get(), enable);
    else
        refuse(*operation, SetEnabledSignature);
    return operation.release();
}

bool HotSpotService::enabled() const
{
    return ready() && d->provider->enabled();
}

AsyncHotspotConfigOperation *HotSpotService::setConfiguration(const WifiHotspot &profile)
{
    auto operation = std::make_unique<AsyncHotspotConfigOperation>();
    if (ready())
        d->provider->setConfiguration(operation.get(), profile);
    else
        refuse(*operation, SetConfigurationSignature);
    return operation.release();
}

AsyncHotspotConfigOperation *HotSpotService::configuration() const
{
    auto operation = std::make_unique<AsyncHotspotConfigOperation>();
    if (ready())
        d->provider->configuration(operation.get());
    else
        refuse(*operation, ConfigurationSignature);
    return operation.release();
}

HotSpotService::Private::Private(HotSpotService *service)
    : q(service)
{
    auto made = std::make_unique<HotspotProviderZop>();
    connectProvider(made.get());
    provider = made.release();
}

HotSpotService::Private::Private(HotSpotService *service, HotspotProvider *hotspotProvider)
    : q(service),
      provider(hotspotProvider)
{
    connectProvider(provider);
}

void HotSpotService::Private::connectProvider(const HotspotProvider *sender)
{
    connect(sender, &ServiceProviderBase::readyChanged, q, &ServiceBase::readyChanged);
    connect(sender, &HotspotProvider::enabledChanged, q, &HotSpotService::enabledChanged);
    connect(sender, &HotspotProvider::configurationChanged, q, &HotSpotService::configurationChanged);
}

} // namespace morvek
