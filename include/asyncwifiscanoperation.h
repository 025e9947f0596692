// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCWIFISCANOPERATION_H
#define MORVEK_ASYNCWIFISCANOPERATION_H

#include "asyncoperation.h"
#include "networkexport.h"
#include "wifiaccesspoint.h"

namespace morvek {

/*!
 * A scan for access points.
 *
 * On success results() holds every access point of the scan in the daemon's order. It is empty when none were found,
 * or when what the daemon has published cannot be read.
 */
class MORVEK_NETWORK_EXPORT AsyncWifiScanOperation : public AsyncOperation<WifiAccessPoint>
{
    Q_OBJECT

public:
    AsyncWifiScanOperation();
    ~AsyncWifiScanOperation() override;

    /*! Emits success(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifySuccess();
    /*! Emits failure(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifyFailure();

Q_SIGNALS:
    /*! The operation ended well: results() is filled. \a asyncop is this operation. */
    void success(morvek::AsyncWifiScanOperation *asyncop);
    /*! The operation failed: error() says why. \a asyncop is this operation. */
    void failure(morvek::AsyncWifiScanOperation *asyncop);

private:
    Q_DISABLE_COPY(AsyncWifiScanOperation)
};

} // namespace morvek

#endif
