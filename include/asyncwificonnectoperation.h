// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCWIFICONNECTOPERATION_H
#define MORVEK_ASYNCWIFICONNECTOPERATION_H

#include "asyncoperation.h"
#include "networkexport.h"
#include "wifiaccesspoint.h"

namespace morvek {

/*!
 * Joining a Wi-Fi network.
 *
 * On success results() holds the one access point that the station is now connected to.
 */
class MORVEK_NETWORK_EXPORT AsyncWifiConnectOperation : public AsyncOperation<WifiAccessPoint>
{
    Q_OBJECT

public:
    AsyncWifiConnectOperation();
    ~AsyncWifiConnectOperation() override;

    /*! Emits success(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifySuccess();
    /*! Emits failure(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifyFailure();

Q_SIGNALS:
    /*! The operation ended well: results() is filled. \a asyncop is this operation. */
    void success(morvek::AsyncWifiConnectOperation *asyncop);
    /*! The operation failed: error() says why. \a asyncop is this operation. */
    void failure(morvek::AsyncWifiConnectOperation *asyncop);

private:
    Q_DISABLE_COPY(AsyncWifiConnectOperation)
};

} // namespace morvek

#endif
