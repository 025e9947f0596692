// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PASSKEY_H
#define MORVEK_PASSKEY_H

#include <QtCore/QString>

namespace morvek {

/*! Reads the one line of \a file, "-" for standard input. False, with a sentence in \a error, when that fails. */
bool readPasskeyFile(const QString &file, QString *passkey, QString *error);
/*! Reads the line that was typed at the terminal on standard input; empty when it is none. */
QString readTypedPasskey();

} // namespace morvek

#endif
