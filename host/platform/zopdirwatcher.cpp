// SPDX-License-Identifier: Apache-2.0
#include "zopdirwatcher.h"

#include "controllink.h"
#include "filewatcher.h"
#include "zoppath.h"

#include <QtCore/QMap>
#include <QtCore/QSet>

#include <cerrno>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace morvek {

class ZopDirWatcher::Private : public FolderListener
{
public:
    Private(ZopDirWatcher *dirWatcher, const QString &path);
    ~Private() override;

    Kind kind() const override { return OfNames; }
    void entryChanged(const QByteArray &name, Event event) override;
    void folderChanged() override;
    void listOnce();

    QString error;

private:
    enum class Presence { Absent, Present, Unknown };

    Presence look(const QByteArray &name) const;
    Presence lookAtFile(const QByteArray &file) const;
    bool list(QMap<QByteArray, Presence> *found);
    bool addLater(Presence presence);
    void lookLater();
    bool add(const QByteArray &name);
    bool remove(const QByteArray &name);

    ZopDirWatcher *q;
    QString m_path;
    ZopPath m_folder;
    std::shared_ptr<FileWatcher> m_watcher;
    bool m_watching = false;
    bool m_hasListed = false;
    bool m_looksAgain = false; // for names that could not be told from others; known ones need no second look
    QSet<QByteArray> m_known;  // the names that have been announced
};

ZopDirWatcher::Private::Private(ZopDirWatcher *dirWatcher, const QString &path)
    : q(dirWatcher),
      m_path(path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/')),
      m_folder(ZopPath::directory(path)),
      m_watcher(FileWatcher::instance())
{
    error = m_folder.error();
    if (!m_folder.isValid())
        return;
    m_watching = m_watcher->watch(m_folder.folder(), QByteArray(), this, &error);
    if (m_watching)
        QMetaObject::invokeMethod(this, &Private::listOnce, Qt::QueuedConnection);
}

ZopDirWatcher::Private::~Private()
{
    if (m_watching)
        m_watcher->unwatch(m_folder.folder(), QByteArray(), this);
}

void ZopDirWatcher::Private::entryChanged(const QByteArray &name, Event event)
{
    if (event == Modified || !ZopPath::isObjectName(name))
        return;
    // A known name that is replaced is an object whose file has got its next generation.
    if (event == Vanished)
        remove(name);
    else if (!m_known.contains(name) && !addLater(look(name)))
        add(name);
}

/*! Announces what is there already, unless that has been done. */
void ZopDirWatcher::Private::listOnce()
{
    if (!m_hasListed)
        folderChanged();
}

void ZopDirWatcher::Private::folderChanged()
{
    m_hasListed = true;
    QMap<QByteArray, Presence> found;
    if (!list(&found)) {
        lookLater();
        return;
    }
    const QList<QByteArray> known = m_known.values();
    for (const QByteArray &name : known) {
        if (found.value(name, Presence::Absent) == Presence::Absent && !remove(name))
            return;
    }
    for (auto it = found.cbegin(); it != found.cend(); ++it) {
        if (!m_known.contains(it.key()) && !addLater(*it) && !add(it.key()))
            return;
    }
}

/*! Whether what was found is not to be announced, now or ever; when that may change, it is looked at again. */
bool ZopDirWatcher::Private::addLater(Presence presence)
{
    if (presence == Presence::Absent)
        return true;
    // Whoever hears of an object opens it and what belongs to it, and tries once.
    if (presence == Presence::Present && FileWatcher::hasSpareDescriptors())
        return false;
    lookLater();
    return true;
}

void ZopDirWatcher::Private::lookLater()
{
    m_looksAgain = true;
    if (FileWatcher::hasSpareDescriptors())
        m_watcher->retryLater(this);
    else
        m_watcher->holdUntilRetry(this);
}

/*! Whether \a name is an object: a state object, or a control object that a daemon serves. */
ZopDirWatcher::Private::Presence ZopDirWatcher::Private::look(const QByteArray &name) const
{
    const QByteArray file = m_folder.folder() + '/' + name;
    struct stat status;
    if (lstat(file.constData(), &status) != 0)
        return errno == ENOENT || errno == ENOTDIR ? Presence::Absent : Presence::Unknown;
    if (!S_ISSOCK(status.st_mode))
        return S_ISREG(status.st_mode) ? lookAtFile(file) : Presence::Absent;
    QString refusal;
    if (ControlLink::connectTo(ZopPath::object(m_path + QString::fromUtf8(name)), &refusal).isOpen())
        return Presence::Present;
    return ControlLink::isNobody(errno) ? Presence::Absent : Presence::Unknown;
}

ZopDirWatcher::Private::Presence ZopDirWatcher::Private::lookAtFile(const QByteArray &file) const
{
    const FileDescriptor opened(open(file.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (opened.isOpen())
        return Presence::Present;
    return errno == ENOENT ? Presence::Absent : Presence::Unknown;
}

/*! What is there, or may be; false when that cannot be told. */
bool ZopDirWatcher::Private::list(QMap<QByteArray, Presence> *found)
{
    const bool onlyNew = std::exchange(m_looksAgain, false);
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(opendir(m_folder.folder().constData()), closedir);
    if (!directory)
        return errno == ENOENT || errno == ENOTDIR;
    while (const dirent *entry = readdir(directory.get())) {
        const QByteArray name(entry->d_name);
        if (ZopPath::isObjectName(name))
            found->insert(name, onlyNew && m_known.contains(name) ? Presence::Present : look(name));
    }
    return true;
}

/*! Announces \a name; false when this watcher is gone. */
bool ZopDirWatcher::Private::add(const QByteArray &name)
{
    const QPointer<Private> guard(this);
    m_known.insert(name);
    emit q->objectAdded(QString::fromUtf8(name));
    return guard;
}

bool ZopDirWatcher::Private::remove(const QByteArray &name)
{
    const QPointer<Private> guard(this);
    if (m_known.remove(name))
        emit q->objectRemoved(QString::fromUtf8(name));
    return guard;
}

ZopDirWatcher::ZopDirWatcher(const QString &path, QObject *parent)
    : QObject(parent),
      d(new Private(this, path))
{
}

ZopDirWatcher::~ZopDirWatcher() = default;

bool ZopDirWatcher::isValid() const
{
    return d->error.isEmpty();
}

QString ZopDirWatcher::errorString() const
{
    return d->error;
}

void ZopDirWatcher::setNameCacheEnabled(bool enabled)
{
    if (enabled && isValid())
        d->folderChanged();
}

} // namespace morvek
