// SPDX-License-Identifier: Apache-2.0
#ifndef STATUSBAR_H
#define STATUSBAR_H

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>

namespace morvek {
class AsyncHotspotConfigOperation;
class HotSpotService;
class NetworkInterfaceService;
class WifiService;
} // namespace morvek

/*! What the status bar of a head unit shows of the network, in one line, and anew whenever that has changed. */
class StatusBar : public QObject
{
public:
    StatusBar();
    ~StatusBar() override;

    /*! Whether the networking daemon is there. The others may come later. */
    bool ready() const;

private:
    void show();
    void readHotspotName();
    void setHotspotName(const QString &name);
    QString network() const;
    QString wifi() const;
    QString hotspot() const;

    morvek::NetworkInterfaceService *m_interfaces;
    morvek::WifiService *m_wifi;
    morvek::HotSpotService *m_hotspot;
    QPointer<morvek::AsyncHotspotConfigOperation> m_reading;
    QString m_hotspotName;
    QString m_shown;
};

#endif
