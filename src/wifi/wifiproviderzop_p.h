// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIPROVIDERZOP_P_H
#define MORVEK_WIFIPROVIDERZOP_P_H

#include "scanflagsreader_p.h"
#include "wifiprovider_p.h"
#include "zopvariant.h"

#include <QtCore/QList>
#include <QtCore/QPointer>

namespace morvek {

class ZopControlCommand;
class ZopDirWatcher;
class ZopObject;

/*!
 * Mirrors the status object of the Wi-Fi daemon and drives the daemon through its control object.
 *
 * Replies to requests only report refusals: what comes of a request is read from the status object.
 */
class WifiProviderZop : public WifiProvider
{
    Q_OBJECT

public:
    WifiProviderZop();
    ~WifiProviderZop() override;

    void powerOn() override;
    void powerOff() override;
    bool powered() const override;
    void scan(AsyncWifiScanOperation *operation) override;
    void connectAccessPoint(AsyncWifiConnectOperation *operation, const WifiConnectionConfig &config) override;
    void disconnectAccessPoint() override;
    WifiAccessPoint connectedAccessPoint() const override;
    bool connected() const override;

public Q_SLOTS:
    void zopDirWatcherObjectAdded(const QString &name);
    void zopStatusChanged(const QString &name, const morvek::ZopVariant &attribute);
    void zopStatusAttributeRemoved(const QString &name);
    void zopControlChanged(const QString &name, const morvek::ZopVariant &attribute);
    void zopControlCommandComplete(morvek::ZopControlCommand *command);
    void onAddAccessPointComplete(morvek::ZopControlCommand *command);
    void onEnableAccessPointComplete(morvek::ZopControlCommand *command);
    void disconnectAccessPointCompelete(morvek::ZopControlCommand *command);

private:
    Q_DISABLE_COPY(WifiProviderZop)

    void init();
    bool initZopControlObj();
    bool initZopStatusObj();

    ZopControlCommand *addAccessPoint(const WifiConnectionConfig &config);
    void enableAccessPoint(const QString &id);

    void handleStatusZopPoweredAttribute(const ZopVariant &value, bool initial);
    void handleStatusZopStatusAttribute(const ZopVariant &value, bool initial);
    void handleStatusZopScanResultsAttribute(const ZopVariant &value);
    void handleStatusZopLastEventAttribute(const ZopVariant &value);

    void failFirstConnect(const QString &message);

    bool m_powered = false;
    bool m_connected = false;
    WifiAccessPoint m_currentAccessPoint;
    // An operation that its application has deleted keeps its place.
    QList<QPointer<AsyncWifiScanOperation>> m_pendingScans;
    QList<QPointer<AsyncWifiConnectOperation>> m_pendingConnects;
    ScanFlagsReader m_flagsReader;
    ZopDirWatcher *m_directoryWatcher;
    ZopObject *m_controlObject = nullptr;
    ZopObject *m_statusObject = nullptr;
};

} // namespace morvek

#endif
