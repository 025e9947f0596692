// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SERVICEKEEPER_P_H
#define MORVEK_SERVICEKEEPER_P_H

#include "daemonwatch.h"
#include "networkcontroller.h"

namespace morvek {

class ServiceBase;

/*! How many times as long as the first one a pause becomes, where pauses grow. */
constexpr int MostGrowth = 32;

/*! What there is to know of one of the library's services to keep it. */
struct KeptService
{
    QString daemon;      //!< as DaemonWatch knows it
    QStringList objects; //!< the paths that must be there before one can become ready
    ServiceBase *(*make)();
    void (*drop)(ServiceBase *service);
};

/*!
 * Keeps one service of the library usable. One that is not ready is made anew as soon as all that it needs is there,
 * and not before: what the library leaves behind of a hotspot service that has failed cannot be got rid of.
 */
class ServiceKeeper : public QObject
{
    Q_OBJECT

public:
    explicit ServiceKeeper(const KeptService &kept);
    ~ServiceKeeper() override;

    /*! Null only while this is being destroyed. */
    ServiceBase *service() const { return m_service; }
    NetworkController::Availability availability() const { return m_availability; }

    void setRetryPause(int milliseconds);
    void setWatchPause(int milliseconds) { m_watch.setPause(milliseconds); }

Q_SIGNALS:
    /*! service() is another one now; the former one is deleted afterwards. */
    void replaced();
    void availabilityChanged();

private:
    Q_DISABLE_COPY(ServiceKeeper)
    void replaceService(ServiceBase *service);
    void onReady();
    void onDied();
    void onReturned();
    void lookAgain();
    bool isComplete() const;
    void set(NetworkController::Availability availability);

    const KeptService m_kept;
    DaemonWatch m_watch;
    QTimer m_retry;
    int m_retryPause = 0;
    ServiceBase *m_service = nullptr;
    NetworkController::Availability m_availability = NetworkController::Waiting;
};

} // namespace morvek

#endif
