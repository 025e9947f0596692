// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKCONTROLLER_H
#define MORVEK_NETWORKCONTROLLER_H

#include "networkrequest.h"

#include <QtCore/QPointer>

namespace morvek {

class NetworkServices;
class ServiceBase;

/*!
 * What the controllers of the three services have in common: the services that they share with others, and whether
 * theirs can be used.
 */
class MORVEK_KIT_EXPORT NetworkController : public QObject
{
    Q_OBJECT
    Q_PROPERTY(morvek::NetworkServices *services READ services WRITE setServices NOTIFY servicesChanged)
    Q_PROPERTY(Availability availability READ availability NOTIFY availabilityChanged)
    Q_PROPERTY(QString availabilityText READ availabilityText NOTIFY availabilityChanged)

public:
    enum Availability {
        Waiting, //!< the service has not been ready yet: its daemon has not started, or is not complete
        Ready,   //!< the service can be used
        Gone,    //!< the daemon has died; what is told is what it has told last. Ready follows when it is back
    };
    Q_ENUM(Availability)

    ~NetworkController() override;

    /*! Null until they are given, and when they were deleted. They are not owned. */
    NetworkServices *services() const;
    /*! To be called once, unless the constructor was given them. */
    void setServices(NetworkServices *services);

    Availability availability() const;
    /*! A sentence for the driver; empty when the service is ready. */
    QString availabilityText() const;

Q_SIGNALS:
    void servicesChanged();
    void availabilityChanged();

protected:
    // For the controllers of the kit.

    enum Daemon { Networking, Wifi, Tethering };
    /*! One for the service of \a daemon. */
    NetworkController(Daemon daemon, QObject *parent);

    /*! The library's service, ready or not; null while there is none. It may be another one each time. */
    ServiceBase *service() const;
    /*! Called when service() is another one, or none, and may have to be connected to. */
    virtual void onServiceReplaced() = 0;
    /*! Called when availability() has changed, before that is told. */
    virtual void onAvailabilityChanged() = 0;

    /*! Between these two calls NetworkServices::isIdle() is false. They nest. */
    void beginUninterruptible();
    void endUninterruptible();

    /*!
     * Takes \a request over and starts it, or has it fail when the service is not ready. Requests of the same class
     * that have ended are deleted.
     */
    template<typename Request>
    Request *take(Request *request)
    {
        adopt(request, &Request::staticMetaObject, false);
        return request;
    }
    /*! The same, but of those that have ended only the ones with the same subject are deleted. */
    template<typename Request>
    Request *takeForSubject(Request *request)
    {
        adopt(request, &Request::staticMetaObject, true);
        return request;
    }

private:
    Q_DISABLE_COPY(NetworkController)
    friend class NetworkRequest;
    void adopt(NetworkRequest *request, const QMetaObject *kind, bool sameSubject);
    void followKeeper();
    void loseRequests();
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
