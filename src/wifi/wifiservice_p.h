// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFISERVICE_P_H
#define MORVEK_WIFISERVICE_P_H

#include "wifiservice.h"

#include <memory>

namespace morvek {

class WifiProvider;

/*!
 * Owns the provider and passes its signals on to the service.
 */
class Q_DECL_HIDDEN WifiService::Private
{
public:
    explicit Private(WifiService *service);
    Private(WifiService *service, std::unique_ptr<WifiProvider> wifiProvider);
    ~Private();

    /*! Whether there is a provider that is ready; if not, the log tells that \a operation was called in vain. */
    bool admitOrWarn(const char *operation) const;

    WifiService *q;
    std::unique_ptr<WifiProvider> provider;

private:
    Q_DISABLE_COPY(Private)
    void connectProvider();
};

} // namespace morvek

#endif
