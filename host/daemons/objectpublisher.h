// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_OBJECTPUBLISHER_H
#define MORVEK_HOSTD_OBJECTPUBLISHER_H

#include "attributes.h"

#include <QtCore/QMap>

#include <deque>
#include <functional>
#include <map>
#include <memory>

namespace morvek {

class ZopObject;

/*!
 * A daemon's state objects, by path. They stay when the publisher goes.
 *
 * What cannot be done (false, with the reason) waits until retry() can do it, and so does what is asked of the same
 * object later: in order, and each update as one of its own, up to LargestQueue; then they become one update.
 */
class ObjectPublisher
{
public:
    /*! Tells something of the object at \a path. */
    using Tell = std::function<void(const QString &path, const QString &text)>;
    /*! Whether objects may be made and removed at present; if not, with the reason. */
    using Permission = std::function<bool(QString *reason)>;

    /*! What one object's waiting updates may take in memory, in bytes. */
    static constexpr qint64 LargestQueue = 4 * 1024 * 1024;

    /*! Has \a tellLoss told of each object of which updates are not told one by one any more. */
    explicit ObjectPublisher(Tell tellLoss = nullptr, Permission permission = nullptr);
    ~ObjectPublisher();

    /*!
     * How an object of a former run is turned into the new one: everything is told anew, or what differs, or it is made
     * anew, whatever is there.
     */
    enum Takeover { TellAll, TellDifference, MakeAnew };

    /*!
     * Creates the object complete, or turns one of a former run into it by one update. Malformed content makes way;
     * what merely cannot be opened stays. Updates that come while it waits become part of it.
     */
    bool publish(const QString &path, const Attributes &attributes, Takeover takeover, QString *error);
    /*! Writes one update to a published object. One that has become malformed, or is gone, is made anew by retry(). */
    bool update(const QString &path, const ZopChangeset &changes, QString *error);
    bool remove(const QString &path, QString *error);

    /*!
     * Looks whether the objects are there and sound, tells \a tellTrouble of those that are not, and makes these anew,
     * or has them wait for retry(). The paths of those that were made anew.
     */
    QStringList check(const Tell &tellTrouble);

    /*! Does what waits, as far as that is possible; the paths of the objects that have been published by that. */
    QStringList retry();
    bool isWaiting() const;
    /*! Lets go of every object and of what waits, as the death of a process does. */
    void abandon();

    /*! The names of the objects of \a directory, whoever created them; false when it cannot be watched. */
    static bool list(const QString &directory, QStringList *names, QString *error);
    /*! What the object at \a path holds at this moment, whoever created it; false when it cannot be opened. */
    static bool read(const QString &path, Attributes *attributes);

private:
    Q_DISABLE_COPY(ObjectPublisher)

    struct Step
    {
        enum Kind { Create, Update, Remove } kind;
        ZopChangeset changes; // of an update
        Takeover takeover;    // of a creation
    };

    struct Published
    {
        Attributes attributes;             // when everything is written
        std::unique_ptr<ZopObject> object; // none before it is created and after it is removed
        std::deque<Step> waiting;
        qint64 waitingBytes = 0; // of the updates since the first of them began to wait
        bool hasLost = false;    // updates that wait have become one

        bool endsWith(Step::Kind kind) const { return !waiting.empty() && waiting.back().kind == kind; }
    };

    bool add(const QString &path, const Step &step, QString *error);
    void wait(const QString &path, Published *published, const Step &step);
    bool perform(const QString &path, Published *published, QString *error);
    static bool create(const QString &path, Published *published, QString *error);

    Tell m_tellLoss;
    Permission m_permission;
    std::map<QString, Published> m_objects;
};

} // namespace morvek

#endif
