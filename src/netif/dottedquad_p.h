// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_DOTTEDQUAD_P_H
#define MORVEK_DOTTEDQUAD_P_H

class QString;

namespace morvek {

/*!
 * Whether four numbers up to 255 with dots between them stand anywhere in \a text, each of at most three digits, and
 * neither a letter, a digit nor an underscore of ASCII before or behind them. A text with half of a surrogate pair
 * holds nothing.
 *
 * A regular expression would say the same, but takes a start-up's time to compile.
 */
bool holdsDottedQuad(const QString &text);

} // namespace morvek

#endif
