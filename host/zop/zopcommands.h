// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPCOMMANDS_H
#define MORVEK_ZOPCOMMANDS_H

#include "candidates.h"
#include "helpentries.h"

/*! The program's exit codes. */
enum ExitCode { Done = 0, Failed = 1, WrongUsage = 2 };

morvek::HelpEntries zopCommandEntries();

/*! What the last one of \a words, the arguments typed so far, may become. */
morvek::Candidates zopCandidates(const QStringList &words);

/*! Runs the command that \a words begin with; WrongUsage, and said why, when they make no sense. */
ExitCode runZopCommand(QStringList words);

#endif
