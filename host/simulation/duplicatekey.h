// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_DUPLICATEKEY_H
#define MORVEK_HOSTD_DUPLICATEKEY_H

#include <QtCore/QString>

namespace morvek {

/*! A key that an object has twice, however it is spelt. A parsed document shows only one of them. */
struct DuplicateKey
{
    int offset = -1; //!< where the second one begins, in bytes; -1: there is none
    QString key;

    /*! The first one in \a json, which may be anything. */
    static DuplicateKey find(const QByteArray &json);
};

} // namespace morvek

#endif
