// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKSERVICES_H
#define MORVEK_NETWORKSERVICES_H

#include "kitexport.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

class NetworkController;
class ServiceKeeper;

/*!
 * Owns the services of the library that controllers share, and keeps them usable: a service that did not become ready
 * is made anew once its daemon is there, at the daemon's bell and otherwise with growing pauses; the death of a daemon
 * and its return are noticed.
 *
 * \code
 * #include <networkservices.h>
 * #include <wificontroller.h>
 *
 * void Settings::begin()
 * {
 *     m_services = new NetworkServices(this);
 *     m_wifi = new WifiController(m_services, this);
 *     connect(m_wifi, &WifiController::stateChanged, this, [this] { show(m_wifi->stateText()); });
 * }
 * \endcode
 *
 * An application makes one, and gives it to all its controllers, on one thread. A service is made when the first
 * controller needs it. Services may be deleted before their controllers, which are not ready any more then.
 */
class MORVEK_KIT_EXPORT NetworkServices : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool idle READ isIdle NOTIFY idleChanged)
    Q_PROPERTY(int retryPause READ retryPause WRITE setRetryPause NOTIFY retryPauseChanged)
    Q_PROPERTY(int watchPause READ watchPause WRITE setWatchPause NOTIFY watchPauseChanged)

public:
    explicit NetworkServices(QObject *parent = nullptr);
    ~NetworkServices() override;

    /*!
     * False while an interface stands between two requests of a configuration: whoever ends the application then may
     * leave it without addresses. An application that is to end waits for idleChanged().
     */
    bool isIdle() const;

    /*!
     * After how many milliseconds a service that is not ready is looked at again for the first time; each further pause
     * is twice as long, up to 32 times this. 1000 at first, from 1 to an hour.
     */
    int retryPause() const;
    void setRetryPause(int milliseconds);

    /*!
     * Every how many milliseconds it is looked whether a daemon that ends without a word is still there. 1000 at first,
     * from 1 to an hour.
     */
    int watchPause() const;
    void setWatchPause(int milliseconds);

Q_SIGNALS:
    void idleChanged();
    void retryPauseChanged();
    void watchPauseChanged();

private:
    Q_DISABLE_COPY(NetworkServices)
    friend class NetworkController;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
