// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ATTRIBUTES_H
#define MORVEK_HOSTD_ATTRIBUTES_H

#include "zopchangeset.h"

#include <QtCore/QStringList>

namespace morvek {

/*! The attributes of a state object, by name. */
using Attributes = QMap<QString, ZopVariant>;

/*! The update that turns \a from into \a to; empty when they are the same. */
ZopChangeset difference(const Attributes &from, const Attributes &to);
bool isEmpty(const ZopChangeset &changes);

/*! "true" or "false". */
ZopVariant truthValue(bool value);
/*! "yes" or "no". */
ZopVariant yesOrNo(bool value);
/*! A JSON array of texts. */
ZopVariant textList(const QStringList &texts);

} // namespace morvek

#endif
