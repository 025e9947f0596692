// SPDX-License-Identifier: Apache-2.0
#include "asyncwificonnectoperation.h"

namespace morvek {

AsyncWifiConnectOperation::AsyncWifiConnectOperation()
{
    qRegisterMetaType<AsyncWifiConnectOperation *>();
}

AsyncWifiConnectOperation::~AsyncWifiConnectOperation() = default;

void AsyncWifiConnectOperation::notifySuccess()
{
    emit success(this);
}

void AsyncWifiConnectOperation::notifyFailure()
{
    emit failure(this);
}

} // namespace morvek
