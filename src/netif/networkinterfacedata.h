// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKINTERFACEDATA_H
#define MORVEK_NETWORKINTERFACEDATA_H

#include "networkinterface.h"
#include "networkinterfaceconfig.h"

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QWeakPointer>

namespace morvek {

/*!
 * The provider's record of one interface.
 */
struct NetworkInterfaceData
{
    /*!
     * Points to the parent interface's record without owning it, and reads as null once that record is gone:
     * applications keep interfaces for longer than the provider keeps its records.
     */
    class ParentLink
    {
    public:
        ParentLink() = default;
        ParentLink(NetworkInterfaceData *record);

        operator NetworkInterfaceData *() const { return m_record.toStrongRef().data(); }
        NetworkInterfaceData *operator->() const { return *this; }

    private:
        QWeakPointer<NetworkInterfaceData> m_record;
    };

    QString name;
    int priority = -1;
    NetworkInterfaceConfig configuration;
    NetworkInterface::InterfaceType type = NetworkInterface::Unknown;
    QString macAddress;
    int maxTransmissionUnit = 0;
    bool available = false;
    bool connected = false;
    bool isVirtual = false;
    ParentLink parent;

    /*! Equal in every field; parents are compared by what they hold. */
    bool operator==(const NetworkInterfaceData &other) const;
    bool operator!=(const NetworkInterfaceData &other) const { return !(*this == other); }
    bool operator==(const NetworkInterface &networkInterface) const;
    bool operator!=(const NetworkInterface &networkInterface) const { return !(*this == networkInterface); }

    /*! True when every field has its default value. */
    bool isEmpty() const;

private:
    /*! What links to this record point to. A copy of the record is another record, so it takes none of it over. */
    class Identity
    {
    public:
        Identity() = default;
        Identity(const Identity &) { }
        Identity &operator=(const Identity &) { return *this; }

        QWeakPointer<NetworkInterfaceData> of(NetworkInterfaceData *record);

    private:
        QSharedPointer<NetworkInterfaceData> m_self; //!< owns nothing: it ends with the record, which holds it
    };

    Identity m_identity;
};

class Q_DECL_HIDDEN NetworkInterface::Private
{
public:
    NetworkInterfaceData data;
};

} // namespace morvek

#endif
