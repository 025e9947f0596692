// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICONNECTIONCONFIG_H
#define MORVEK_WIFICONNECTIONCONFIG_H

#include "networkexport.h"
#include "privatepart.h"
#include "wifisecurity.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

class QTextStream;

namespace morvek {

/*!
 * Which Wi-Fi network to join, and how.
 *
 * A default-constructed one stands for an open network without a name, and with a name and a passkey alone it is still
 * an open one: the passkey is not asked for, and nothing tells so. A network with a passkey takes all four:
 *
 * \code
 * #include <asyncwificonnectoperation.h>
 * #include <networklibraryexports.h>
 * #include <wificonnectionconfig.h>
 * #include <wifiservice.h>
 *
 * void Settings::begin()
 * {
 *     m_service = newWifiService();
 *     connect(m_service, &WifiService::readyChanged, this, &Settings::join);
 * }
 *
 * void Settings::join()
 * {
 *     WifiConnectionConfig config;
 *     config.setSsid("Garage");
 *     config.setPasskey("open sesame 42");
 *     config.setKeyManagementType(WifiKeyManagementPsk);
 *     config.setSecurityProtocol(WifiSecurityProtocolWpa2);
 *
 *     AsyncWifiConnectOperation *operation = m_service->connectAccessPoint(config);
 *     connect(operation, &AsyncWifiConnectOperation::success, this, [this, operation] {
 *         for (const WifiAccessPoint &joined : operation->results())
 *             show(joined.ssid()); // which may be another network: see WifiService::connectAccessPoint()
 *         operation->deleteLater();
 *     });
 *     connect(operation, &AsyncWifiConnectOperation::failure, this, [this, operation] {
 *         show(operation->error().message());
 *         operation->deleteLater();
 *     });
 * }
 *
 * void Settings::end()
 * {
 *     deleteWifiService(&m_service);
 * }
 * \endcode
 *
 * A copy shares nothing with its source; what was moved from is as a new one.
 */
class MORVEK_NETWORK_EXPORT WifiConnectionConfig
{
public:
    WifiConnectionConfig();
    WifiConnectionConfig(const WifiConnectionConfig &other);
    WifiConnectionConfig(WifiConnectionConfig &&other) noexcept;
    ~WifiConnectionConfig();
    WifiConnectionConfig &operator=(const WifiConnectionConfig &other);
    WifiConnectionConfig &operator=(WifiConnectionConfig &&other) noexcept;
    void swap(WifiConnectionConfig &other) noexcept { d.swap(other.d); }

    /*! Equal in every field. */
    bool operator==(const WifiConnectionConfig &other) const;
    bool operator!=(const WifiConnectionConfig &other) const;

    /*!
     * True for the two kinds of network that can be joined: with a pre-shared key, a passkey and WPA or WPA2; or
     * without any key management and protocol. The name does not matter.
     */
    bool isValid() const;

    /*! The network's name. */
    QString ssid() const;
    void setSsid(const QString &ssid);

    /*! The pre-shared key. No text form of this class shows it. */
    QString passkey() const;
    void setPasskey(const QString &passkey);

    /*! How keys are negotiated: with a pre-shared key, or not at all. */
    WifiKeyManagementType keyManagementType() const;
    void setKeyManagementType(WifiKeyManagementType type);

    /*! The one protocol to use. */
    WifiSecurityProtocol securityProtocol() const;
    void setSecurityProtocol(WifiSecurityProtocol protocol);

private:
    class Private;
    PrivatePart<Private> d;
};

inline void swap(WifiConnectionConfig &left, WifiConnectionConfig &right) noexcept
{
    left.swap(right);
}

/*! Writes one line that describes \a config, without its passkey. */
MORVEK_NETWORK_EXPORT QTextStream &operator<<(QTextStream &stream, WifiConnectionConfig &config);

} // namespace morvek

Q_DECLARE_METATYPE(morvek::WifiConnectionConfig)
Q_DECLARE_TYPEINFO(morvek::WifiConnectionConfig, Q_MOVABLE_TYPE);

#endif
