// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPLOOK_P_H
#define MORVEK_ZOPLOOK_P_H

#include <zopobject.h>

namespace morvek {

// How the kit looks at objects; it writes to none.

constexpr auto ToRead = ZopObject::PublicationMode(1);
/*! A control object can only be opened like this, and only while its daemon lives. */
constexpr auto ToAsk = ZopObject::PublicationMode(2);

inline bool canBeOpened(const QString &path, ZopObject::PublicationMode mode)
{
    return ZopObject(path, mode, false, nullptr).isValid();
}

} // namespace morvek

#endif
