// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKREQUEST_H
#define MORVEK_NETWORKREQUEST_H

#include "kitexport.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

class NetworkController;

/*!
 * Something that was asked of a controller, and that always ends, once: done, or failed for a reason that is known.
 *
 * finished() tells the end, from the event loop and never inside the call that made the request, so that there is time
 * to connect. The controller owns its requests: one that has ended stays as it is until the controller is asked for
 * another one of its kind (for an interface: of that interface), or is deleted itself. So a screen may show the outcome
 * where it happened, and nobody has to delete a request.
 *
 * A daemon that dies, the end of the controller's services, and a deadline end a request, too.
 */
class MORVEK_KIT_EXPORT NetworkRequest : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool running READ isRunning NOTIFY finished)
    Q_PROPERTY(bool done READ isDone NOTIFY finished)
    Q_PROPERTY(morvek::NetworkRequest::Failure failure READ failure NOTIFY finished)
    Q_PROPERTY(int code READ code NOTIFY finished)
    Q_PROPERTY(QString text READ text NOTIFY finished)
    Q_PROPERTY(QString sentence READ sentence NOTIFY finished)
    Q_PROPERTY(QString subject READ subject CONSTANT)
    Q_PROPERTY(int deadline READ deadline WRITE setDeadline NOTIFY deadlineChanged)

public:
    enum Failure {
        NoFailure,    //!< it is running, or done
        NotReady,     //!< the service, the daemon or the radio is not there; nothing was asked
        Busy,         //!< another request stands in the way; nothing was asked
        Invalid,      //!< it cannot be asked for like that; nothing was asked
        Refused,      //!< the daemon has refused it: code() and text() tell what it says
        WrongPasskey, //!< the network does not take the passkey
        OutOfRange,   //!< there is no such network in range
        TimedOut,     //!< it has not come true within deadline()
        Cancelled,    //!< cancel() was called
        Overtaken,    //!< somebody, this application perhaps, has asked for something else meanwhile, and got it
        Lost,         //!< the daemon has died, or the services were deleted, while it was open
    };
    Q_ENUM(Failure)

    ~NetworkRequest() override;

    /*! True until it ends. */
    bool isRunning() const;
    /*! True when it has ended well. */
    bool isDone() const;
    /*! Why it has failed. */
    Failure failure() const;
    /*! The daemon's code, as far as the library tells it; 0 when there is none. */
    int code() const;
    /*! The daemon's text, or the library's; empty when there is none. It comes from outside: show it as plain text. */
    QString text() const;
    /*!
     * A sentence that can be shown to a driver: why it has failed, and what may still come of it; empty while it runs
     * and when it is done. It is in the application's language; see QCoreApplication::installTranslator().
     * What it names from outside stands in directional isolates, with control characters made visible.
     */
    QString sentence() const;
    /*! The network or interface that it is about; empty when it is about none. */
    QString subject() const;

    /*!
     * How long it may take, in milliseconds, counted from when it was made; the function that has made it tells how
     * long that is at first. -1 is for ever. Has no effect after the end.
     */
    int deadline() const;
    void setDeadline(int milliseconds);

public Q_SLOTS:
    /*!
     * Ends it with Cancelled, if it is still running. What the daemon was asked for already may still happen, to the
     * present network, too: sentence() tells.
     */
    void cancel();

Q_SIGNALS:
    /*!
     * It has ended, and finished() follows: its controller brings what it tells up to date. QML's handlers of
     * finished() would be called before the controller hears of that.
     */
    void ending();
    /*! It has ended. This comes exactly once, from the event loop. */
    void finished();
    void deadlineChanged();

protected:
    /*! A request of \a controller, which has \a deadline milliseconds. */
    NetworkRequest(NetworkController *controller, const QString &subject, int deadline);

    /*! Begins: called once, by the controller that takes it, inside the call that makes it. */
    virtual void start() = 0;
    /*!
     * Called when it ends as \a why before it has come true: Cancelled, TimedOut or Lost. Gives up what it can. Returns
     * the sentence for the driver, with what may still come of it; empty for one that fits any request.
     */
    virtual QString giveUp(Failure why);
    /*! Called once when it ends, however that is: lets go of what it holds. isRunning() is still true. */
    virtual void release();

    /*! Ends it: finished() follows from the event loop. The first end counts. */
    void succeed();
    void fail(Failure failure, const QString &sentence, int code = 0, const QString &text = QString());
    /*! Whether it has ended, though finished() may still be to come. */
    bool hasEnded() const;

private:
    Q_DISABLE_COPY(NetworkRequest)
    friend class NetworkController;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
