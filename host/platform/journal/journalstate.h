// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JOURNALSTATE_H
#define MORVEK_JOURNALSTATE_H

#include "journalreader.h"

namespace morvek {
namespace Journal {

/*! The state that the records of a file add up to. */
class FoldedState
{
public:
    FoldedState(const ZopPath &path, FileDescriptor file, const Header &header);

    /*! Adds what has been written since; false when the file is malformed. */
    bool follow();
    const QMap<QString, ZopVariant> &values() const { return m_values; }
    /*! The size of the record that would hold the state. */
    qint64 size() const { return m_size; }
    /*! The same for the state with \a changes. */
    qint64 sizeAfter(const ZopChangeset &changes) const;

private:
    qint64 sizeOf(const QString &name) const;

    Reader m_reader;
    QMap<QString, ZopVariant> m_values;
    qint64 m_size;
};

} // namespace Journal
} // namespace morvek

#endif
