// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTPROVIDERZOP_P_H
#define MORVEK_HOTSPOTPROVIDERZOP_P_H

#include "hotspotprovider_p.h"
#include "zopchangeset.h"

#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QPointer>

class QJsonDocument;

namespace morvek {

class AsyncOperationBase;
class ZopDirWatcher;
class ZopObject;
struct ZopControlMessage;

/*!
 * Mirrors the state of the tethering daemon and drives it through its control object.
 *
 * Requests and replies are updates of the control object, matched by an identifier. The identifier is the only thing
 * that matches them: a reply of another kind than the request still ends the operation, but without a value.
 */
class HotspotProviderZop : public HotspotProvider
{
    Q_OBJECT

public:
    /*! What the daemon's profile tells of a hotspot. */
    enum HotspotConfigFields {
        Ssid = 0,
        Passphrase = 1,
        MhsBand = 2,
        Band = 3, //!< neither read nor written
        MaxNumSta = 4,
        SecurityType = 5,
        AutoshutdownTime = 6,
        Privacy = 7,
        BlockConn = 8,
    };

    HotspotProviderZop();
    ~HotspotProviderZop() override;

    void setConfiguration(AsyncHotspotConfigOperation *operation, const WifiHotspot &profile) override;
    void configuration(AsyncHotspotConfigOperation *operation) override;
    void setEnabled(AsyncHotspotEnableOperation *operation, bool enable) override;
    bool enabled() const override;

    /*! The daemon's profile for \a hotspot; an empty one when that is empty. */
    QJsonObject serializeProfile(const WifiHotspot &hotspot) const;
    /*! What the daemon's \a profile tells; all defaults when it tells nothing of a hotspot. */
    WifiHotspot parseProfile(const QJsonDocument &profile) const;

    // What has no text gets an empty one, which is found from then on.
    WifiBand bandStringToEnumeration(const QString &text) const;
    QString bandEnumerationToString(WifiBand band) const;
    QFlags<WifiSecurityProtocol> protocolStringToEnumeration(const QString &text) const;
    QString protocolEnumerationToString(QFlags<WifiSecurityProtocol> protocols) const;

    static QMap<HotspotConfigFields, QString> s_hotspotConfigFieldsMap;
    static QMap<WifiBand, QString> s_hotspotBandMap;
    static QMap<QFlags<WifiSecurityProtocol>, QString> s_hotspotProtocolMap;

private Q_SLOTS:
    void init(const QString &name);
    void zopControlChanged(const morvek::ZopChangeset &changes);
    void zopStatusChanged(const QString &name, const morvek::ZopVariant &value);

private:
    Q_DISABLE_COPY(HotspotProviderZop)

    struct Request
    {
        int id;
        ZopChangeset changes;
    };

    static int nextId();

    Request enterRequest(AsyncOperationBase *operation, const QString &message, const ZopVariant &dat);
    void writeRequest(const Request &request);
    void onControlReply(const ZopControlMessage &message);
    void setEnabled(bool enabled);
    void giveUp(ZopObject *&object);

    static int m_idSequence;

    ZopDirWatcher *m_dirWatcher;
    ZopObject *m_statusObject = nullptr;
    ZopObject *m_controlObject = nullptr;
    WifiHotspot m_hotspot; //!< the profile that was fetched last
    bool m_enabled = false;
    // An operation that its application has deleted keeps its place.
    QMap<int, QPointer<AsyncOperationBase>> m_pendingOperations;
};

} // namespace morvek

#endif
