// SPDX-License-Identifier: Apache-2.0
#include "watchedfolder.h"

#include "hostlog.h"
#include "root.h"
#include "zoppath.h"

#include <QtCore/QFile>

#include <cerrno>

#include <sys/inotify.h>

namespace morvek {

namespace {

constexpr quint32 WatchedEvents = IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM | IN_MODIFY | IN_DELETE_SELF
    | IN_MOVE_SELF | IN_ONLYDIR | IN_EXCL_UNLINK;

QByteArray folderOf(const QByteArray &path)
{
    const int slash = path.lastIndexOf('/');
    return slash > 0 ? path.left(slash) : QByteArrayLiteral("/");
}

QByteArray nameOf(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

} // namespace

WatchedFolder::WatchedFolder(FileWatcher *watcher, const QByteArray &path)
    : m_watcher(watcher),
      m_path(path)
{
}

WatchedFolder::~WatchedFolder()
{
    awaitNothing();
    if (m_watch == -1)
        return;
    m_watcher->m_watches.remove(m_watch);
    inotify_rm_watch(m_watcher->m_inotify.get(), m_watch);
    m_watcher->watchRoot(); // it may have had the same watch
}

bool WatchedFolder::attach()
{
    // Twice, as the folder may come between the failure and the watch for its coming.
    for (int attempt = 0; attempt < 2 && m_watch == -1; ++attempt) {
        m_watch = inotify_add_watch(m_watcher->m_inotify.get(), m_path.constData(), WatchedEvents);
        if (m_watch == -1 && errno != ENOENT)
            return false;
        QString error;
        if (m_watch == -1 && !m_awaited)
            m_awaited = m_watcher->watch(folderOf(m_path), nameOf(m_path), this, &error);
        if (m_watch == -1 && !m_awaited)
            return false;
    }
    if (m_watch != -1) {
        m_watcher->m_watches.insert(m_watch, this);
        awaitNothing();
    }
    m_watcher->watchRoot();
    // Paths are watched, as inotify knows nothing else: files have to be those that they lead to.
    Root::instance()->lookAgain();
    return true;
}

bool WatchedFolder::isExchanged() const
{
    // The same folder has the same watch.
    return inotify_add_watch(m_watcher->m_inotify.get(), m_path.constData(), WatchedEvents) != m_watch;
}

void WatchedFolder::renew()
{
    m_watcher->m_watches.remove(m_watch);
    inotify_rm_watch(m_watcher->m_inotify.get(), m_watch);
    m_watch = -1;
    if (!attach()) {
        logWarning(QStringLiteral("\"%1\" cannot be watched at present: %2")
                       .arg(QFile::decodeName(m_path), systemError(errno)));
        m_watcher->retryLater(this);
    }
    tellAll();
}

void WatchedFolder::add(const QByteArray &name, FolderListener *listener)
{
    m_listeners[name].append(listener);
}

void WatchedFolder::remove(const QByteArray &name, FolderListener *listener)
{
    Listeners &listeners = m_listeners[name];
    listeners.removeOne(listener);
    if (listeners.isEmpty())
        m_listeners.remove(name);
}

void WatchedFolder::tell(const QByteArray &name, Event event) const
{
    // Copies, as a listener may come or go meanwhile, and this folder with the last one.
    const Listeners ofEntry = m_listeners.value(name);
    const Listeners ofAll = event == Modified ? Listeners() : m_listeners.value(QByteArray());
    for (const Listeners *listeners : {&ofEntry, &ofAll}) {
        for (const QPointer<FolderListener> &listener : *listeners) {
            if (listener)
                listener->entryChanged(name, event);
        }
    }
}

void WatchedFolder::tellOfNames(const QByteArray &name, Event event) const
{
    const Listeners ofAll = m_listeners.value(QByteArray());
    for (const QPointer<FolderListener> &listener : ofAll) {
        if (listener)
            listener->entryChanged(name, event);
    }
}

void WatchedFolder::tellAll() const
{
    const QMap<QByteArray, Listeners> all = m_listeners;
    for (const Listeners &listeners : all) {
        for (const QPointer<FolderListener> &listener : listeners) {
            if (listener)
                m_watcher->look(listener);
        }
    }
}

void WatchedFolder::entryChanged(const QByteArray &, Event event)
{
    if (event == Appeared || event == Replaced)
        folderChanged();
}

void WatchedFolder::folderChanged()
{
    if (m_watch != -1)
        return;
    if (!attach())
        m_watcher->retryLater(this);
    else if (m_watch != -1)
        tellAll();
}

void WatchedFolder::awaitNothing()
{
    if (m_awaited)
        m_watcher->unwatch(folderOf(m_path), nameOf(m_path), this);
    m_awaited = false;
}

} // namespace morvek
