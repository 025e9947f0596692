// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFINETWORKMODEL_H
#define MORVEK_WIFINETWORKMODEL_H

#include "networksecurity.h"

#include <QtCore/QAbstractListModel>

#include <memory>

namespace morvek {

/*!
 * The Wi-Fi networks in range, one row for each name: the one in use first, then the strongest.
 *
 * A list that somebody reads stays: a row passes the one above it only when it is stronger by at least 6 dB, and a new
 * one comes before the first that is weaker. A level that is not known is weaker than all. Rows are added, removed and
 * moved, as few as possible, and never reset. Access points without a name make no row. A network that is in use has a
 * row whether a scan has found it or not.
 */
class MORVEK_KIT_EXPORT WifiNetworkModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(bool held READ isHeld WRITE setHeld NOTIFY heldChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    /*! With these names in QML. */
    enum Role {
        SsidRole = Qt::UserRole + 1, //!< "ssid": QString, the name as WifiController::join() takes it
        DisplayNameRole,             //!< "displayName": QString, the name as it can be shown: see displayName()
        LevelRole,                   //!< "level": int, in dBm, of the strongest of its protected access points, or
                                     //!< of all when none is protected; 0 when it is not known
        BarsRole,                    //!< "bars": int, for a drawing: 1 from -85 dBm on, 2 from -75, 3 from -65, 4 from
                                     //!< -55; 0 when it is weaker or not known
        SecurityRole,                //!< "security": QString, in people's words: NetworkSecurity::name() of the same
                                     //!< access points
        ProtectedRole,               //!< "isProtected": bool, false only for a network that is open for certain
        JoinableRole,                //!< "joinable": bool, whether the library can join it, by a name that is UTF-8
        NeedsPasskeyRole,            //!< "needsPasskey": bool, whether it is joined with a passkey
        InUseRole,                   //!< "inUse": bool, whether the station is connected to it
        JoiningRole,                 //!< "joining": bool, whether it is being joined
        OpenTwinRole,                //!< "openTwin": bool, whether an open one has the same name, which is never taken
        AccessPointsRole,            //!< "accessPoints": int, how many have this name
    };
    Q_ENUM(Role)

    explicit WifiNetworkModel(QObject *parent = nullptr);
    ~WifiNetworkModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const;
    /*! The row of the network \a ssid; -1 when there is none. */
    Q_INVOKABLE int rowOf(const QString &ssid) const;

    /*!
     * While true, as long as a finger is down, no row is added, removed or moved; what the rows tell still changes.
     * What has come meanwhile is made up for afterwards.
     */
    bool isHeld() const;
    void setHeld(bool held);

    /*! An access point that a scan has found. */
    struct Found
    {
        QString ssid;
        int level = 0; //!< in dBm; 0 when it is not known
        NetworkSecurity security;
    };
    /*! Takes over what a scan has found. */
    void setFound(const QVector<Found> &found);
    /*!
     * The network that the station is connected to; empty when there is none. \a security is that of the connection:
     * it counts as one more access point of that name.
     */
    void setInUse(const QString &ssid, const NetworkSecurity &security);
    /*! The network that is being joined; empty when there is none. */
    void setJoining(const QString &ssid);

    /*!
     * \a name as it can be shown: what controls the text, breaks the line, turns it around or cannot be seen has a sign
     * in its place, one for each, and all stands in directional isolates. Show it as plain text all the same.
     */
    Q_INVOKABLE static QString displayName(const QString &name);

Q_SIGNALS:
    void heldChanged();
    void countChanged();

private:
    Q_DISABLE_COPY(WifiNetworkModel)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
