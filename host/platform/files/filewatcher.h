// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_FILEWATCHER_H
#define MORVEK_FILEWATCHER_H

#include "filedescriptor.h"

#include <QtCore/QBasicTimer>
#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QVector>

#include <deque>
#include <list>
#include <memory>

class QSocketNotifier;

namespace morvek {

class WatchedFolder;

/*! Told of what happens in a folder. Any call may delete any listener. */
class FolderListener : public QObject
{
public:
    enum Event { Appeared, Replaced, Vanished, Modified };
    enum Kind { OfFolders, OfNames, OfValues };

    /*! When much is looked at again, names are told before values, which may speak of them. */
    virtual Kind kind() const { return OfValues; }

    /*! Something happened to the entry \a name. It is a hint: events merge, and come after the fact. */
    virtual void entryChanged(const QByteArray &name, Event event) = 0;
    /*! The folder has come or gone, or events were lost: nothing that was known of it may be true any more. */
    virtual void folderChanged() = 0;
};

/*!
 * The one inotify instance of a thread: it exists while anybody uses it.
 *
 * Folders are watched, not files, since a folder tells the life and the updates of all its objects under one
 * watch. A folder that does not exist is awaited by watching the nearest one above it that does.
 */
class FileWatcher : public QObject, public std::enable_shared_from_this<FileWatcher>
{
    Q_OBJECT

public:
    static std::shared_ptr<FileWatcher> instance();
    ~FileWatcher() override;

    /*!
     * Tells \a listener what happens to the entry \a name of \a folder; with an empty name, to all of them, but not
     * that they are modified.
     */
    bool watch(const QByteArray &folder, const QByteArray &name, FolderListener *listener, QString *error);
    void unwatch(const QByteArray &folder, const QByteArray &name, FolderListener *listener);

    /*!
     * Tells \a listener a little later that the folder may have changed: it could not look at something, for want of
     * file descriptors, watches or permissions, and no event tells when they are there again.
     */
    void retryLater(FolderListener *listener);
    /*!
     * The same for want of file descriptors. Until there are some nothing is told: what was published later, by objects
     * that need no more of them, would come before that. Then everything is looked at again.
     */
    void holdUntilRetry(FolderListener *listener);
    /*! Whether this process can open what is announced. */
    static bool hasSpareDescriptors();
    /*! The same at less cost, when it could a moment ago. */
    static bool stillHasSpareDescriptors();
    bool isHolding() const { return m_holding; }

    /*! Counts turns of the event loop in which something may be told. */
    quint64 turn() const { return m_turn; }
    void beginTurn() { ++m_turn; }

    /*!
     * Tells of the objects that have come by now: what was just read from a file, and is told next, may speak of them.
     * Whoever calls it may be gone afterwards. True when nothing at all has happened that was not told before.
     */
    bool tellAppearances();
    /*! Whether there are some among the events that have been read. */
    bool hasAppearances() const;
    /*! Whether other folders have taken the places of watched ones. */
    bool hasExchanged() const;
    /*! Looks at these folders. Whoever calls it may be gone afterwards. */
    void renewExchanged();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    FileWatcher() = default;
    friend class WatchedFolder;

    struct RawEvent
    {
        int watch;
        quint32 mask;
        QByteArray name;
    };

    static bool isAppearance(const RawEvent &event);
    bool open();
    void readEvents();
    void fetchEvents();
    void handleLater();
    void handleEvents();
    void dispatch(const RawEvent &event);
    void handle(const RawEvent &event);
    void retry();
    void watchRoot();
    void forgetEvents();
    void renewAll();
    void look(FolderListener *listener);
    void tellChanged();

    FileDescriptor m_inotify;
    QMap<QByteArray, WatchedFolder *> m_folders;
    QMap<int, WatchedFolder *> m_watches;
    int m_rootWatch = -1;          // tells when the root is moved, which the folders below it are not told
    std::deque<RawEvent> m_events; // read, and not handled yet
    std::list<QPointer<FolderListener>> m_changed; // to be told that their folder has changed
    QVector<QPointer<FolderListener>> m_retries;
    QBasicTimer m_retryTimer;
    std::unique_ptr<QSocketNotifier> m_notifier;
    quint64 m_turn = 0;
    bool m_holding = false;
    bool m_handling = false;
    bool m_handlesLater = false;
};

} // namespace morvek

#endif
