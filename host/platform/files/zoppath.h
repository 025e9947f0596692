// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPPATH_H
#define MORVEK_ZOPPATH_H

#include "fileplace.h"

#include <QtCore/QString>

namespace morvek {

/*!
 * Where an object or a directory of objects stands in the file system: below the root, which the environment's
 * ZOP_ROOT names, else a folder of the user's runtime directory.
 *
 * The root is trusted only when it belongs to this user and nobody else can enter it; everything below it can
 * then have been put there by this user only. Its path is for words and for watches: files are opened at places.
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
    QByteArray file() const { return m_place.path(); }

    /*! The place of the object, or of the directory itself. */
    const FilePlace &place() const { return m_place; }
    FilePlace folderPlace() const;
    /*! That of what has the name \a name in the directory. */
    FilePlace placeOf(const QByteArray &name) const;
    /*! A place beside the object that is none itself, as no object's name begins with a dot. */
    FilePlace hidden(const char *suffix) const;

    /*! Has what comes next happen in the root that its path names now, whatever has become of the one that is held. */
    void lookAgain() const;
    /*! Creates the folder and what leads to it, accessible to this user only. */
    bool makeFolder(QString *error) const;

    static bool isObjectName(const QByteArray &name);

private:
    QByteArray fromRoot() const;

    std::shared_ptr<Root> m_root;
    QByteArray m_folder;
    QByteArray m_name;
    FilePlace m_place;
    QString m_error;
};

/*! The system's words for the error \a number. */
QString systemError(int number);

} // namespace morvek

#endif
