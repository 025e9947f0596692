// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PASSKEY_H
#define MORVEK_PASSKEY_H

#include <QtCore/QString>

namespace morvek {

/*! Whether any network can have \a passkey; what else there is, daemons refuse. */
bool isPossiblePasskey(const QString &passkey);
/*! "8 to 63 ..." */
QString possiblePasskeys();
/*! Reads the one line of \a file, "-" for standard input. False, with a sentence in \a error, when that fails. */
bool readPasskeyFile(const QString &file, QString *passkey, QString *error);
/*! Reads the line that was typed at the terminal on standard input; empty when it is none. */
QString readTypedPasskey();

} // namespace morvek

#endif
