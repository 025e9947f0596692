// SPDX-License-Identifier: Apache-2.0
#include "zopdirwatcher.h"

#include "controllink.h"
#include "filewatcher.h"
#include "zoppath.h"

#include <QtCore/QSet>

#include <algorithm>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>

namespace morvek {

class ZopDirWatcher::Private : public FolderListener
{
public:
    Private(ZopDirWatcher *dirWatcher, const QString &path);
    ~Private() override;

    void entryChanged(const QByteArray &name, Event event) override;
    void folderChanged() override;
    void listOnce();

    QString error;

private:
    bool isThere(const QByteArray &name) const;
    QList<QByteArray> list() const;
    bool add(const QByteArray &name);
    bool remove(const QByteArray &name);

    ZopDirWatcher *q;
    QString m_path;
    ZopPath m_folder;
    std::shared_ptr<FileWatcher> m_watcher;
    bool m_watching = false;
    bool m_hasListed = false;
    QSet<QByteArray> m_known; // the names that have been announced
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
    else if (!m_known.contains(name) && isThere(name))
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
    const QList<QByteArray> present = list();
    const QList<QByteArray> known = m_known.values();
    for (const QByteArray &name : known) {
        if (!std::binary_search(present.begin(), present.end(), name) && !remove(name))
            return;
    }
    for (const QByteArray &name : present) {
        if (!m_known.contains(name) && !add(name))
            return;
    }
}

/*! Whether \a name is an object: a state object, or a control object that a daemon serves. */
bool ZopDirWatcher::Private::isThere(const QByteArray &name) const
{
    struct stat status;
    if (lstat((m_folder.folder() + '/' + name).constData(), &status) != 0)
        return false;
    if (!S_ISSOCK(status.st_mode))
        return S_ISREG(status.st_mode);
    QString refusal;
    return ControlLink::connectTo(ZopPath::object(m_path + QString::fromUtf8(name)), &refusal).isOpen();
}

/*! The names of the objects that are there, in ascending order. */
QList<QByteArray> ZopDirWatcher::Private::list() const
{
    QList<QByteArray> names;
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(opendir(m_folder.folder().constData()), closedir);
    while (const dirent *entry = directory ? readdir(directory.get()) : nullptr) {
        const QByteArray name(entry->d_name);
        if (ZopPath::isObjectName(name) && isThere(name))
            names.append(name);
    }
    std::sort(names.begin(), names.end());
    return names;
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
