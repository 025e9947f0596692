// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ASYNCOPERATIONBASE_H
#define LEAST_ASYNCOPERATIONBASE_H

#include "asyncoperationerror.h"

#include <QtCore/QObject>

namespace morvek {

class AsyncOperationBase : public QObject
{
    Q_OBJECT

public:
    explicit AsyncOperationBase(QObject *parent = nullptr);

    void setError(const AsyncOperationError &error);
#ifdef FOR_APPLICATIONS
    AsyncOperationError error() const;
    bool hasError() const;
#endif
};

} // namespace morvek

#endif
