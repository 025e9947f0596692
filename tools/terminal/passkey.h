// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PASSKEY_H
#define MORVEK_PASSKEY_H

#include "command.h"

namespace morvek {

/*! --KIND-file, the option that names the file of a passkey; \a kind is what the users of that passkey call it. */
Option passkeyFileOption(const QString &kind);
/*!
 * Reads the passkey that passkeyFileOption() gives, if it is to be read before anything else: unlike one that is typed.
 * False, with a sentence in \a error, when no network can have it, or it cannot be read.
 */
bool readGivenPasskey(const CommandLine &line, const QString &kind, QString *passkey, QString *error);
/*! Reads the line that was typed at the terminal on standard input; empty when it is none. */
QString readTypedPasskey();
/*! Why no network can have \a passkey, which was typed; null when one can. */
QString faultOfTyped(const QString &kind, const QString &passkey);

} // namespace morvek

#endif
