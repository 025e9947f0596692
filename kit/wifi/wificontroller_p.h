// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFICONTROLLER_P_H
#define MORVEK_WIFICONTROLLER_P_H

#include "wificontroller.h"
#include "wifirequest_p.h"

#include <QtCore/QTimer>
#include <QtCore/QVector>

namespace morvek {

/*! A QObject so that what comes from the event loop finds it alive. */
class WifiController::Private : public QObject
{
public:
    explicit Private(WifiController *controller);

    void follow(WifiService *service);
    /*! Takes over how things are now, and tells what has changed. */
    void update();

    template<typename Request>
    Request *ask(Request *request)
    {
        connect(request, &NetworkRequest::ending, this, &Private::update);
        connect(request, &QObject::destroyed, this, &Private::update);
        requests.append(request);
        q->take(request);
        refresh();
        QMetaObject::invokeMethod(this, &Private::tell, Qt::QueuedConnection);
        return request;
    }

    /*! What stateChanged() tells. */
    struct Shown
    {
        State state = NotReady;
        QString text;
        bool powered = false;
        QString joiningSsid;
        WifiAccessPoint accessPoint; //!< empty when the station is not connected
    };

    WifiController *const q;
    WifiNetworkModel *const networks;
    QPointer<SharedStation> station;
    QVector<QPointer<WifiRequest>> requests; //!< those under way, and some that have ended
    Shown shown;
    bool isScanning = false;
    bool isLooking = false;
    int scanPause = 10000;

private:
    Q_DISABLE_COPY(Private)
    void refresh();
    void refreshUsage();
    void followUsage();
    void tell();
    Shown present() const;
    State presentState(const Shown &now) const;
    QString textOf(const Shown &now) const;
    void show(const Shown &now);
    void showFound();
    bool mayLook() const;
    void planToLook();
    template<typename Request>
    const Request *underWay() const;

    QTimer m_lookTimer;
    bool m_hasStateToTell = false;
    bool m_hasScanningToTell = false;
};

} // namespace morvek

#endif
