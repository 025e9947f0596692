// SPDX-License-Identifier: Apache-2.0
#include "asyncwifiscanoperation.h"

namespace morvek {

AsyncWifiScanOperation::AsyncWifiScanOperation()
{
    qRegisterMetaType<AsyncWifiScanOperation *>();
}

AsyncWifiScanOperation::~AsyncWifiScanOperation() = default;

void AsyncWifiScanOperation::notifySuccess()
{
    emit success(this);
}

void AsyncWifiScanOperation::notifyFailure()
{
    emit failure(this);
}

} // namespace morvek
