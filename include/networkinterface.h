// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACE_H
#define MORVEK_NETWORKINTERFACE_H

#include "networkexport.h"
#include "networkinterfaceconfig.h"
#include "privatepart.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

class QTextStream;

namespace morvek {

struct NetworkInterfaceData;

/*!
 * One network interface of the unit, as it was when NetworkInterfaceService handed it out.
 *
 * It is a value that stays as it is: ask the service again, or listen to its signals, to follow the interface.
 * Only its link to the parent interface is alive: parent() and the comparisons see that one as it is now, or not at
 * all once it is gone; so a value belongs to the thread of its service. A copy shares nothing else with its source;
 * what was moved from is as a new one.
 *
 * When the networking daemon withdraws a property of an interface, the interface keeps the last value of it.
 */
class MORVEK_NETWORK_EXPORT NetworkInterface
{
public:
    enum InterfaceType : int {
        Unknown = 0,     //!< a kind that this library has no name for
        Wired = 1,       //!< Ethernet
        Wifi = 2,        //!< Wi-Fi station
        Usb = 3,         //!< network over USB
        Cellular = 4,    //!< cellular modem
        Bluetooth = 5,   //!< Bluetooth dial-up
        Vpn = 6,         //!< virtual private network
        OrvanBridge = 7, //!< Orvan bridge
    };

    /*! An empty interface. */
    NetworkInterface();
    NetworkInterface(const NetworkInterface &other);
    NetworkInterface(NetworkInterface &&other) noexcept;
    ~NetworkInterface();
    NetworkInterface &operator=(const NetworkInterface &other);
    NetworkInterface &operator=(NetworkInterface &&other) noexcept;
    void swap(NetworkInterface &other) noexcept { d.swap(other.d); }

    /*! Equal in every field; parents are compared by what they hold. */
    bool operator==(const NetworkInterface &other) const;
    bool operator!=(const NetworkInterface &other) const;

    /*! True when every field has its default value, as after construction. */
    bool isEmpty() const;

    /*! The name that the networking daemon publishes it under; unique on the unit. */
    QString name() const;
    /*! Routing priority: 1 for the most preferred interface, -1 when none is known. */
    int priority() const;
    /*! The present addresses and gateway, and whether they come from DHCP. */
    NetworkInterfaceConfig configuration() const;
    /*! What kind of interface it is. */
    InterfaceType type() const;
    /*! The hardware address as the networking daemon writes it. */
    QString macAddress() const;
    /*! In bytes; 0 when it is not known. */
    int maxTransmissionUnit() const;
    /*! True when the interface exists and can be used. */
    bool available() const;
    /*! True when the networking daemon reports it as connected. */
    bool connected() const;
    /*! True when the interface stands on another one, its parent(), be that known or not. */
    bool isVirtual() const;
    /*! The interface that carries this one, as it is now; empty when there is none, or it is not known yet, or gone. */
    NetworkInterface parent() const;

private:
    friend class NetworkInterfaceService;
    friend struct NetworkInterfaceData;
    class Private;
    PrivatePart<Private> d;
};

inline void swap(NetworkInterface &left, NetworkInterface &right) noexcept
{
    left.swap(right);
}

/*! Writes one line that describes \a networkInterface. */
MORVEK_NETWORK_EXPORT QTextStream &operator<<(QTextStream &stream, const NetworkInterface &networkInterface);

} // namespace morvek

Q_DECLARE_METATYPE(morvek::NetworkInterface)
Q_DECLARE_METATYPE(morvek::NetworkInterface::InterfaceType)
Q_DECLARE_TYPEINFO(morvek::NetworkInterface, Q_MOVABLE_TYPE);

#endif
