// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDEDCOUNTS_H
#define MORVEK_RECORDEDCOUNTS_H

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

class QTextStream;

/*!
 * Counts that are kept in a file, beside what they depend on: compiler, flags, Qt and C library. Times are never kept.
 * Counts of one build hardly differ; the tolerance is for other processors, for which libraries have other code, and
 * for places that hash differently in each process.
 */
class RecordedCounts
{
public:
    explicit RecordedCounts(const QString &file);

    /*! Keeps what is counted of \a figures. */
    void write(const QJsonArray &figures) const;
    /*!
     * Tells what differs from what was kept; false when something has become worse, or is no longer counted, or when
     * what was kept is damaged.
     */
    bool compare(const QJsonArray &figures, QTextStream *out) const;

private:
    QString m_file;
};

#endif
