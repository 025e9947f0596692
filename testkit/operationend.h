// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTKIT_OPERATIONEND_H
#define MORVEK_TESTKIT_OPERATIONEND_H

#include <QtCore/QObject>
#include <QtCore/QPointer>

namespace morvek {

/*! How an operation of the library, or a request of the network kit, ends, from when this is made on. */
class OperationEnd : public QObject
{
    Q_OBJECT

public:
    explicit OperationEnd(QObject *operation);

    /*! Whether it tells its end at all. */
    bool isOperation() const { return m_isOperation; }
    QObject *operation() const { return m_operation; }
    /*! "done", or why not; "deleted"; empty while it is open. */
    QString text() const;

private Q_SLOTS:
    void succeed() { end(QStringLiteral("done")); }
    void fail();
    void finish();

private:
    void end(const QString &text);
    bool connectTo(const char *signal, const char *slot);

    QPointer<QObject> m_operation;
    bool m_isOperation;
    QString m_text;
};

} // namespace morvek

#endif
