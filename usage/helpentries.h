// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_USAGE_HELPENTRIES_H
#define MORVEK_USAGE_HELPENTRIES_H

#include <QtCore/QString>

#include <utility>
#include <vector>

namespace morvek {

/*! What is explained, and what it means. */
using HelpEntries = std::vector<std::pair<QString, QString>>;

/*! The lines of a help in two columns. An entry that is too long for its column has its text on the next line. */
QString helpLines(const HelpEntries &entries);

} // namespace morvek

#endif
