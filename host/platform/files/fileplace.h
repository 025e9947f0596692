// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_FILEPLACE_H
#define MORVEK_FILEPLACE_H

#include "filedescriptor.h"

#include <QtCore/QByteArray>

#include <memory>

struct stat;

namespace morvek {

class Root;

/*! A place for a file or folder below the root, which is found from the root that is held. What fails sets errno. */
class FilePlace
{
public:
    FilePlace() = default;
    FilePlace(const std::shared_ptr<Root> &root, const QByteArray &name);

    /*! For words, and for those system calls that know no other way. */
    QByteArray path() const;
    /*! \a mode is that of a file which is made. */
    FileDescriptor open(int flags, mode_t mode = 0) const;
    /*! Of the very file, or of what it links to. */
    bool status(struct stat *status) const;
    bool statusOfTarget(struct stat *status) const;
    bool isReadable() const;
    bool makeFolder() const;
    bool remove() const;
    /*! As clearPlace(). */
    bool clear() const;
    bool link(const FilePlace &other) const;
    bool rename(const FilePlace &other) const;

private:
    template<typename Call>
    int attempt(const Call &call) const;

    std::shared_ptr<Root> m_root;
    QByteArray m_name; // from the root
};

/*!
 * Makes the place of \a file, which stands below \a folder, free for one: what is there goes, except that a folder
 * which is not empty is put aside under a hidden name of its own. False with errno.
 */
bool clearPlace(const QByteArray &file, int folder = AT_FDCWD);

/*! Whether two looks have found the same file. */
bool isSameFile(const struct stat &one, const struct stat &other);

} // namespace morvek

#endif
