// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPPATH_H
#define MORVEK_ZOPPATH_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace morvek {

/*!
 * Where an object or a directory of objects stands in the file system: below the root, which the environment's
 * ZOP_ROOT names, else a folder of the user's runtime directory.
 *
 * The root is trusted only when it belongs to this user and nobody else can enter it; everything below it can
 * then have been put there by this user only.
 */
class ZopPath
{
public:
    static ZopPath object(const QString &path);
    static ZopPath directory(const QString &path);

    /*! False when the path is no such path, or the root is not to be trusted; error() says why. */
    bool isValid() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }

    /*! The folder of the object, or the directory itself. */
    const QByteArray &folder() const { return m_folder; }
    /*! The object's name in its folder; empty for a directory. */
    const QByteArray &name() const { return m_name; }
    QByteArray file() const { return m_folder + '/' + m_name; }
    /*! A file beside the object that is none itself, as no object's name begins with a dot. */
    QByteArray hidden(const char *suffix) const { return m_folder + "/." + m_name + suffix; }

    /*! Creates the folder and what leads to it, accessible to this user only. */
    bool makeFolder(QString *error) const;

    static bool isObjectName(const QByteArray &name);
    /*! The root that the environment names, trusted or not. */
    static QByteArray rootFolder();

private:
    QByteArray m_root;
    QByteArray m_folder;
    QByteArray m_name;
    QString m_error;
};

/*! The system's words for the error \a number. */
QString systemError(int number);

} // namespace morvek

#endif
