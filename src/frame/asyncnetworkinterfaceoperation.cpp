// SPDX-License-Identifier: Apache-2.0
#include "asyncnetworkinterfaceoperation.h"

namespace morvek {

AsyncNetworkInterfaceOperation::AsyncNetworkInterfaceOperation()
{
    qRegisterMetaType<AsyncNetworkInterfaceOperation *>();
}

AsyncNetworkInterfaceOperation::~AsyncNetworkInterfaceOperation() = default;

void AsyncNetworkInterfaceOperation::notifySuccess()
{
    emit success(this);
}

void AsyncNetworkInterfaceOperation::notifyFailure()
{
    emit failure(this);
}

} // namespace morvek
