// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPCOMMANDS_H
#define MORVEK_ZOPCOMMANDS_H

#include <QtCore/QStringList>

/*! The program's exit codes. */
enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

/*! Runs the command that \a words begin with; WrongUsage when there is no such command or it misses something. */
ExitCode runZopCommand(const QStringList &words);

#endif
