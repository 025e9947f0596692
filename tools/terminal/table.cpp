// SPDX-License-Identifier: Apache-2.0
#include "table.h"

#include "output.h"

#include <algorithm>

#include <unistd.h>

namespace morvek {

namespace {

const QString Gap = QStringLiteral("  ");

Table written(Table table)
{
    for (QVector<Cell> &row : table) {
        for (Cell &cell : row)
            cell.text = cell.text.isEmpty() ? QStringLiteral("-") : printable(cell.text);
    }
    return table;
}

QVector<int> widthsOf(const Table &table)
{
    QVector<int> widths;
    for (const QVector<Cell> &row : table) {
        widths.resize(std::max(widths.size(), row.size()));
        for (int column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], displayWidth(row[column].text));
    }
    return widths;
}

/*! What the line takes; columns that are left out have the width 0. */
int lineWidth(const QVector<int> &widths)
{
    int width = -Gap.size();
    for (const int one : widths)
        width += one == 0 ? 0 : one + Gap.size();
    return width;
}

void makeFit(QVector<int> *widths, const QVector<int> &leastFirst, int room)
{
    for (const int column : leastFirst) {
        if (lineWidth(*widths) > room)
            (*widths)[column] = 0;
    }
    while (lineWidth(*widths) > room) {
        // Of equal ones the last: what a line is about stands first.
        const auto widest = std::max_element(widths->rbegin(), widths->rend());
        if (*widest == 1)
            return;
        --*widest;
    }
}

QString shortened(QString text, int width)
{
    if (displayWidth(text) <= width)
        return text;
    while (displayWidth(text) >= width) {
        const bool isPair = text.size() > 1 && text.at(text.size() - 2).isHighSurrogate();
        text.chop(isPair ? 2 : 1);
    }
    return text + QChar(0x2026); // an ellipsis
}

QString lineOf(const QVector<Cell> &row, const QVector<int> &widths)
{
    QString line;
    int blanks = 0; // before the next cell
    for (int column = 0; column < row.size(); ++column) {
        if (widths[column] == 0)
            continue;
        const QString text = shortened(row[column].text, widths[column]);
        line += QString(blanks, QLatin1Char(' ')) + toned(text, row[column].tone, STDOUT_FILENO);
        blanks = widths[column] - displayWidth(text) + Gap.size();
    }
    return line;
}

} // namespace

void writeTable(const Table &table, const QVector<int> &leastFirst)
{
    const Table cells = written(table);
    QVector<int> widths = widthsOf(cells);
    const int room = terminalWidth();
    if (room > 0)
        makeFit(&widths, leastFirst, room);
    for (const QVector<Cell> &row : cells)
        writePrintable(lineOf(row, widths));
}

} // namespace morvek
