// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCOPERATIONERROR_H
#define MORVEK_ASYNCOPERATIONERROR_H

#include "platformexport.h"

#include <QtCore/QString>

namespace morvek {

/*! Why an operation failed: a code and an English message. The default one, code 0, stands for no error. */
class MORVEK_PLATFORM_EXPORT AsyncOperationError
{
public:
    AsyncOperationError();
    AsyncOperationError(int code, const QString &message);

    int code() const;
    QString message() const;

private:
    QString m_message;
    int m_code;
};

} // namespace morvek

#endif
