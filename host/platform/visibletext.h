// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_VISIBLETEXT_H
#define MORVEK_VISIBLETEXT_H

#include <QtCore/QString>

namespace morvek {

/*!
 * \a text on one line, for people: what a terminal or a reader of lines would act upon, and what nobody would see, is
 * written as its code.
 */
QString visible(const QString &text);

} // namespace morvek

#endif
