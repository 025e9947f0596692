// SPDX-License-Identifier: Apache-2.0
#include "asyncoperationbase.h"

namespace morvek {

AsyncOperationBase::AsyncOperationBase(QObject *parent)
    : QObject(parent)
{
}

AsyncOperationBase::~AsyncOperationBase() = default;

AsyncOperationError AsyncOperationBase::error() const
{
    return m_error;
}

bool AsyncOperationBase::hasError() const
{
    return m_hasError;
}

void AsyncOperationBase::setError(const AsyncOperationError &error)
{
    m_error = error;
    m_hasError = true;
}

} // namespace morvek
