// SPDX-License-Identifier: Apache-2.0
#include "operationend.h"

#include "asyncoperationbase.h"

#include <QtCore/QMetaEnum>
#include <QtCore/QMetaMethod>

namespace morvek {

OperationEnd::OperationEnd(QObject *operation)
    : m_operation(operation)
{
    if (qobject_cast<AsyncOperationBase *>(operation)) {
        m_isOperation = connectTo("success", "succeed()") && connectTo("failure", "fail()");
        return;
    }
    // A request stays as it is when it has ended.
    m_isOperation = operation->property("failure").isValid() && connectTo("finished", "finish()");
    if (m_isOperation && !operation->property("running").toBool())
        finish();
}

QString OperationEnd::text() const
{
    return m_text.isEmpty() && !m_operation ? QStringLiteral("deleted") : m_text;
}

void OperationEnd::fail()
{
    const AsyncOperationError error = qobject_cast<AsyncOperationBase *>(m_operation)->error();
    end(QStringLiteral("%1 %2").arg(error.code()).arg(error.message()));
}

void OperationEnd::finish()
{
    const QMetaObject *type = m_operation->metaObject();
    const QMetaEnum failures = type->property(type->indexOfProperty("failure")).enumerator();
    const bool isDone = m_operation->property("done").toBool();
    end(isDone ? QStringLiteral("done")
               : QString::fromLatin1(failures.valueToKey(m_operation->property("failure").toInt())));
}

void OperationEnd::end(const QString &text)
{
    if (m_text.isEmpty())
        m_text = text;
}

/*! The classes of operations have no common one that would have their signals. */
bool OperationEnd::connectTo(const char *signal, const char *slot)
{
    const QMetaObject *type = m_operation->metaObject();
    const QMetaMethod method = metaObject()->method(metaObject()->indexOfSlot(slot));
    for (int i = 0; i < type->methodCount(); ++i) {
        if (type->method(i).methodType() == QMetaMethod::Signal && type->method(i).name() == signal)
            return connect(m_operation, type->method(i), this, method);
    }
    return false;
}

} // namespace morvek
