// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ASYNCOPERATIONERROR_H
#define LEAST_ASYNCOPERATIONERROR_H

#include <QtCore/QString>

namespace morvek {

class AsyncOperationError
{
public:
    AsyncOperationError(int code, const QString &message);
};

} // namespace morvek

#endif
