// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISERVICE_P_H
#define MORVEK_WIFISERVICE_P_H

#include "wifiservice.h"

namespace morvek {

class WifiProvider;

/*!
 * Owns the provider and passes its signals on to the service.
 */
class Q_DECL_HIDDEN WifiService::Private
{
public:
    explicit Private(WifiService *service);
    /*! Takes \a wifiProvider over. */
    Private(WifiService *service, WifiProvider *wifiProvider);
    ~Private();

    /*! Whether there is a provider that is ready; if not, the log tells that \a operation was called in vain. */
    bool admits(const char *operation) const;

    WifiService *q;
    WifiProvider *provider;

private:
    Q_DISABLE_COPY(Private)
};

} // namespace morvek

#endif
