// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LIBRARYLOG_H
#define MORVEK_LIBRARYLOG_H

#include <QtCore/QStringList>

namespace morvek {

/*!
 * While it lives, what the library logs is kept, not written; unless KREL_VERBOSITY is set: then it is the user's
 * wish to see it.
 */
class LibraryLog
{
public:
    LibraryLog();
    ~LibraryLog();

    /*! Complains of everything that was kept. */
    void tell() const;

private:
    Q_DISABLE_COPY(LibraryLog)
    QStringList m_lines;
};

} // namespace morvek

#endif
