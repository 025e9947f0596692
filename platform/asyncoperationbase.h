// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCOPERATIONBASE_H
#define MORVEK_ASYNCOPERATIONBASE_H

#include "asyncoperationerror.h"

#include <QtCore/QObject>

namespace morvek {

/*! An operation that ends later, and the error that it ended with. */
class MORVEK_PLATFORM_EXPORT AsyncOperationBase : public QObject
{
    Q_OBJECT

public:
    explicit AsyncOperationBase(QObject *parent = nullptr);
    ~AsyncOperationBase() override;

    /*! The error that the operation failed with; code 0 when it has not failed. */
    AsyncOperationError error() const;
    /*! Whether the operation has failed. */
    bool hasError() const;
    /*! Keeps \a error for the application to read; whoever runs the operation calls it. */
    void setError(const AsyncOperationError &error);

private:
    Q_DISABLE_COPY(AsyncOperationBase)
    AsyncOperationError m_error;
    bool m_hasError = false;
};

} // namespace morvek

#endif
