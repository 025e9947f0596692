// SPDX-License-Identifier: Apache-2.0
#ifndef UPDATECHECK_H
#define UPDATECHECK_H

#include "zopobject.h"

#include <QtCore/QFile>
#include <QtCore/QMap>

/*! How many updates each writer has begun and done, of each object; it survives the writer's death. */
class Tally
{
public:
    static constexpr int Writers = 4096;
    static constexpr int Objects = 4;

    explicit Tally(const QString &file);

    void begin(int writer, int object) { at(writer, object).begun = at(writer, object).done + 1; }
    void end(int writer, int object) { at(writer, object).done = at(writer, object).begun; }
    qint64 begun(int writer, int object) { return at(writer, object).begun; }
    qint64 done(int writer, int object) { return at(writer, object).done; }

private:
    struct Entry
    {
        volatile qint64 begun;
        volatile qint64 done;
    };

    Entry &at(int writer, int object) { return m_entries[writer * Objects + object]; }

    QFile m_file;
    Entry *m_entries = nullptr;
};

/*!
 * A reader that judges every update of a state object: whole, once, and each writer's in order. Updates with the
 * attribute "end" end the count.
 */
class UpdateCheck : public QObject
{
public:
    explicit UpdateCheck(const QString &path);

    /*! An update number \a number of \a writer, with two attributes of \a size bytes that follow from both. */
    static morvek::ZopChangeset make(int writer, int number, int size);

    bool isValid() const { return m_object.isValid(); }
    /*! "COUNT ORDER FAULTS ENDS WRITER:LAST,..." where ORDER is the same for readers that heard the same in one order.
     */
    QString report() const;

private:
    void judge(const morvek::ZopChangeset &changes);
    void fault(const QString &text);

    morvek::ZopObject m_object;
    int m_count = 0;
    int m_faults = 0;
    int m_ends = 0;
    quint32 m_order = 0;
    QMap<int, int> m_last; // by writer
};

#endif
