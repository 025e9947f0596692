// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACEMODEL_H
#define MORVEK_INTERFACEMODEL_H

#include "kitexport.h"

#include <QtCore/QAbstractListModel>

#include <memory>

namespace morvek {

class NetworkInterface;

/*!
 * The network interfaces of the unit, in ascending order of their names. Rows are added and removed as interfaces come
 * and go, and never reset.
 */
class MORVEK_KIT_EXPORT InterfaceModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int leaseTime READ leaseTime WRITE setLeaseTime NOTIFY leaseTimeChanged)

public:
    /*! With these names in QML. */
    enum Role {
        NameRole = Qt::UserRole + 1, //!< "name": QString
        TypeRole,                    //!< "type": int, a NetworkInterface::InterfaceType
        TypeTextRole,                //!< "typeText": QString, in people's words
        StateRole,                   //!< "interfaceState": State; "state" is a delegate's own
        StateTextRole,               //!< "stateText": QString, a sentence for the driver
        ConnectedRole,               //!< "connected": bool
        AvailableRole,               //!< "available": bool
        PreferredRole,               //!< "preferred": bool
        PriorityRole,                //!< "priority": int, 1 for the most preferred, -1 when none is known
        MacAddressRole,              //!< "macAddress": QString
        MtuRole,                     //!< "mtu": int, in bytes; 0 when it is not known
        AddressRole,                 //!< "address": QString, the IPv4 address; empty when there is none
        PrefixLengthRole,            //!< "prefixLength": int, -1 when there is no address, or no netmask
        NetmaskRole,                 //!< "netmask": QString, likewise empty
        GatewayRole,                 //!< "gateway": QString; empty when there is none
        AutomaticRole,               //!< "automatic": bool, whether its addresses come by DHCP
        ParentRole,                  //!< "parentName": QString, the interface that carries it; empty when there is none
        DisplayNameRole,             //!< "displayName": QString, the name as it can be shown
    };
    Q_ENUM(Role)

    /*! The first one that is true. */
    enum State {
        Configuring,    //!< a request is running for it
        Connected,      //!< it is connected
        Unavailable,    //!< it cannot be used: it has no link, as a rule
        Obtaining,      //!< it is automatic, and has had no address for less than leaseTime(): one may be on its way
        WithoutAddress, //!< it is automatic, and has no address: InterfaceController::repair() asks for one again
        Disconnected,
    };
    Q_ENUM(State)

    explicit InterfaceModel(QObject *parent = nullptr);
    ~InterfaceModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const;
    /*! The row of the interface \a name; -1 when there is none. */
    Q_INVOKABLE int rowOf(const QString &name) const;

    /*!
     * How many milliseconds an interface that is automatic may be without an address, as far as this has seen, until
     * that is a state of its own. The library does not tell whether DHCP is still at it. 5000 at first.
     */
    int leaseTime() const;
    void setLeaseTime(int milliseconds);

    /*! Takes over all \a interfaces, in ascending order of their names, and which one is preferred. */
    void setInterfaces(const QList<NetworkInterface> &interfaces, const QString &preferred);
    /*! Whether a request is running for the interface \a name. */
    void setConfiguring(const QString &name, bool configuring);

Q_SIGNALS:
    void countChanged();
    void leaseTimeChanged();

private:
    Q_DISABLE_COPY(InterfaceModel)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
