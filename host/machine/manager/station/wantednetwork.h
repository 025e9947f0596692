// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WANTEDNETWORK_H
#define MORVEK_HOSTD_WANTEDNETWORK_H

#include "answer.h"
#include "joinattempt.h"
#include "wifirequest.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace morvek {

class EventLog;
class ManagerClient;
class RadioScan;
class Restoration;

/*!
 * Brings the radio to the network that was selected last, and back to it, until its passkey turns out to be wrong, or
 * it is not wanted any longer. Meanwhile the manager joins no network by itself.
 */
class WantedNetwork : public QObject
{
    Q_OBJECT

public:
    /*! All of them must outlive this. When it is to \a remember, what is joined is kept for later. */
    WantedNetwork(ManagerClient *client, RadioScan *scan, Restoration *restoration, const EventLog *log, bool remember,
                  QObject *parent = nullptr);
    ~WantedNetwork() override;

    /*! Answers with what the manager says to the first attempt. */
    void select(int identifier, const WifiNetwork &network, const AnswerCall &answer);
    /*! Leaves whatever network the radio is in, and answers with what the manager says to that. */
    void leave(const AnswerCall &answer);
    /*! The radio does something else: what is wanted is not joined before it is taken back. */
    void lend() { m_isLent = true; }
    bool isLent() const { return m_isLent; }
    /*! True when a network is joined now, or will be. */
    bool takeBack();
    /*! Something has changed: perhaps there is something to do. */
    void look();

    /*! False while the radio is to be in another network than the one that it is in. */
    bool isAwaited(NMDevice *radio) const { return isAt(radio) || !isUnderWay(); }
    /*! The radio is in a network that may be told. */
    void setJoined(NMDevice *radio);
    /*! Of the connection that \a radio has; -1 when it is somebody else's. */
    int identifierAt(NMDevice *radio) const { return isAt(radio) ? m_wish.identifier : -1; }

Q_SIGNALS:
    /*! The network is not wanted any longer. */
    void notLetIn(int identifier, const QString &ssid);
    void notFound();
    /*! The manager has taken an attempt on: the radio may be in the network already. */
    void accepted();

private:
    Q_DISABLE_COPY(WantedNetwork)

    struct Wish
    {
        int identifier = -1;
        WifiNetwork network;
        JoinAttempt *attempt = nullptr; // a child
    };

    enum Step {
        Idle,      // nothing is wanted
        Blocked,   // until the radio is free
        Joining,   // an attempt is under way, or was successful
        Looking,   // a scan shows whether the network is in sight
        Verifying, // a scan shows whether what did not answer is in sight
        Waiting,   // until the network comes into sight
    };

    bool isAt(NMDevice *radio) const { return m_wish.attempt && m_wish.attempt->isAt(radio); }
    bool isUnderWay() const { return m_isPending || (m_wish.attempt && !m_wish.attempt->isJoined()); }
    bool isUsable() const;
    bool isFree() const;
    bool isTakenByOthers() const;
    bool isInSight() const;
    void proceed();
    void await(Step step);
    void onScanned();
    void join();
    void onAnswered(JoinAttempt *attempt, const Refusal &refusal);
    void onFailed(JoinAttempt *attempt, JoinAttempt::Failure failure);
    void onPasskeyRefused();
    void onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceStateReason reason);
    void countFailure();
    void tellNotFound();
    void giveUp();
    void endWish(bool isTold);
    void refuse(const Refusal &refusal);
    void overtake();
    void reply(const Refusal &refusal);
    void forget(Wish *wish);
    void hold(bool holds);

    ManagerClient *m_client;
    RadioScan *m_scan;
    Restoration *m_restoration;
    const EventLog *m_log;
    bool m_remembers;
    Step m_step = Idle;
    bool m_isBack = false; // the manager, and it has forgotten what it was told
    Wish m_wish;
    Wish m_former;                 // that the radio is still in while the manager has not answered to another one
    AnswerCall m_answer;           // until the request is answered
    bool m_isPending = false;      // a client waits for the network
    int m_failures = 0;            // in a row
    QByteArray m_before;           // the connection that the radio had when the network was selected
    bool m_isLent = false;         // the radio, to a hotspot
    QTimer m_patience;             // ends a step that a scan should end
    QByteArray m_held;             // the radio that must not join by itself
    bool m_wasHeld = false;        // any, when the network was selected
    bool m_joinedByItself = false; // before
};

} // namespace morvek

#endif
