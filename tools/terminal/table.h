// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TABLE_H
#define MORVEK_TABLE_H

#include "terminal.h"

#include <QtCore/QVector>

namespace morvek {

struct Cell
{
    Cell(const QString &cellText = QString(), Tone cellTone = Tone::Plain)
        : text(cellText),
          tone(cellTone)
    {
    }

    QString text;
    Tone tone;
};

using Table = QVector<QVector<Cell>>;

/*!
 * Writes \a table in aligned columns, empty cells as "-". On a terminal that is too narrow, the columns \a leastFirst
 * are left out, one after the other, until the others fit; when they do not, the widest ones are shortened.
 */
void writeTable(const Table &table, const QVector<int> &leastFirst = {});

} // namespace morvek

#endif
