// SPDX-License-Identifier: Apache-2.0
#include "filewatcher.h"

#include "hostlog.h"
#include "root.h"
#include "watchedfolder.h"
#include "zoppath.h"

#include <QtCore/QScopedValueRollback>
#include <QtCore/QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/inotify.h>

namespace morvek {

namespace {

// Bounds what one wake-up handles, so that a flood leaves turns of the event loop to others.
constexpr size_t BufferSize = 16 * 1024;

// Not more are read ahead: what is told of one may take longer than the next ones take to come.
constexpr size_t MostEvents = 4096;

constexpr int RetryPause = 200; // milliseconds

// A control object and a state object, and some for whoever else needs one meanwhile.
constexpr int DescriptorsOfAnnouncement = 4;

} // namespace

std::shared_ptr<FileWatcher> FileWatcher::instance()
{
    // An inotify instance is a scarce thing, and its notifier belongs to one thread.
    thread_local std::weak_ptr<FileWatcher> current;
    std::shared_ptr<FileWatcher> watcher = current.lock();
    if (!watcher) {
        // Who is told of an event may drop the last user of the watcher that tells it.
        watcher.reset(new FileWatcher, [](FileWatcher *unused) {
            if (unused->m_handling)
                unused->deleteLater();
            else
                delete unused;
        });
        current = watcher;
    }
    return watcher;
}

FileWatcher::~FileWatcher() = default;

bool FileWatcher::watch(const QByteArray &folder, const QByteArray &name, FolderListener *listener, QString *error)
{
    WatchedFolder *&watched = m_folders[folder];
    if (!watched) {
        auto fresh = std::make_unique<WatchedFolder>(this, folder);
        if (!open() || !fresh->attach()) {
            *error = QStringLiteral("cannot watch: %1").arg(systemError(errno));
            m_folders.remove(folder);
            return false;
        }
        m_folders[folder] = fresh.release();
    }
    m_folders[folder]->add(name, listener);
    return true;
}

void FileWatcher::unwatch(const QByteArray &folder, const QByteArray &name, FolderListener *listener)
{
    WatchedFolder *watched = m_folders.value(folder);
    watched->remove(name, listener);
    if (!watched->isUnused())
        return;
    m_folders.remove(folder);
    delete watched;
}

void FileWatcher::retryLater(FolderListener *listener)
{
    if (!m_retries.contains(listener))
        m_retries.append(listener);
    if (!m_retryTimer.isActive())
        m_retryTimer.start(RetryPause, this);
}

bool FileWatcher::hasSpareDescriptors()
{
    return FileDescriptor::areToSpare(DescriptorsOfAnnouncement);
}

bool FileWatcher::stillHasSpareDescriptors()
{
    return FileDescriptor::areLastFree(DescriptorsOfAnnouncement) || hasSpareDescriptors();
}

void FileWatcher::holdUntilRetry(FolderListener *listener)
{
    if (!std::exchange(m_holding, true))
        logWarning(QStringLiteral("Nothing is told until there are file descriptors for what has come"));
    m_notifier->setEnabled(false);
    retryLater(listener);
}

void FileWatcher::timerEvent(QTimerEvent *)
{
    m_retryTimer.stop();
    retry();
}

void FileWatcher::retry()
{
    // Whoever fails again asks again; and a listener may drop the last user of this.
    beginTurn();
    const QScopedValueRollback<bool> handling(m_handling, true);
    const std::shared_ptr<FileWatcher> kept = weak_from_this().lock();
    if (m_holding && !hasSpareDescriptors()) {
        m_retryTimer.start(RetryPause, this);
        return;
    }
    // What has happened meanwhile is old news: told now, it would come between names and values of the present.
    if (std::exchange(m_holding, false)) {
        m_notifier->setEnabled(true); // a slot may run an event loop
        forgetEvents();
        renewAll();
    }
    const QVector<QPointer<FolderListener>> retries = std::exchange(m_retries, {});
    for (const QPointer<FolderListener> &listener : retries) {
        if (listener)
            look(listener);
    }
    tellChanged();
    handleEvents();
}

void FileWatcher::forgetEvents()
{
    char buffer[BufferSize];
    while (read(m_inotify.get(), buffer, sizeof(buffer)) > 0) { }
    m_events.clear();
}

void FileWatcher::renewAll()
{
    const QList<QByteArray> paths = m_folders.keys();
    for (const QByteArray &path : paths) {
        if (WatchedFolder *folder = m_folders.value(path))
            folder->renew();
    }
}

bool FileWatcher::hasExchanged() const
{
    return std::any_of(m_folders.begin(), m_folders.end(), [](const auto *folder) { return folder->isExchanged(); });
}

void FileWatcher::renewExchanged()
{
    const std::shared_ptr<FileWatcher> kept = weak_from_this().lock();
    const QList<QByteArray> paths = m_folders.keys();
    for (const QByteArray &path : paths) {
        WatchedFolder *folder = m_folders.value(path);
        if (folder && folder->isExchanged())
            folder->renew();
    }
    tellChanged();
}

void FileWatcher::watchRoot()
{
    const int former = std::exchange(m_rootWatch,
                                     inotify_add_watch(m_inotify.get(), Root::folder().constData(),
                                                       IN_MOVE_SELF | IN_DELETE_SELF | IN_ONLYDIR | IN_MASK_ADD));
    if (former != -1 && former != m_rootWatch && !m_watches.contains(former))
        inotify_rm_watch(m_inotify.get(), former);
}

/*! Has \a listener look at its folder: at once when it watches one for others, else when all of these have. */
void FileWatcher::look(FolderListener *listener)
{
    if (listener->kind() == FolderListener::OfFolders)
        listener->folderChanged();
    else
        m_changed.emplace_back(listener);
}

void FileWatcher::tellChanged()
{
    if (m_changed.empty())
        return;
    std::stable_partition(m_changed.begin(), m_changed.end(), [](const QPointer<FolderListener> &listener) {
        return listener && listener->kind() == FolderListener::OfNames;
    });
    while (!m_changed.empty()) {
        const QPointer<FolderListener> listener = m_changed.front();
        m_changed.pop_front();
        if (m_holding && listener)
            retryLater(listener);
        else if (listener)
            listener->folderChanged();
    }
}

/*! Gets the inotify instance, unless it is there already. False with errno. */
bool FileWatcher::open()
{
    if (m_inotify.isOpen())
        return true;
    m_inotify.reset(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!m_inotify.isOpen())
        return false;
    m_notifier = std::make_unique<QSocketNotifier>(m_inotify.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &FileWatcher::readEvents);
    return true;
}

bool FileWatcher::isAppearance(const RawEvent &event)
{
    return event.mask & (IN_CREATE | IN_MOVED_TO);
}

bool FileWatcher::hasAppearances() const
{
    return std::any_of(m_events.begin(), m_events.end(), isAppearance);
}

bool FileWatcher::tellAppearances()
{
    if (!m_notifier || m_holding)
        return false;
    const std::shared_ptr<FileWatcher> kept = weak_from_this().lock();
    if (m_events.size() < MostEvents)
        fetchEvents();
    handleLater();
    // A copy, as a slot may run an event loop that handles events. They are handled in their turn all the same: whoever
    // watches names knows which ones it has told of.
    if (m_events.empty())
        return true;
    const std::deque<RawEvent> events = m_events;
    for (const RawEvent &event : events) {
        WatchedFolder *folder = m_watches.value(event.watch);
        if (folder && isAppearance(event))
            folder->tellOfNames(event.name, FolderListener::Appeared);
    }
    return false;
}

/*! Handles what has been read from the event loop, unless that is done anyway. */
void FileWatcher::handleLater()
{
    if (m_events.empty() || std::exchange(m_handlesLater, true))
        return;
    const auto goOn = [this] {
        m_handlesLater = false;
        beginTurn();
        handleEvents();
    };
    QMetaObject::invokeMethod(this, goOn, Qt::QueuedConnection);
}

void FileWatcher::readEvents()
{
    beginTurn();
    fetchEvents();
    handleEvents();
}

void FileWatcher::fetchEvents()
{
    alignas(inotify_event) char buffer[BufferSize];
    const ssize_t size = read(m_inotify.get(), buffer, sizeof(buffer));
    for (ssize_t position = 0; position < size;) {
        inotify_event event;
        std::memcpy(&event, buffer + position, sizeof(event));
        const char *name = buffer + position + sizeof(event);
        m_events.push_back({event.wd, event.mask, event.len ? QByteArray(name) : QByteArray()});
        position += ssize_t(sizeof(event) + event.len);
    }
}

void FileWatcher::handleEvents()
{
    // A slot may drop the last user, or run an event loop that handles what is left here, in order.
    const QScopedValueRollback<bool> handling(m_handling, true);
    const std::shared_ptr<FileWatcher> kept = weak_from_this().lock();
    while (!m_events.empty() && !m_holding) {
        const RawEvent event = std::move(m_events.front());
        m_events.pop_front();
        handleLater();
        dispatch(event);
    }
}

void FileWatcher::dispatch(const RawEvent &event)
{
    tellChanged(); // whom a slot's own event loop has kept waiting
    handle(event);
    tellChanged();
}

void FileWatcher::handle(const RawEvent &event)
{
    if (event.mask & IN_Q_OVERFLOW) {
        renewAll();
        return;
    }
    if (event.watch == m_rootWatch && event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) {
        renewAll();
        return;
    }
    WatchedFolder *folder = m_watches.value(event.watch);
    if (!folder)
        return;
    if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT))
        folder->renew();
    else if (event.mask & IN_MODIFY)
        folder->tell(event.name, FolderListener::Modified);
    else if (event.mask & IN_CREATE)
        folder->tell(event.name, FolderListener::Appeared);
    else if (event.mask & IN_MOVED_TO)
        folder->tell(event.name, FolderListener::Replaced);
    else if (event.mask & (IN_DELETE | IN_MOVED_FROM))
        folder->tell(event.name, FolderListener::Vanished);
}

} // namespace morvek
