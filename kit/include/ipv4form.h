// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_IPV4FORM_H
#define MORVEK_IPV4FORM_H

#include "kitexport.h"

#include <QtCore/QObject>

namespace morvek {

class NetworkInterfaceConfig;

/*!
 * The fields of a manual IPv4 configuration as they are typed, and what is wrong with each.
 *
 * A field tells first what is wrong with it by itself. What does not fit together is told when the fields that it takes
 * are right by themselves. Blanks around what is typed do not count.
 */
class MORVEK_KIT_EXPORT Ipv4Form : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString address READ address WRITE setAddress NOTIFY changed)
    Q_PROPERTY(QString netmask READ netmask WRITE setNetmask NOTIFY changed)
    Q_PROPERTY(QString gateway READ gateway WRITE setGateway NOTIFY changed)
    Q_PROPERTY(Fault addressFault READ addressFault NOTIFY changed)
    Q_PROPERTY(Fault netmaskFault READ netmaskFault NOTIFY changed)
    Q_PROPERTY(Fault gatewayFault READ gatewayFault NOTIFY changed)
    Q_PROPERTY(QString addressText READ addressText NOTIFY changed)
    Q_PROPERTY(QString netmaskText READ netmaskText NOTIFY changed)
    Q_PROPERTY(QString gatewayText READ gatewayText NOTIFY changed)
    Q_PROPERTY(int prefixLength READ prefixLength NOTIFY changed)
    Q_PROPERTY(bool valid READ isValid NOTIFY changed)

public:
    enum Fault {
        NoFault,
        Missing,
        NotAnAddress,  //!< not four numbers from 0 to 255 with dots between them, nor, as a netmask, a length from 1
                       //!< to 31
        NotANetmask,   //!< its ones do not come before its zeros, or it leaves no hosts
        NotAHost,      //!< it stands for something else than a machine: 0.x, 127.x, multicast and above
        NetworkItself, //!< the first address of the network, which stands for the network
        Broadcast,     //!< the last address of the network, which stands for all its machines
        NotInNetwork,  //!< the gateway is not in the network of address and netmask
        OwnAddress,    //!< the gateway is the interface's own address
    };
    Q_ENUM(Fault)

    explicit Ipv4Form(QObject *parent = nullptr);
    ~Ipv4Form() override;

    /*! The interface's address, like "192.168.0.2". */
    QString address() const { return m_address; }
    void setAddress(const QString &address);
    /*! Its netmask, like "255.255.255.0" or "24". */
    QString netmask() const { return m_netmask; }
    void setNetmask(const QString &netmask);
    /*! The router, like "192.168.0.1". */
    QString gateway() const { return m_gateway; }
    void setGateway(const QString &gateway);

    /*! The length of netmask(), 1 to 31; -1 while that has a fault. */
    int prefixLength() const;

    Fault addressFault() const { return m_addressFault; }
    Fault netmaskFault() const { return m_netmaskFault; }
    Fault gatewayFault() const { return m_gatewayFault; }
    /*! The faults as sentences for the driver; empty where there is none. */
    QString addressText() const;
    QString netmaskText() const;
    QString gatewayText() const;
    /*! Whether there is no fault. */
    bool isValid() const;

    /*! Takes over the first address and gateway of \a config; empty where there is none. */
    void read(const NetworkInterfaceConfig &config);
    /*! What the fields stand for; empty while they are not valid. */
    NetworkInterfaceConfig configuration() const;

Q_SIGNALS:
    /*! A field has changed, and with it the faults. */
    void changed();

private:
    Q_DISABLE_COPY(Ipv4Form)
    void set(const QString &address, const QString &netmask, const QString &gateway);
    void check();

    QString m_address;
    QString m_netmask;
    QString m_gateway;
    quint32 m_mask = 0;
    Fault m_addressFault = Missing;
    Fault m_netmaskFault = Missing;
    Fault m_gatewayFault = Missing;
};

} // namespace morvek

#endif
