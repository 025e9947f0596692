// SPDX-License-Identifier: Apache-2.0
#include "hotspotstore.h"

#include "filedescriptor.h"
#include "fileplace.h"
#include "hotspotprofile.h"
#include "zoppath.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>

namespace morvek {

namespace {

// No object's name begins with a dot.
const char FileName[] = "/.morvek-hostd-hotspot.json";
const char FreshSuffix[] = ".new";

constexpr mode_t OwnerOnly = S_IRUSR | S_IWUSR;
constexpr qint64 LargestFile = 64 * 1024;

/*! The content of a file, but not of what a link, a pipe or a device stands for. */
QByteArray readFile(const QByteArray &name, QString *error)
{
    FileDescriptor descriptor(open(name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        if (errno != ENOENT)
            *error = systemError(errno);
        return {};
    }
    struct stat status;
    if (fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > LargestFile) {
        *error = QStringLiteral("is not a file of at most %1 KiB").arg(LargestFile / 1024);
        return {};
    }
    if (fchmod(descriptor.get(), OwnerOnly) != 0) { // whatever somebody has made of it
        *error = systemError(errno);
        return {};
    }
    QFile file;
    file.open(descriptor.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        *error = file.errorString();
    else if (content.isEmpty())
        *error = QStringLiteral("is empty");
    return content;
}

/*! The number of the system's error, or 0. */
int writeFile(const QByteArray &name, const QByteArray &content)
{
    clearPlace(name); // of what a run that died in between has left
    const FileDescriptor descriptor(open(name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, OwnerOnly));
    if (!descriptor.isOpen() || fchmod(descriptor.get(), OwnerOnly) != 0) // whatever the umask is
        return errno;
    const ssize_t written = write(descriptor.get(), content.constData(), size_t(content.size()));
    if (written >= 0 && written < content.size())
        return ENOSPC; // which would be the error of the next one
    return written == -1 || fsync(descriptor.get()) != 0 ? errno : 0;
}

} // namespace

void HotspotStore::setRoot(const QString &root)
{
    m_file = QFile::encodeName(root) + FileName;
}

QString HotspotStore::file() const
{
    return QFile::decodeName(m_file);
}

QJsonObject HotspotStore::load(QString *error) const
{
    error->clear();
    const QByteArray content = readFile(m_file, error);
    QJsonObject profile;
    if (error->isEmpty() && !content.isEmpty()) {
        QJsonParseError parseError;
        profile = QJsonDocument::fromJson(content, &parseError).object();
        *error = parseError.error != QJsonParseError::NoError ? parseError.errorString()
                                                              : HotspotProfile::check(profile).text;
    }
    if (error->isEmpty())
        return profile;
    error->prepend(QStringLiteral("the stored profile \"%1\" is not used: ").arg(file()));
    return {};
}

bool HotspotStore::save(const QJsonObject &profile, QString *error) const
{
    // A link in its place is replaced, not followed.
    const QByteArray fresh = m_file + FreshSuffix;
    int problem = writeFile(fresh, QJsonDocument(profile).toJson());
    if (problem == 0 && rename(fresh.constData(), m_file.constData()) != 0)
        problem = errno;
    if (problem == 0)
        return true;
    unlink(fresh.constData());
    *error = systemError(problem);
    return false;
}

bool HotspotStore::forget(QString *error) const
{
    if (clearPlace(m_file) && clearPlace(m_file + FreshSuffix))
        return true;
    *error = QStringLiteral("cannot remove the stored profile \"%1\": %2").arg(file(), systemError(errno));
    return false;
}

} // namespace morvek
