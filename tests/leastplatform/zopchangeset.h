// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ZOPCHANGESET_H
#define LEAST_ZOPCHANGESET_H

#include "zopvariant.h"

#include <QtCore/QMap>
#include <QtCore/QSet>

namespace morvek {

struct ZopChangeset
{
    QMap<QString, ZopVariant> assignments;
    QSet<QString> removals;
};

} // namespace morvek

#endif
