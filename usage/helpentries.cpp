// SPDX-License-Identifier: Apache-2.0
#include "helpentries.h"

namespace morvek {

QString helpLines(const HelpEntries &entries)
{
    const QString margin(2, QLatin1Char(' ')); // before each column, which tells them apart
    const int width = 20;
    QString lines;
    for (const auto &[left, right] : entries) {
        lines += margin + left.leftJustified(width);
        if (left.size() > width)
            lines += QLatin1Char('\n') + margin + QString(width, QLatin1Char(' '));
        lines += margin + right + QLatin1Char('\n');
    }
    return lines;
}

} // namespace morvek
