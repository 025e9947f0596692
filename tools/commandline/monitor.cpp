// SPDX-License-Identifier: Apache-2.0
#include "monitor.h"

namespace morvek {

std::vector<Option> monitorOptions()
{
    return withServiceOptions({{QStringLiteral("count"), QStringLiteral("N"),
                                QStringLiteral("stop after N changes, the present state not counted")}});
}

bool readCount(const CommandLine &line, int *count, QString *error)
{
    if (!line.has(QStringLiteral("count")))
        return true;
    const QString text = line.options.value(QStringLiteral("count"));
    *count = text.toInt();
    if (*count >= 1)
        return true;
    *error = QStringLiteral("--count \"%1\" is no number of changes: give 1 or more").arg(text);
    return false;
}

} // namespace morvek
