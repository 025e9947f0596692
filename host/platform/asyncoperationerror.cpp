// SPDX-License-Identifier: Apache-2.0
#include "asyncoperationerror.h"

namespace morvek {

AsyncOperationError::AsyncOperationError()
    : AsyncOperationError(0, QString())
{
}

AsyncOperationError::AsyncOperationError(int code, const QString &message)
    : m_message(message),
      m_code(code)
{
}

int AsyncOperationError::code() const
{
    return m_code;
}

QString AsyncOperationError::message() const
{
    return m_message;
}

} // namespace morvek
