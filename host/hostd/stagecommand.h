// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STAGECOMMAND_H
#define MORVEK_HOSTD_STAGECOMMAND_H

#include "hostdexitcode.h"

#include <QtCore/QStringList>

namespace morvek {

struct HostdOptions;

/*! What the program does instead of running: it asks the one that runs, by "act", "look", "pass" and "wait". */
namespace StageCommand {

QStringList verbs();
/*! What the last one of \a words may become. */
QStringList candidates(const QStringList &words);
/*! Does what the words of \a options say, and prints what comes of it; \a error says why there is no success. */
HostdExitCode run(const HostdOptions &options, QString *error);

} // namespace StageCommand

} // namespace morvek

#endif
