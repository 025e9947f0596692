// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCHOTSPOTCONFIGOPERATION_H
#define MORVEK_ASYNCHOTSPOTCONFIGOPERATION_H

#include "asyncoperation.h"
#include "networkexport.h"
#include "wifihotspot.h"

namespace morvek {

/*!
 * Reading or writing the hotspot's profile.
 *
 * On success results() holds one profile.
 * It holds none when the tethering daemon has answered this request as one that switches the hotspot.
 */
class MORVEK_NETWORK_EXPORT AsyncHotspotConfigOperation : public AsyncOperation<WifiHotspot>
{
    Q_OBJECT

public:
    AsyncHotspotConfigOperation();
    ~AsyncHotspotConfigOperation() override;

    /*! Emits success(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifySuccess();
    /*! Emits failure(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifyFailure();

Q_SIGNALS:
    /*! The operation ended well: results() is filled. \a asyncop is this operation. */
    void success(morvek::AsyncHotspotConfigOperation *asyncop);
    /*! The operation failed: error() says why. \a asyncop is this operation. */
    void failure(morvek::AsyncHotspotConfigOperation *asyncop);

private:
    Q_DISABLE_COPY(AsyncHotspotConfigOperation)
};

} // namespace morvek

#endif
