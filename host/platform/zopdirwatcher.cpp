// SPDX-License-Identifier: Apache-2.0
#include "zopdirwatcher.h"

#include "filewatcher.h"
#include "localsocket.h"
#include "zoppath.h"

#include <QtCore/QMap>

#include <cerrno>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace morvek {

class Q_DECL_HIDDEN ZopDirWatcher::Private : public FolderListener
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

    Presence look(const QByteArray &name, unsigned char type = DT_UNKNOWN) const;
    bool list(QMap<QByteArray, Presence> *found);
    bool addLater(Presence presence, bool hasDescriptors);
    void lookLater();
    bool add(const QByteArray &name);
    bool remove(const QByteArray &name);

    ZopDirWatcher *q;
    QString m_path;
    ZopPath m_folder;
    std::shared_ptr<FileWatcher> m_watcher;
    bool m_watching = false;
    bool m_hasListed = false;
    bool m_looksAgain = false;          // for names that could not be told from others; known ones need no second look
    QMap<QByteArray, Presence> m_known; // the names that have been announced
};

ZopDirWatcher::Private::Private(ZopDirWatcher *dirWatcher, const QString &path)
    : q(dirWatcher),
      m_path(path),
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
    if (!ZopPath::isObjectName(name))
        return;
    // A known name that is replaced is an object whose file has got its next generation.
    if (event == Vanished)
        remove(name);
    else if (!m_known.contains(name) && !addLater(look(name), FileWatcher::hasSpareDescriptors()))
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
    const QList<QByteArray> known = m_known.keys();
    for (const QByteArray &name : known) {
        if (found.value(name, Presence::Absent) == Presence::Absent && !remove(name))
            return;
    }
    // The system's own limit is looked at once: a look for each name would cost more than all else.
    const bool hadDescriptors = FileWatcher::hasSpareDescriptors();
    for (auto it = found.cbegin(); it != found.cend(); ++it) {
        if (!m_known.contains(it.key()) && !addLater(*it, hadDescriptors && FileWatcher::stillHasSpareDescriptors())
            && !add(it.key()))
            return;
    }
}

/*! Whether what was found is not to be announced, now or ever; when that may change, it is looked at again. */
bool ZopDirWatcher::Private::addLater(Presence presence, bool hasDescriptors)
{
    if (presence == Presence::Absent)
        return true;
    // Whoever hears of an object opens it and what belongs to it, and tries once.
    if (presence == Presence::Present && hasDescriptors)
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

/*! Whether \a name, of what \a type it is said to be, is an object: a state object, or a served control object. */
ZopDirWatcher::Private::Presence ZopDirWatcher::Private::look(const QByteArray &name, unsigned char type) const
{
    const FilePlace place = m_folder.placeOf(name);
    const auto missing = [] { return errno == ENOENT || errno == ENOTDIR ? Presence::Absent : Presence::Unknown; };
    struct stat status;
    if (type == DT_UNKNOWN && !place.status(&status))
        return missing();
    if (type == DT_UNKNOWN)
        type = IFTODT(status.st_mode);
    if (type == DT_REG)
        return place.isReadable() ? Presence::Present : missing();
    if (type != DT_SOCK)
        return Presence::Absent;
    QString refusal;
    const QString folder = m_path.endsWith(QLatin1Char('/')) ? m_path : m_path + QLatin1Char('/');
    if (LocalSocket::connectTo(ZopPath::object(folder + QString::fromUtf8(name)), name, &refusal).isOpen())
        return Presence::Present;
    return LocalSocket::isNobody(errno) ? Presence::Absent : Presence::Unknown;
}

/*! What is there, or may be; false when that cannot be told. */
bool ZopDirWatcher::Private::list(QMap<QByteArray, Presence> *found)
{
    const bool onlyNew = std::exchange(m_looksAgain, false);
    FileDescriptor folder = m_folder.place().open(O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(folder.isOpen() ? fdopendir(folder.get()) : nullptr, closedir);
    if (!directory)
        return errno == ENOENT || errno == ENOTDIR;
    folder.release();
    while (const dirent *entry = readdir(directory.get())) {
        const QByteArray name(entry->d_name);
        if (ZopPath::isObjectName(name))
            found->insert(name, onlyNew && m_known.contains(name) ? Presence::Present : look(name, entry->d_type));
    }
    return true;
}

/*! Announces \a name; false when this watcher is gone. */
bool ZopDirWatcher::Private::add(const QByteArray &name)
{
    const QPointer<Private> guard(this);
    m_known.insert(name, Presence::Present);
    emit q->objectAdded(QString::fromUtf8(name.constData(), name.size()));
    return guard;
}

bool ZopDirWatcher::Private::remove(const QByteArray &name)
{
    const QPointer<Private> guard(this);
    if (m_known.remove(name) != 0)
        emit q->objectRemoved(QString::fromUtf8(name.constData(), name.size()));
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
    if (enabled && d->error.isEmpty())
        d->folderChanged();
}

} // namespace morvek
