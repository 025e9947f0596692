// SPDX-License-Identifier: Apache-2.0
#ifndef OPERATIONEND_H
#define OPERATIONEND_H

#include "eventloop.h"
#include "networkinterface.h"
#include "wifiaccesspoint.h"
#include "wifihotspot.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

inline QString resultName(const morvek::NetworkInterface &result)
{
    return result.name();
}

inline QString resultName(const morvek::WifiAccessPoint &result)
{
    return result.bssid();
}

inline QString resultName(const morvek::WifiHotspot &result)
{
    return result.name();
}

inline QString resultName(bool result)
{
    return result ? QStringLiteral("true") : QStringLiteral("false");
}

/*!
 * How an operation ended: "success NAME,NAME", "failure CODE TEXT"; several times with " / " between; "" while
 * pending.
 */
template<typename Operation>
class OperationEnd
{
public:
    explicit OperationEnd(Operation *operation)
    {
        QObject::connect(operation, &Operation::success, &m_context, [this, operation](Operation *asyncop) {
            QStringList names;
            for (const auto &result : asyncop->results())
                names.append(resultName(result));
            append(operation, asyncop, QStringLiteral("success ") + names.join(QLatin1Char(',')));
        });
        QObject::connect(operation, &Operation::failure, &m_context, [this, operation](Operation *asyncop) {
            append(operation, asyncop,
                   QStringLiteral("failure %1 ").arg(asyncop->error().code()) + asyncop->error().message());
        });
    }

    /*! Lets everything run that is queued by now. */
    QString text() const
    {
        runQueued();
        return m_text.join(QStringLiteral(" / "));
    }

private:
    Q_DISABLE_COPY(OperationEnd)

    void append(Operation *operation, Operation *asyncop, const QString &text)
    {
        m_text.append(asyncop == operation ? text : QStringLiteral("another operation"));
    }

    QObject m_context;
    QStringList m_text;
};

#endif
