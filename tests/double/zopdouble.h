// SPDX-License-Identifier: Apache-2.0
#ifndef ZOPDOUBLE_H
#define ZOPDOUBLE_H

#include "zopchangeset.h"
#include "zopcontrolcommand.h"
#include "zopdirwatcher.h"
#include "zopobject.h"

#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <functional>

/*!
 * A publish/subscribe service in memory that takes the platform's place in a test: it records what a client does
 * with it and does what the test says. Updates, names and replies reach the client inside the call.
 */
class MORVEK_PLATFORM_EXPORT ZopDouble
{
public:
    using Values = QMap<QString, morvek::ZopVariant>;

    /*! A command that has been started. */
    struct Command
    {
        QPointer<morvek::ZopControlCommand> command;
        QString path; //!< of its control object
        QString message;
        morvek::ZopVariant dat;
    };

    /*! One update that a client has written. */
    struct Write
    {
        QString path;
        morvek::ZopChangeset changes;
    };

    /*! Forgets the world and what was recorded; no client object may live. */
    static void reset();

    /*! One update of the object \a path, which is created when there is none. */
    static void publish(const QString &path, const Values &values, const QSet<QString> &removals = {});
    /*! The first half of publish(): what the object holds, and what clients that cache it read. */
    static void store(const QString &path, const Values &values, const QSet<QString> &removals = {});
    /*! The second half of publish(): what clients are told, whatever the object holds. */
    static void tell(const QString &path, const Values &values, const QSet<QString> &removals = {});

    /*! publish(), then announce(). */
    static void add(const QString &directory, const QString &name, const Values &values = {});
    /*! Announces \a name, whether or not there is such an object. */
    static void announce(const QString &directory, const QString &name);
    /*! Removes the object and announces that; its attributes are not told as removed. */
    static void remove(const QString &directory, const QString &name);

    /*! Lets attempts to open the object or to watch the directory \a path fail. */
    static void refuse(const QString &path, const QString &error);
    static void allow(const QString &path);

    /*! Every started command, in order. */
    static QList<Command> commands();
    /*! Calls \a hook with the name of each request inside start(), until the next reset(). */
    static void onStart(const std::function<void(const QString &message)> &hook);
    /*! The identifier of the next command; they are numbered from 1 otherwise. */
    static void setNextId(const QString &id);
    /*! Ends the command at \a index with success. */
    static void answer(int index, const morvek::ZopVariant &dat = morvek::ZopVariant());
    /*! Ends the command at \a index with an error. */
    static void answerError(int index, int code, const QString &text,
                            const morvek::ZopVariant &dat = morvek::ZopVariant());

    /*! Every update that was written, in order. */
    static QList<Write> writes();
    /*! Calls \a hook inside each such setAttributes(), until the next reset(). */
    static void onWrite(const std::function<void(const morvek::ZopChangeset &changes)> &hook);
    /*! Lets attempts to write to the object \a path fail. */
    static void refuseWrites(const QString &path, const QString &error);

    /*!
     * What the client did, in order: a line for each object, watcher and command that it made, with the
     * arguments and the class of the parent; for each cache that it switched and command that it started, with
     * the signals that were connected then; for each attribute that it read; and for what it deleted.
     */
    static QStringList journal();
    static void clearJournal();
    /*! How often clients have asked objects, watchers and commands for texts about themselves, ids left out. */
    static int askedTexts();

    /*! The client objects that are open on \a path. */
    static QList<morvek::ZopObject *> objects(const QString &path);
    /*! The parents of all client objects and watchers that are open. */
    static QSet<QObject *> owners();
};

#endif
