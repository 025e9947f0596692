// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TERMINAL_H
#define MORVEK_TERMINAL_H

#include <QtCore/QString>

namespace morvek {

/*! How something is to be taken, for terminals that have colours. */
enum class Tone { Plain, Good, Middling, Bad };

/*! The columns of the terminal that standard output is; 0 when it is none, or does not tell. */
int terminalWidth();

/*! \a text in the colour of \a tone, when \a stream, a file descriptor, is a terminal with colours that are wanted. */
QString toned(const QString &text, Tone tone, int stream);

} // namespace morvek

#endif
