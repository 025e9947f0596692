// SPDX-License-Identifier: Apache-2.0
#include "recordedcounts.h"

#include "madewith.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTextStream>

#include <cmath>

#include <gnu/libc-version.h>

namespace {

const QString MadeWith = QStringLiteral("made with");
const QString Counts = QStringLiteral("counts");

/*! By how much a count may differ: a share of it, and so many. */
struct Tolerance
{
    const char *unit;
    double share;
    double number;
};

const Tolerance tolerances[] = {
    {"instructions", 0.05, 0}, {"allocations", 0, 0.5}, {"system calls", 0, 0.5},
    {"descriptors", 0, 1},     {"signals", 0, 0.5},
};

const Tolerance *toleranceFor(const QString &unit)
{
    for (const Tolerance &tolerance : tolerances) {
        if (unit == QLatin1String(tolerance.unit))
            return &tolerance;
    }
    return nullptr;
}

enum class Verdict { Same, Better, Worse, New, Missing, Skipped };

const char *words(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Same:
        return "same";
    case Verdict::Better:
        return "better, to be recorded anew";
    case Verdict::Worse:
        return "worse";
    case Verdict::New:
        return "new, to be recorded";
    case Verdict::Missing:
        return "no longer counted";
    case Verdict::Skipped:
        return "skipped";
    }
    return "";
}

/*! Either is null when it could not be counted. */
Verdict judge(const QString &name, const QJsonValue &recorded, const QJsonValue &counted)
{
    if (counted.isUndefined())
        return Verdict::Missing;
    if (counted.isNull())
        return Verdict::Skipped;
    if (recorded.isUndefined() || recorded.isNull())
        return Verdict::New;
    const Tolerance *tolerance = toleranceFor(name.section(QStringLiteral(": "), -1));
    const double margin = tolerance ? recorded.toDouble() * tolerance->share + tolerance->number : 0;
    if (counted.toDouble() > recorded.toDouble() + margin)
        return Verdict::Worse;
    return counted.toDouble() < recorded.toDouble() - margin ? Verdict::Better : Verdict::Same;
}

/*! Name and unit, and the count, rounded to what is worth keeping; null when it was skipped. */
QJsonObject countsOf(const QJsonArray &figures)
{
    QJsonObject counts;
    for (const QJsonValue &value : figures) {
        const QJsonObject figure = value.toObject();
        const QString unit = figure[QStringLiteral("unit")].toString();
        if (!toleranceFor(unit))
            continue;
        const QJsonValue count = figure[QStringLiteral("value")];
        counts.insert(figure[QStringLiteral("name")].toString() + QStringLiteral(": ") + unit,
                      count.isDouble() ? QJsonValue(std::round(count.toDouble() * 10) / 10) : QJsonValue());
    }
    return counts;
}

QJsonObject presentMakers()
{
    return {{QStringLiteral("compiler"), QLatin1String(Compiler)},
            {QStringLiteral("flags"), QLatin1String(Flags)},
            {QStringLiteral("Qt"), QString::fromLatin1(qVersion())},
            {QStringLiteral("C library"), QString::fromLatin1(gnu_get_libc_version())}};
}

/*! Empty when \a former and \a present makers are the same. */
QString otherMaker(const QJsonObject &former, const QJsonObject &present)
{
    for (auto it = present.begin(); it != present.end(); ++it) {
        if (former[it.key()] != it.value())
            return QStringLiteral("recorded with %1 '%2', not '%3'")
                .arg(it.key(), former[it.key()].toString(), it.value().toString());
    }
    return QString();
}

} // namespace

RecordedCounts::RecordedCounts(const QString &file)
    : m_file(file)
{
}

void RecordedCounts::write(const QJsonArray &figures) const
{
    const QJsonObject record {{MadeWith, presentMakers()}, {Counts, countsOf(figures)}};
    QFile file(m_file);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(record).toJson()) == -1)
        qFatal("cannot write %s", qPrintable(m_file));
}

bool RecordedCounts::compare(const QJsonArray &figures, QTextStream *out) const
{
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly)) {
        *out << "skipped: nothing is recorded in " << m_file << '\n';
        return true;
    }
    const QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
    if (!record[MadeWith].isObject() || !record[Counts].isObject()) {
        *out << "damaged: " << m_file << " holds no counts\n";
        return false;
    }
    const QString other = otherMaker(record[MadeWith].toObject(), presentMakers());
    if (!other.isEmpty()) {
        *out << "skipped: the counts were " << other << '\n';
        return true;
    }
    const QJsonObject recorded = record[Counts].toObject();
    const QJsonObject counted = countsOf(figures);
    QStringList names = recorded.keys() + counted.keys();
    names.removeDuplicates();
    bool isGood = true;
    for (const QString &name : qAsConst(names)) {
        const Verdict verdict = judge(name, recorded[name], counted[name]);
        if (verdict == Verdict::Skipped)
            *out << words(verdict) << ": " << name << '\n';
        else if (verdict != Verdict::Same)
            *out << words(verdict) << ": " << name << ": " << counted[name].toVariant().toString()
                 << ", recorded: " << recorded[name].toVariant().toString() << '\n';
        isGood = isGood && verdict != Verdict::Worse && verdict != Verdict::Missing;
    }
    return isGood;
}
