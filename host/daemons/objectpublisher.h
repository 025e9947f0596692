// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_OBJECTPUBLISHER_H
#define MORVEK_HOSTD_OBJECTPUBLISHER_H

#include "attributes.h"

#include <QtCore/QMap>

#include <deque>
#include <map>
#include <memory>

namespace morvek {

class ZopObject;

/*!
 * A daemon's state objects, by path. They stay when the publisher goes.
 *
 * What cannot be done (false, with the reason) waits until retry() can do it, and so does what is asked of the same
 * object later: in order, and each update as one of its own.
 */
class ObjectPublisher
{
public:
    ObjectPublisher();
    ~ObjectPublisher();

    /*! How an object of a former run is turned into the new one: everything is told anew, or what differs. */
    enum Takeover { TellAll, TellDifference };

    /*!
     * Creates the object complete, or turns one of a former run into it by one update. Malformed content makes way;
     * what merely cannot be opened stays. Updates that come while it waits become part of it.
     */
    bool publish(const QString &path, const Attributes &attributes, Takeover takeover, QString *error);
    /*! Writes one update to a published object. One that has become malformed, or is gone, is made anew by retry(). */
    bool update(const QString &path, const ZopChangeset &changes, QString *error);
    bool remove(const QString &path, QString *error);

    /*! Does what waits, as far as that is possible; the paths of the objects that have been published by that. */
    QStringList retry();
    bool isWaiting() const;
    /*! Lets go of every object and of what waits, as the death of a process does. */
    void abandon();

    /*! The names of the objects of \a directory, whoever created them; false when it cannot be watched. */
    static bool list(const QString &directory, QStringList *names, QString *error);

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

        bool endsWith(Step::Kind kind) const { return !waiting.empty() && waiting.back().kind == kind; }
    };

    bool add(const QString &path, const Step &step, QString *error);
    static bool perform(const QString &path, Published *published, QString *error);
    static bool create(const QString &path, Published *published, QString *error);

    std::map<QString, Published> m_objects;
};

} // namespace morvek

#endif
