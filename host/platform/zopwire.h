// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPWIRE_H
#define MORVEK_ZOPWIRE_H

#include "zopchangeset.h"

namespace morvek {

/*! The largest update that is written or believed, in bytes. */
constexpr int LargestUpdate = 16 * 1024 * 1024;

/*! An update as bytes, in files and on sockets alike. */
QByteArray encodeChangeset(const ZopChangeset &changes);
/*! False when \a bytes are no such thing; \a changes is then of no use. */
bool decodeChangeset(const QByteArray &bytes, ZopChangeset *changes);

} // namespace morvek

#endif
