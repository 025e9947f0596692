// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPWIRE_H
#define MORVEK_ZOPWIRE_H

#include "zopchangeset.h"

namespace morvek {

/*! The largest update that is written or believed, in bytes. */
constexpr int LargestUpdate = 16 * 1024 * 1024;

/*! An update as bytes, in files and on sockets alike. */
QByteArray encodeChangeset(const ZopChangeset &changes);
/*! The same at the end of \a bytes. */
void appendChangeset(const ZopChangeset &changes, QByteArray *bytes);
/*! How many of the bytes an assignment takes. */
qint64 encodedSize(const QString &name, const ZopVariant &value);
/*! False when the \a size \a bytes are no such thing; \a changes is then of no use. */
bool decodeChangeset(const char *bytes, int size, ZopChangeset *changes);

/*! Turns \a values into what they are after an update. */
void apply(const ZopChangeset &changes, QMap<QString, ZopVariant> *values);

} // namespace morvek

#endif
