// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACECONFIG_H
#define MORVEK_NETWORKINTERFACECONFIG_H

#include "networkexport.h"
#include "privatepart.h"

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QNetworkAddressEntry>

class QTextStream;

namespace morvek {

/*!
 * The IPv4 configuration of an interface: obtained by DHCP, or given by hand.
 *
 * \code
 * #include <networkinterfaceconfig.h>
 *
 * NetworkInterfaceConfig Settings::manual()
 * {
 *     QNetworkAddressEntry address;
 *     address.setIp(QHostAddress("192.168.0.2"));
 *     address.setNetmask(QHostAddress("255.255.255.0"));
 *
 *     NetworkInterfaceConfig config;
 *     config.setType(NetworkInterfaceConfig::Manual);
 *     config.addIpAddress(address);
 *     config.addGatewayAddress(QHostAddress("192.168.0.1"));
 *     return config;
 * }
 * \endcode
 *
 * The lists may hold more, but only the first address and the first gateway are used when an interface is
 * configured. A copy shares nothing with its source; what was moved from is as a new one.
 */
class MORVEK_NETWORK_EXPORT NetworkInterfaceConfig
{
public:
    enum ConfigurationType : int {
        Auto = 0,   //!< by DHCP
        Manual = 1, //!< by the addresses given here
    };

    /*! Auto, without addresses and gateways. */
    NetworkInterfaceConfig();
    NetworkInterfaceConfig(const NetworkInterfaceConfig &other);
    NetworkInterfaceConfig(NetworkInterfaceConfig &&other) noexcept;
    ~NetworkInterfaceConfig();
    NetworkInterfaceConfig &operator=(const NetworkInterfaceConfig &other);
    NetworkInterfaceConfig &operator=(NetworkInterfaceConfig &&other) noexcept;
    void swap(NetworkInterfaceConfig &other) noexcept { d.swap(other.d); }

    /*! Equal types and equal lists, in the same order. */
    bool operator==(const NetworkInterfaceConfig &other) const;
    bool operator!=(const NetworkInterfaceConfig &other) const;

    /*! True for Auto without addresses and gateways. */
    bool isEmpty() const;

    /*! By DHCP or by hand. */
    ConfigurationType type() const;
    void setType(ConfigurationType type);

    /*! Addresses, each with its netmask. */
    QList<QNetworkAddressEntry> ipAddresses() const;
    void setIpAddresses(const QList<QNetworkAddressEntry> &addresses);
    /*! Appends \a address. */
    void addIpAddress(const QNetworkAddressEntry &address);

    /*! Gateways, the one that is used first. */
    QList<QHostAddress> gatewayAddresses() const;
    void setGatewayAddresses(const QList<QHostAddress> &gateways);
    /*! Appends \a gateway. */
    void addGatewayAddress(const QHostAddress &gateway);

private:
    class Private;
    PrivatePart<Private> d;
};

inline void swap(NetworkInterfaceConfig &left, NetworkInterfaceConfig &right) noexcept
{
    left.swap(right);
}

/*! Writes one line that describes \a config. */
MORVEK_NETWORK_EXPORT QTextStream &operator<<(QTextStream &stream, const NetworkInterfaceConfig &config);

} // namespace morvek

Q_DECLARE_METATYPE(morvek::NetworkInterfaceConfig)
Q_DECLARE_METATYPE(morvek::NetworkInterfaceConfig::ConfigurationType)
Q_DECLARE_TYPEINFO(morvek::NetworkInterfaceConfig, Q_MOVABLE_TYPE);

#endif
