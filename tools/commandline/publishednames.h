// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PUBLISHEDNAMES_H
#define MORVEK_PUBLISHEDNAMES_H

#include <QtCore/QStringList>

namespace morvek {

/*! The names that the daemons have published last, for completion. They are only read: no daemon is asked. */
namespace PublishedNames {

QStringList interfaces();
/*! Of the networks in the last scan's results. */
QStringList networks();

} // namespace PublishedNames

} // namespace morvek

#endif
