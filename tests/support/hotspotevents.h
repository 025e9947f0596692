// SPDX-License-Identifier: Apache-2.0
#ifndef HOTSPOTEVENTS_H
#define HOTSPOTEVENTS_H

#include "wifihotspot.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

/*!
 * Writes down what a hotspot provider or service tells: "ready", "on", "off" and "profile NAME". A line ends with "?"
 * when the source does not say so itself at that moment.
 */
class HotspotEvents
{
public:
    template<typename Source>
    explicit HotspotEvents(Source &source)
    {
        QObject::connect(&source, &Source::readyChanged, &m_context,
                         [&](bool ready) { append(ready ? "ready" : "not ready", ready == source.ready()); });
        QObject::connect(&source, &Source::enabledChanged, &m_context,
                         [&](bool enabled) { append(enabled ? "on" : "off", enabled == source.enabled()); });
        QObject::connect(&source, &Source::configurationChanged, &m_context, [&](const morvek::WifiHotspot &profile) {
            m_lines.append(QLatin1String("profile ") + profile.name());
            m_profile = profile;
        });
    }

    /*! The lines since the last call. */
    QStringList take()
    {
        const QStringList lines = m_lines;
        m_lines.clear();
        return lines;
    }
    /*! The profile that was told last. */
    morvek::WifiHotspot profile() const { return m_profile; }

private:
    Q_DISABLE_COPY(HotspotEvents)

    void append(const char *line, bool isSo) { m_lines.append(QLatin1String(line) + QLatin1String(isSo ? "" : "?")); }

    QObject m_context;
    QStringList m_lines;
    morvek::WifiHotspot m_profile;
};

#endif
