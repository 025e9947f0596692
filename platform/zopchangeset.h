// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPCHANGESET_H
#define MORVEK_ZOPCHANGESET_H

#include "zopvariant.h"

#include <QtCore/QMap>
#include <QtCore/QSet>

namespace morvek {

/*! One update of an object: it is applied whole or not at all. */
struct ZopChangeset
{
    QMap<QString, ZopVariant> assignments; //!< attributes set, by name
    QSet<QString> removals;                //!< names of attributes deleted
};

} // namespace morvek

Q_DECLARE_METATYPE(morvek::ZopChangeset)

#endif
