// SPDX-License-Identifier: Apache-2.0
#include "updatecheck.h"

#include <QtCore/QStringList>

#include <cstdio>

using namespace morvek;

namespace {

QString fill(int writer, int number, int size)
{
    return QString(size, QLatin1Char(char('a' + (writer + number) % 26)));
}

int numberOf(const ZopChangeset &changes, const char *name)
{
    return changes.assignments.value(QLatin1String(name)).toInt();
}

} // namespace

Tally::Tally(const QString &file)
    : m_file(file)
{
    const qint64 size = qint64(sizeof(Entry)) * Writers * Objects;
    if (!m_file.open(QIODevice::ReadWrite) || !m_file.resize(size))
        qFatal("cannot keep a tally in %s", qPrintable(file));
    m_entries = reinterpret_cast<Entry *>(m_file.map(0, size));
}

UpdateCheck::UpdateCheck(const QString &path)
    : m_object(path, ZopObject::Subscribe, false)
{
    connect(&m_object, &ZopObject::attributesChanged, this, &UpdateCheck::judge);
}

ZopChangeset UpdateCheck::make(int writer, int number, int size)
{
    ZopChangeset changes;
    changes.assignments = {{QStringLiteral("w"), ZopVariant(writer)},
                           {QStringLiteral("n"), ZopVariant(number)},
                           {QStringLiteral("first"), ZopVariant(fill(writer, number, size))},
                           {QStringLiteral("second"), ZopVariant(fill(writer, number, size))}};
    return changes;
}

void UpdateCheck::judge(const ZopChangeset &changes)
{
    if (changes.assignments.contains(QStringLiteral("end"))) {
        ++m_ends;
        return;
    }
    ++m_count;
    const int writer = numberOf(changes, "w");
    const int number = numberOf(changes, "n");
    const QString first = changes.assignments.value(QStringLiteral("first")).toString();
    if (changes.assignments.size() != 4 || first != changes.assignments.value(QStringLiteral("second")).toString()
        || first != fill(writer, number, first.size()))
        fault(QStringLiteral("update %1 of writer %2 is not whole").arg(number).arg(writer));
    if (number != m_last.value(writer) + 1)
        fault(
            QStringLiteral("update %1 of writer %2 follows its %3").arg(number).arg(writer).arg(m_last.value(writer)));
    // What it knows is what it was told last.
    if (m_object.attribute(QStringLiteral("n")).toInt() != number)
        fault(QStringLiteral("the object's value is not that of update %1 of writer %2").arg(number).arg(writer));
    m_last.insert(writer, number);
    m_order = m_order * 31 + quint32(writer) * 1000003U + quint32(number);
}

void UpdateCheck::fault(const QString &text)
{
    if (++m_faults <= 5)
        std::fprintf(stderr, "%s: %s\n", qPrintable(m_object.path()), qPrintable(text));
}

QString UpdateCheck::report() const
{
    QStringList lasts;
    for (auto it = m_last.begin(); it != m_last.end(); ++it)
        lasts << QStringLiteral("%1:%2").arg(it.key()).arg(it.value());
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(m_count)
        .arg(m_order)
        .arg(m_faults)
        .arg(m_ends)
        .arg(lasts.join(QLatin1Char(',')));
}
