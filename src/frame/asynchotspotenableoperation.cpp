// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotenableoperation.h"

namespace morvek {

AsyncHotspotEnableOperation::AsyncHotspotEnableOperation()
{
    qRegisterMetaType<AsyncHotspotEnableOperation *>();
}

AsyncHotspotEnableOperation::~AsyncHotspotEnableOperation() = default;

void AsyncHotspotEnableOperation::notifySuccess()
{
    emit success(this);
}

void AsyncHotspotEnableOperation::notifyFailure()
{
    emit failure(this);
}

} // namespace morvek
