// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCNETWORKINTERFACEOPERATION_H
#define MORVEK_ASYNCNETWORKINTERFACEOPERATION_H

#include "asyncoperation.h"
#include "networkexport.h"
#include "networkinterface.h"

namespace morvek {

/*!
 * A change of an interface's IPv4 configuration.
 *
 * On success results() holds the one interface, as it was known when the networking daemon accepted the change; its new
 * addresses may arrive later, with NetworkInterfaceService::interfaceConfigurationChanged().
 */
class MORVEK_NETWORK_EXPORT AsyncNetworkInterfaceOperation : public AsyncOperation<NetworkInterface>
{
    Q_OBJECT

public:
    AsyncNetworkInterfaceOperation();
    ~AsyncNetworkInterfaceOperation() override;

    /*! Emits success(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifySuccess();
    /*! Emits failure(); the service calls it through the event loop. */
    Q_INVOKABLE virtual void notifyFailure();

Q_SIGNALS:
    /*! The operation ended well: results() is filled. \a asyncop is this operation. */
    void success(morvek::AsyncNetworkInterfaceOperation *asyncop);
    /*! The operation failed: error() says why. \a asyncop is this operation. */
    void failure(morvek::AsyncNetworkInterfaceOperation *asyncop);

private:
    Q_DISABLE_COPY(AsyncNetworkInterfaceOperation)
};

} // namespace morvek

#endif
