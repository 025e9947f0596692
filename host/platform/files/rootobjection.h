// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ROOTOBJECTION_H
#define MORVEK_ROOTOBJECTION_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

struct stat;

namespace morvek {

/*! Why a root must not be used, and what mends that. Both are empty when it may be used, or does not exist yet. */
struct RootObjection
{
    QString reason;
    QString mend;

    /*! Judges \a root, and leaves in \a status what it is; that stays as it was when it does not exist. */
    static RootObjection to(const QByteArray &root, struct stat *status);
};

} // namespace morvek

#endif
