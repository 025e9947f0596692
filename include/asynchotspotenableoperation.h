// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCHOTSPOTENABLEOPERATION_H
#define MORVEK_ASYNCHOTSPOTENABLEOPERATION_H

#include "asyncoperation.h"
#include "networkexport.h"

namespace morvek {

/*!
 * Switching the hotspot on or off.
 *
 * On success results() holds one value: true after switching on, false after switching off.
 * It holds none when the tethering daemon has answered this request as one about the profile.
 */
class MORVEK_NETWORK_EXPORT AsyncHotspotEnableOperation : public AsyncOperation<bool>
{
    Q_OBJECT

public:
    AsyncHotspotEnableOperation();
    ~AsyncHotspotEnableOperation() override;

    /*! Emits success(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifySuccess();
    /*! Emits failure(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifyFailure();

Q_SIGNALS:
    /*! The operation ended well: results() is filled. \a asyncop is this operation. */
    void success(morvek::AsyncHotspotEnableOperation *asyncop);
    /*! The operation failed: error() says why. \a asyncop is this operation. */
    void failure(morvek::AsyncHotspotEnableOperation *asyncop);

private:
    Q_DISABLE_COPY(AsyncHotspotEnableOperation)
};

} // namespace morvek

#endif
