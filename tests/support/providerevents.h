// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDEREVENTS_H
#define PROVIDEREVENTS_H

#include "asyncnetworkinterfaceoperation.h"
#include "networkinterfaceprovider_p.h"

#include <QtCore/QStringList>

/*!
 * Writes down what a provider tells, one line a signal with the interface's name; "-" stands for an empty record.
 */
class ProviderEvents
{
public:
    explicit ProviderEvents(morvek::NetworkInterfaceProvider &provider)
    {
        using morvek::NetworkInterfaceProvider;
        record(provider, &NetworkInterfaceProvider::interfaceConfigurationChanged, "changed ");
        record(provider, &NetworkInterfaceProvider::preferredInterfaceChanged, "preferred ");
        record(provider, &NetworkInterfaceProvider::interfaceConnected, "connected ");
        record(provider, &NetworkInterfaceProvider::interfaceDisconnected, "disconnected ");
        record(provider, &NetworkInterfaceProvider::interfaceAdded, "added ");
        record(provider, &NetworkInterfaceProvider::interfaceRemoved, "removed ");
        QObject::connect(
            &provider, &NetworkInterfaceProvider::asyncConfigureSuccess, &m_context,
            [this](morvek::AsyncNetworkInterfaceOperation *operation, const morvek::NetworkInterfaceData &data) {
                m_operations.append(operation);
                append("success ", data);
            });
        QObject::connect(&provider, &NetworkInterfaceProvider::asyncConfigureFailure, &m_context,
                         [this](morvek::AsyncNetworkInterfaceOperation *operation, int code, const QString &message) {
                             m_operations.append(operation);
                             m_lines.append(QStringLiteral("failure %1 %2").arg(code).arg(message));
                         });
        QObject::connect(&provider, &morvek::ServiceProviderBase::readyChanged, &m_context, [this](bool ready) {
            m_lines.append(ready ? QStringLiteral("ready") : QStringLiteral("not ready"));
        });
    }

    /*! The lines since the last call; the records and operations start anew with the next line. */
    QStringList take()
    {
        const QStringList lines = m_lines;
        m_lines.clear();
        m_taken = true;
        return lines;
    }

    /*! The records that the last lines carried. */
    QList<morvek::NetworkInterfaceData> records() const { return m_records; }
    /*! The operations that have ended, in order, since the beginning. */
    QList<morvek::AsyncNetworkInterfaceOperation *> operations() const { return m_operations; }

private:
    Q_DISABLE_COPY(ProviderEvents)

    void record(morvek::NetworkInterfaceProvider &provider,
                void (morvek::NetworkInterfaceProvider::*signal)(const morvek::NetworkInterfaceData &),
                const char *event)
    {
        QObject::connect(&provider, signal, &m_context,
                         [this, event](const morvek::NetworkInterfaceData &data) { append(event, data); });
    }

    void append(const char *event, const morvek::NetworkInterfaceData &data)
    {
        if (m_taken)
            m_records.clear();
        m_taken = false;
        m_lines.append(QLatin1String(event) + (data.isEmpty() ? QStringLiteral("-") : data.name));
        m_records.append(data);
    }

    QObject m_context;
    QStringList m_lines;
    QList<morvek::NetworkInterfaceData> m_records;
    QList<morvek::AsyncNetworkInterfaceOperation *> m_operations;
    bool m_taken = false;
};

#endif
