// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_PRIVATEFILE_H
#define MORVEK_HOSTD_PRIVATEFILE_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace morvek {

/*! A small file that nobody but this user can read, once it was read or written. What fails says why in \a error. */
class PrivateFile
{
public:
    PrivateFile() = default;
    explicit PrivateFile(const QByteArray &path);

    QString path() const;

    /*! What it holds; nothing when there is none. A link, a pipe or a device in its place is none that can be read. */
    QByteArray read(QString *error) const;
    /*! Has it hold \a content whole or, when that fails, leaves what it holds. */
    bool write(const QByteArray &content, QString *error) const;
    /*! Removes it, and what a run that died has left of a newer one. */
    bool remove(QString *error) const;

private:
    QByteArray m_path;
};

} // namespace morvek

#endif
