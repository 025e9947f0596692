// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"

namespace morvek {

AsyncHotspotConfigOperation::AsyncHotspotConfigOperation()
{
    qRegisterMetaType<AsyncHotspotConfigOperation *>();
}

AsyncHotspotConfigOperation::~AsyncHotspotConfigOperation() = default;

void AsyncHotspotConfigOperation::notifySuccess()
{
    emit success(this);
}

void AsyncHotspotConfigOperation::notifyFailure()
{
    emit failure(this);
}

} // namespace morvek
