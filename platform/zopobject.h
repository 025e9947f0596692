// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPOBJECT_H
#define MORVEK_ZOPOBJECT_H

#include "zopchangeset.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

/*!
 * One object of the publish/subscribe service: named attributes that outlive their writer, or the control
 * object of a daemon, through which requests and replies pass.
 *
 * Every update of an object reaches every ZopObject on its path exactly once and in order, except the one that
 * wrote it: attributeChanged() for each assignment in name order, attributeRemoved() for each removal, then
 * attributesChanged() once. All signals come from the event loop of the thread that created the object, except
 * those that setAttributeCacheEnabled() tells inside its call. Only who was stopped for long, and is far behind, is
 * told the present state as one update, without the values that it knows already; the log says so.
 *
 * An object follows its path. When the object is removed, its attributes are told as removed; when it is
 * created anew, its values are told. A control object works again by itself once its daemon is back; requests with
 * "msg" and "id" that were written to the dead one and not answered are told as refused, with "err" and "errmsg".
 *
 * Default arguments, the names of the modes, Publish, create() and remove() are for daemons, tools and tests: the
 * library does without.
 */
class MORVEK_PLATFORM_EXPORT ZopObject : public QObject
{
    Q_OBJECT

public:
    enum PublicationMode {
        Subscribe = 1, //!< reads an object that exists
        ReadWrite = 2, //!< reads and writes an object that exists
        Publish = 3,   //!< a daemon's own object, created when it does not exist
    };

    /*!
     * Opens the object at \a path. With \a mode Publish, \a flag true serves a control object: each request
     * arrives as an update that carries, beside the client's attributes, a "peer"; an update written back
     * with that "peer" goes to that client alone. In the other modes \a flag has no effect here.
     */
    ZopObject(const QString &path, PublicationMode mode, bool flag, QObject *parent = nullptr);
    ~ZopObject() override;

    /*! While one lives, no call of its thread waits for other processes: for a daemon, which tries again later. */
    class MORVEK_PLATFORM_EXPORT NoWaiting
    {
    public:
        NoWaiting();
        ~NoWaiting();

    private:
        Q_DISABLE_COPY(NoWaiting)

        bool m_hasWaited; // before
    };

    /*! True when the object could be opened. It stays true when the object is removed later. */
    bool isValid() const;
    /*! Text of the last error; empty when there was none. */
    QString errorString() const;
    QString path() const;

    /*!
     * With true, reads the present values and tells them to whoever is connected, inside the call:
     * attributeChanged() for each, then attributesChanged() once when there are any.
     */
    void setAttributeCacheEnabled(bool enabled);
    /*!
     * The value of \a name as this object has received it, or \a defaultValue. An object that may be written to, and
     * that nobody listens to, reads what has come when it is asked.
     */
    ZopVariant attribute(const QString &name, const ZopVariant &defaultValue = ZopVariant()) const;
    /*!
     * Writes \a changes as one update. False, with errorString(), when nothing was written, which may be for another
     * process that keeps the object locked for more than 50 ms. So it is with create() and remove().
     */
    bool setAttributes(const ZopChangeset &changes);

    /*!
     * For the daemon that publishes the object, which calls it from time to time: whether the path still has it, and
     * sound. From the first call on, updates go to the very object that was there then. A control object takes its path
     * back itself, and what killed writers have left in a state object goes. False, with errorString(), when something
     * else is there, or nothing.
     */
    bool check();

    /*!
     * Creates a state object that holds the assignments of \a values from its first moment. False, with the
     * reason in \a error, when it exists already or cannot be created.
     */
    static bool create(const QString &path, const ZopChangeset &values, QString *error = nullptr);
    /*! The same in the place of whatever is there, except a control object that is served: for its own daemon. */
    static bool createAnew(const QString &path, const ZopChangeset &values, QString *error = nullptr);
    /*! Removes a state object. False, with the reason in \a error, when there is none. */
    static bool remove(const QString &path, QString *error = nullptr);

Q_SIGNALS:
    void attributeChanged(const QString &name, const morvek::ZopVariant &value);
    void attributeRemoved(const QString &name);
    void attributesChanged(const morvek::ZopChangeset &changes);

protected:
    void connectNotify(const QMetaMethod &signal) override;

private:
    Q_DISABLE_COPY(ZopObject)
    friend class ZopControlCommand;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
