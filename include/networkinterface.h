// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACE_H
#define MORVEK_NETWORKINTERFACE_H

#include "networkexport.h"
#include "networkinterfaceconfig.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <memory>

class QTextStream;

namespace morvek {

struct NetworkInterfaceData;

/*!
 * One network interface of the unit, as it was when NetworkInterfaceService handed it out.
 *
 * It is a value that stays as it is: ask the service again, or listen to its signals, to follow the interface.
 * Only parent() looks at the present state. A copy shares nothing else with its source.
 */
class MORVEK_NETWORK_EXPORT NetworkInterface
{
public:
    enum InterfaceType : int {
        Unknown = 0,
        Wired = 1,
        Wifi = 2,
        Usb = 3,
        Cellular = 4,
        Bluetooth = 5,
        Vpn = 6,
        OrvanBridge = 7,
    };

    /*! An empty interface. */
    NetworkInterface();
    NetworkInterface(const NetworkInterface &other);
    ~NetworkInterface();
    NetworkInterface &operator=(const NetworkInterface &other);

    /*! Equal in every field; parents are compared by what they hold. */
    bool operator==(const NetworkInterface &other) const;
    bool operator!=(const NetworkInterface &other) const;

    /*! True when every field has its default value, as after construction. */
    bool isEmpty() const;

    QString name() const;
    /*! Routing priority: 1 for the most preferred interface, -1 when none is known. */
    int priority() const;
    NetworkInterfaceConfig configuration() const;
    InterfaceType type() const;
    /*! The hardware address as the networking daemon writes it. */
    QString macAddress() const;
    /*! In bytes; 0 when it is not known. */
    int maxTransmissionUnit() const;
    /*! True when the interface exists and can be used. */
    bool available() const;
    bool connected() const;
    /*! True when the interface stands on another one, its parent(). */
    bool isVirtual() const;
    /*! The interface that carries this one, as it is now; empty when there is none, or none any more. */
    NetworkInterface parent() const;

private:
    friend class NetworkInterfaceService;
    friend struct NetworkInterfaceData;
    class Private;
    std::unique_ptr<Private> d;
};

/*! Writes one line that describes \a networkInterface. */
MORVEK_NETWORK_EXPORT QTextStream &operator<<(QTextStream &stream, const NetworkInterface &networkInterface);

} // namespace morvek

Q_DECLARE_METATYPE(morvek::NetworkInterface)

#endif
