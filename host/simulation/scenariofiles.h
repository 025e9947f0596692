// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SCENARIOFILES_H
#define MORVEK_HOSTD_SCENARIOFILES_H

#include "scenario.h"

namespace morvek {

/*! Where scenarios come from: a few are part of the program, every other one is a file. */
namespace ScenarioFiles {

/*! The names of the scenarios of the program, in order. */
QStringList shipped();

/*!
 * Loads a shipped scenario by its name, or a file. What contains a slash or ends in ".json" is a file.
 * False when that fails; \a error then begins with \a nameOrFile.
 */
bool load(const QString &nameOrFile, Scenario *scenario, QString *error);

} // namespace ScenarioFiles

} // namespace morvek

#endif
