// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ASYNCOPERATIONWRITER_P_H
#define MORVEK_ASYNCOPERATIONWRITER_P_H

#include "asyncoperation.h"

#include <QtCore/QMetaObject>

namespace morvek {

/*!
 * Completes an operation. The notice to the application always goes through the event loop, so that it comes
 * after the call that started the operation even when that call refuses at once; it is dropped with an operation
 * that is deleted before.
 */
class AsyncOperationWriter
{
public:
    template<typename T>
    static void setResult(AsyncOperation<T> &operation, const T &value)
    {
        operation.m_results.append(value);
        QMetaObject::invokeMethod(&operation, "notifySuccess", Qt::QueuedConnection);
    }

    /*! Puts \a values in place of what the operation holds. */
    template<typename T>
    static void setResults(AsyncOperation<T> &operation, const QList<T> &values)
    {
        operation.m_results = values;
        QMetaObject::invokeMethod(&operation, "notifySuccess", Qt::QueuedConnection);
    }

    template<typename T>
    static void setError(AsyncOperation<T> &operation, const AsyncOperationError &error)
    {
        operation.setError(error);
        QMetaObject::invokeMethod(&operation, "notifyFailure", Qt::QueuedConnection);
    }

    /*! The same with the code of all failures but those for which the networking daemon has one. */
    template<typename T>
    static void setError(AsyncOperation<T> &operation, const QString &message)
    {
        setError(operation, AsyncOperationError(-1, message));
    }
};

} // namespace morvek

#endif
