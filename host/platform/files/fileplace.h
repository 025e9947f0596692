// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_FILEPLACE_H
#define MORVEK_FILEPLACE_H

#include <QtCore/QByteArray>

struct stat;

namespace morvek {

/*!
 * Makes the place of \a file free for one: what is there goes, except that a folder which is not empty is put aside
 * under a hidden name of its own. False with errno.
 */
bool clearPlace(const QByteArray &file);

/*! Whether two looks have found the same file. */
bool isSameFile(const struct stat &one, const struct stat &other);

} // namespace morvek

#endif
