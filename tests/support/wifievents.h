// SPDX-License-Identifier: Apache-2.0
#ifndef WIFIEVENTS_H
#define WIFIEVENTS_H

#include <QtCore/QObject>
#include <QtCore/QStringList>

/*!
 * Writes down what a Wi-Fi provider or service tells: "ready", "on", "off", "connected" and "disconnected". A line ends
 * with "?" when the source does not say so itself at that moment.
 */
class WifiEvents
{
public:
    template<typename Source>
    explicit WifiEvents(Source &source)
    {
        QObject::connect(&source, &Source::readyChanged, &m_context,
                         [&](bool ready) { append(ready ? "ready" : "not ready", ready == source.ready()); });
        QObject::connect(&source, &Source::poweredChanged, &m_context,
                         [&](bool powered) { append(powered ? "on" : "off", powered == source.powered()); });
        QObject::connect(&source, &Source::connectedChanged, &m_context, [&](bool connected) {
            append(connected ? "connected" : "disconnected",
                   connected == source.connected() && connected != source.connectedAccessPoint().isEmpty());
        });
    }

    /*! The lines since the last call. */
    QStringList take()
    {
        const QStringList lines = m_lines;
        m_lines.clear();
        return lines;
    }

private:
    Q_DISABLE_COPY(WifiEvents)

    void append(const char *line, bool isSo) { m_lines.append(QLatin1String(line) + QLatin1String(isSo ? "" : "?")); }

    QObject m_context;
    QStringList m_lines;
};

#endif
