// SPDX-License-Identifier: Apache-2.0
#include "filewatcher.h"

#include "watchedfolder.h"
#include "zoppath.h"

#include <QtCore/QSocketNotifier>

#include <cerrno>
#include <cstring>

#include <sys/inotify.h>

namespace morvek {

namespace {

// Bounds what one wake-up handles, so that a flood leaves turns of the event loop to others.
constexpr size_t BufferSize = 16 * 1024;

} // namespace

std::shared_ptr<FileWatcher> FileWatcher::instance()
{
    // An inotify instance is a scarce thing, and its notifier belongs to one thread.
    thread_local std::weak_ptr<FileWatcher> current;
    std::shared_ptr<FileWatcher> watcher = current.lock();
    if (!watcher) {
        // Who is told of an event may drop the last user of the watcher that tells it.
        watcher.reset(new FileWatcher, [](FileWatcher *unused) {
            if (unused->m_reading)
                unused->deleteLater();
            else
                delete unused;
        });
        current = watcher;
    }
    return watcher;
}

FileWatcher::FileWatcher() = default;

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

/*! Gets the inotify instance, unless it is there already. False with errno. */
bool FileWatcher::open()
{
    if (m_inotify.isOpen())
        return true;
    m_inotify.reset(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!m_inotify.isOpen())
        return false;
    auto *notifier = new QSocketNotifier(m_inotify.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &FileWatcher::readEvents);
    return true;
}

void FileWatcher::readEvents()
{
    alignas(inotify_event) char buffer[BufferSize];
    const ssize_t size = read(m_inotify.get(), buffer, sizeof(buffer));
    m_reading = true;
    for (ssize_t position = 0; position < size;) {
        inotify_event event;
        std::memcpy(&event, buffer + position, sizeof(event));
        const char *name = buffer + position + sizeof(event);
        dispatch(event.wd, event.mask, event.len ? QByteArray(name) : QByteArray());
        position += ssize_t(sizeof(event) + event.len);
    }
    m_reading = false;
}

void FileWatcher::dispatch(int watch, quint32 mask, const QByteArray &name)
{
    if (mask & IN_Q_OVERFLOW) {
        const QList<QByteArray> paths = m_folders.keys();
        for (const QByteArray &path : paths) {
            if (const WatchedFolder *folder = m_folders.value(path))
                folder->tellAll();
        }
        return;
    }
    WatchedFolder *folder = m_watches.value(watch);
    if (!folder)
        return;
    if (mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT))
        folder->detach();
    else if (mask & IN_MODIFY)
        folder->tell(name, FolderListener::Modified);
    else if (mask & IN_CREATE)
        folder->tell(name, FolderListener::Appeared);
    else if (mask & IN_MOVED_TO)
        folder->tell(name, FolderListener::Replaced);
    else if (mask & (IN_DELETE | IN_MOVED_FROM))
        folder->tell(name, FolderListener::Vanished);
}

} // namespace morvek
