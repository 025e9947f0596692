// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIJOIN_P_H
#define MORVEK_WIFIJOIN_P_H

#include "secret_p.h"
#include "wifirequest_p.h"

#include <QtCore/QTimer>

namespace morvek {

class AsyncWifiConnectOperation;
struct WifiChoice;

/*!
 * Joins a network: looks for it, has the library join it, and compares what has come of it with what was asked. When it
 * was not let in, or when nothing comes, it looks once more whether the network is there at all.
 */
class WifiJoin : public WifiRequest
{
    Q_OBJECT

public:
    WifiJoin(NetworkController *controller, SharedStation *station, const QString &ssid, const QString &passkey);
    ~WifiJoin() override;

protected:
    void start() override;
    QString giveUp(Failure why) override;
    void release() override;
    void onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security) override;

private:
    enum Phase {
        Looking,
        Joining, //!< the library has been asked to
        Judging, //!< it has failed, and it is being looked why
    };

    bool isPossible();
    void beginPhase(Phase phase);
    void onPatienceOver();
    void choose(const WifiChoice &choice);
    void join(const NetworkSecurity &security);
    void compare();
    void onEvent(const QString &event);
    void onFailed();
    void judge();
    void notLetIn();
    void notInRange();
    QString withdraw();

    Secret m_passkey; //!< until it is handed to the library
    const bool m_hasPasskey;
    Phase m_phase = Looking;
    QTimer m_patience;
    AsyncWifiConnectOperation *m_operation = nullptr; //!< the station's
    QString m_former;                                 //!< the network that the station is to leave
    bool m_hasLeft = false;
    bool m_anotherHasFailed = false; //!< the library is about to tell the failure of another network as this one's
};

} // namespace morvek

#endif
