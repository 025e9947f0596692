// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCOPERATION_H
#define MORVEK_ASYNCOPERATION_H

#include "asyncoperationbase.h"

#include <QtCore/QList>

namespace morvek {

/*!
 * An operation that ends with a list of \a T.
 *
 * A service hands out one of the concrete classes, each with the signals success() and failure(). One of them
 * tells the end, always from the event loop and never inside the call that started the operation, so that there is
 * time to connect. The caller owns the operation and deletes it whenever it likes, usually in the slots of both;
 * deleting it earlier does not withdraw the request.
 *
 * \code
 * #include <asyncnetworkinterfaceoperation.h>
 * #include <networkinterfaceservice.h>
 *
 * void Settings::useDhcp(NetworkInterfaceService *service)
 * {
 *     AsyncNetworkInterfaceOperation *operation =
 *         service->configure(service->preferredInterface(), NetworkInterfaceConfig());
 *     connect(operation, &AsyncNetworkInterfaceOperation::success, this, [this, operation] {
 *         for (const NetworkInterface &networkInterface : operation->results())
 *             show(networkInterface.name());
 *         operation->deleteLater();
 *     });
 *     connect(operation, &AsyncNetworkInterfaceOperation::failure, this, [this, operation] {
 *         show(operation->error().message());
 *         operation->deleteLater();
 *     });
 * }
 * \endcode
 */
template<typename T>
class AsyncOperation : public AsyncOperationBase
{
public:
    /*! What the operation ended well with. It is there just before success(), and stays; until then it is empty. */
    const QList<T> results() const { return m_results; }

private:
    friend class AsyncOperationWriter;
    QList<T> m_results;
};

} // namespace morvek

#endif
