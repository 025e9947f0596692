// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_JOINATTEMPT_H
#define MORVEK_HOSTD_JOINATTEMPT_H

#include "gobject.h"
#include "refusal.h"

#include <QtCore/QObject>

namespace morvek {

class EventLog;
class ManagerClient;
class Restoration;

/*!
 * One attempt to join a network, and the connection that comes of it, until that ends. The manager does not try again
 * by itself.
 */
class JoinAttempt : public QObject
{
    Q_OBJECT

public:
    enum Failure {
        NotLetIn, //!< the handshake has failed
        NotFound, //!< nobody has answered, or let the station associate
        Left,     //!< somebody has disconnected the radio by hand
        Ended,    //!< something else: the radio is gone, or in another network
    };

    /*! What a device that comes into this state says about the attempt. */
    static Failure failureOf(NMDeviceState state, NMDeviceStateReason reason);

    JoinAttempt(ManagerClient *client, Restoration *restoration, GRef<NMConnection> profile, QObject *parent);
    ~JoinAttempt() override;

    /*!
     * Begins at \a accessPoint, one of the manager's objects; null for a network that is not in sight. What is to be
     * \a kept does not end with this program; it is keep() that stores it.
     */
    void start(const char *accessPoint, bool kept);
    /*! True when it is the one that \a device has. */
    bool isAt(NMDevice *device) const;
    /*! Something has changed: perhaps it has come to its end. */
    void look();
    /*! The connection has come about. */
    void setJoined() { m_isJoined = true; }
    bool isJoined() const { return m_isJoined; }
    /*! The access point does not let the station in: it need not try any longer. */
    void giveUp();
    /*! Leaves the network, or does not join it, and tells nobody. It destroys itself when that is done. */
    void abandon();
    /*! Stores the profile, then removes what was stored by an earlier keep() for the same network. */
    void keep(const EventLog *log);

Q_SIGNALS:
    /*! What the manager has answered, once. */
    void answered(const morvek::Refusal &refusal);
    /*! Once, after the radio has left the network. */
    void failed(morvek::JoinAttempt::Failure failure);

private:
    Q_DISABLE_COPY(JoinAttempt)

    void onAnswer(NMActiveConnection *active, const GError *error);
    void onState(NMDevice *device, NMDeviceState now, NMDeviceState before, NMDeviceStateReason reason);
    void leave();
    void fail();
    void removeFormer(NMRemoteConnection *stored);

    ManagerClient *m_client;
    Restoration *m_restoration;
    GRef<NMConnection> m_profile;
    GRef<NMActiveConnection> m_active; // none before the answer
    SignalConnection m_activeState;
    Failure m_failure = Ended;
    bool m_isKept = false;
    bool m_isJoined = false;
    bool m_isAbandoned = false;
    bool m_hasFailed = false;
};

} // namespace morvek

#endif
