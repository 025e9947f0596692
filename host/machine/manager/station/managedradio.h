// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDRADIO_H
#define MORVEK_HOSTD_MANAGEDRADIO_H

#include "radiocontrol.h"
#include "radioloan.h"
#include "radioscan.h"
#include "wantednetwork.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtCore/QVector>

namespace morvek {

class EventLog;
class ManagerClient;
class Restoration;
class World;
struct SeenAccessPoint;

/*! Keeps the Wi-Fi status of the world like the first radio of the network manager, and has that one scan and join. */
class ManagedRadio : public QObject, public RadioControl, public RadioLoan
{
    Q_OBJECT

public:
    /*! All of them must outlive this. When it is to \a remember, networks that are joined are kept for later. */
    ManagedRadio(ManagerClient *client, Restoration *restoration, World *world, const EventLog *log, bool remember,
                 QObject *parent = nullptr);
    ~ManagedRadio() override;

    void carryOut(const WifiRequest &request, const AnswerCall &answer) override;

    void lend(const QString &interface) override;
    bool takeBack(const QString &interface) override;

private:
    Q_DISABLE_COPY(ManagedRadio)

    Refusal refuses(const WifiRequest &request) const;
    bool isOn() const;
    bool isConnected(SeenAccessPoint *accessPoint) const;
    void follow();
    void tell(const SeenAccessPoint *accessPoint, ZopChangeset changes);
    void tellEvent(const QString &event);
    int networkOf(const QString &identifier) const;

    ManagerClient *m_client;
    Restoration *m_restoration;
    World *m_world;
    RadioScan m_scan;
    WantedNetwork m_wanted;
    QVector<WifiNetwork> m_networks; // their identifiers count from 0
    QJsonObject m_status;            // as it was told; empty while the station is not connected
    QByteArray m_connection;         // the manager's object, of that
    QTimer m_selection;              // a client that has named a network is about to select it
    bool m_isLost = false;           // the last connection has ended out of sight
};

} // namespace morvek

#endif
