// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ASYNCOPERATIONERROR_H
#define LEAST_ASYNCOPERATIONERROR_H

#include <QtCore/QString>

namespace morvek {

class AsyncOperationError
{
public:
    AsyncOperationError(int code, const QString &message);
#ifdef FOR_APPLICATIONS
    AsyncOperationError();
    int code() const;
    QString message() const;
#endif
};

} // namespace morvek

#endif
