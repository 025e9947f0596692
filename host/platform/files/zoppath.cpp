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

} // namespace

ZopPath ZopPath::object(const QString &path)
{
    ZopPath result = directory(path);
    if (!result.isValid())
        return result;
    if (path.endsWith(QLatin1Char('/'))) {
        result.m_error = QStringLiteral("\"%1\" is a directory's path").arg(path);
        return result;
    }
    const int slash = result.m_folder.lastIndexOf('/');
    result.m_name = result.m_folder.mid(slash + 1);
    result.m_folder.truncate(slash);
    return result;
}

ZopPath ZopPath::directory(const QString &path)
{
    ZopPath result;
    QByteArray bytes = path.toUtf8();
    if (bytes.endsWith('/'))
        bytes.chop(1);
    const QList<QByteArray> names = bytes.split('/');
    const bool plain = names.size() > 1 && names.first().isEmpty() && bytes.size() <= LongestPath
        && std::all_of(names.begin() + 1, names.end(), isObjectName);
    if (!plain) {
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
    const auto isForbidden = [](char c) { return c == '/' || c == 0x7f || static_cast<unsigned char>(c) < ' '; };
    return !name.isEmpty() && name.size() <= LongestName && !name.startsWith('.')
        && std::none_of(name.begin(), name.end(), isForbidden) && QString::fromUtf8(name).toUtf8() == name;
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

} // namespace morvek
