// SPDX-License-Identifier: Apache-2.0
#include "zoppath.h"

#include "root.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace morvek {

namespace {

// Leaves room for the dot and the suffix of a hidden file within the file system's 255 bytes.
constexpr int LongestName = 200;
constexpr int LongestPath = 2000;

bool isName(const char *name, int size)
{
    const char *end = name + size;
    const auto isForbidden = [](char c) { return c == '/' || c == 0x7f || static_cast<unsigned char>(c) < ' '; };
    if (size == 0 || size > LongestName || *name == '.' || std::any_of(name, end, isForbidden))
        return false;
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return std::all_of(name, end, isAscii) || QString::fromUtf8(name, size).toUtf8() == QByteArray(name, size);
}

/*! Whether a name follows each slash of \a path. */
bool areNames(const QByteArray &path)
{
    for (int slash = 0; slash != -1;) {
        const int next = path.indexOf('/', slash + 1);
        if (!isName(path.constData() + slash + 1, (next == -1 ? path.size() : next) - slash - 1))
            return false;
        slash = next;
    }
    return true;
}

} // namespace

ZopPath ZopPath::object(const QString &path)
{
    ZopPath result = directory(path);
    if (!result.isValid())
        return result;
    if (path.back() == QLatin1Char('/')) {
        result.m_error = QStringLiteral("\"%1\" is a directory's path").arg(path);
        return result;
    }
    const int slash = result.m_folder.lastIndexOf('/');
    result.m_name = result.m_folder.mid(slash + 1);
    result.m_folder = result.m_folder.left(slash);
    return result;
}

ZopPath ZopPath::directory(const QString &path)
{
    ZopPath result;
    QByteArray bytes = path.toUtf8();
    if (bytes.endsWith('/'))
        bytes.chop(1);
    if (!bytes.startsWith('/') || bytes.size() > LongestPath || !areNames(bytes)) {
        result.m_error = QStringLiteral("\"%1\" is not a path of names").arg(path);
        return result;
    }
    result.m_root = Root::instance();
    result.m_error = result.m_root->distrust();
    result.m_folder = result.m_root->path() + bytes;
    result.m_place = FilePlace(result.m_root, bytes.mid(1));
    return result;
}

FilePlace ZopPath::folderPlace() const
{
    const QByteArray folder = fromRoot();
    return FilePlace(m_root, folder.isEmpty() ? QByteArrayLiteral(".") : folder);
}

FilePlace ZopPath::placeOf(const QByteArray &name) const
{
    const QByteArray folder = fromRoot();
    return FilePlace(m_root, folder.isEmpty() ? name : folder + '/' + name);
}

FilePlace ZopPath::hidden(const char *suffix) const
{
    return placeOf('.' + m_name + suffix);
}

void ZopPath::lookAgain() const
{
    m_root->lookAgain();
}

bool ZopPath::makeFolder(QString *error) const
{
    if (!m_root->make(error))
        return false;
    const QByteArray folder = fromRoot();
    for (int end = 0; end < folder.size();) {
        end = folder.indexOf('/', end + 1);
        end = end == -1 ? folder.size() : end;
        const FilePlace place(m_root, folder.left(end));
        if (!place.makeFolder() && errno != EEXIST) {
            *error =
                QStringLiteral("cannot create \"%1\": %2").arg(QFile::decodeName(place.path()), systemError(errno));
            return false;
        }
    }
    return true;
}

/*! The folder without the root; empty when it is the root. */
QByteArray ZopPath::fromRoot() const
{
    return m_folder.mid(m_root->path().size() + 1);
}

bool ZopPath::isObjectName(const QByteArray &name)
{
    return isName(name.constData(), name.size());
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

} // namespace morvek
