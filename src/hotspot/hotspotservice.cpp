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
    auto *operation = new AsyncHotspotEnableOperation;
    if (ready())
        d->provider->setEnabled(operation, enable);
    else
        refuse(*operation, SetEnabledSignature);
    return operation;
}

bool HotSpotService::enabled() const
{
    return ready() && d->provider->enabled();
}

AsyncHotspotConfigOperation *HotSpotService::setConfiguration(const WifiHotspot &profile)
{
    auto *operation = new AsyncHotspotConfigOperation;
    if (ready())
        d->provider->setConfiguration(operation, profile);
    else
        refuse(*operation, SetConfigurationSignature);
    return operation;
}

AsyncHotspotConfigOperation *HotSpotService::configuration() const
{
    auto *operation = new AsyncHotspotConfigOperation;
    if (ready())
        d->provider->configuration(operation);
    else
        refuse(*operation, ConfigurationSignature);
    return operation;
}

HotSpotService::Private::Private(HotSpotService *service)
    : Private(service, new HotspotProviderZop)
{
}

HotSpotService::Private::Private(HotSpotService *service, HotspotProvider *hotspotProvider)
    : q(service),
      provider(hotspotProvider)
{
    connect(provider, &ServiceProviderBase::readyChanged, q, &ServiceBase::readyChanged);
    connect(provider, &HotspotProvider::enabledChanged, q, &HotSpotService::enabledChanged);
    connect(provider, &HotspotProvider::configurationChanged, q, &HotSpotService::configurationChanged);
}

} // namespace morvek
