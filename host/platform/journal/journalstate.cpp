// SPDX-License-Identifier: Apache-2.0
#include "journalstate.h"

#include "zopwire.h"

namespace morvek {
namespace Journal {

FoldedState::FoldedState(const ZopPath &path, FileDescriptor file, const Header &header)
    : m_size(qint64(sizeof(RecordHeader)) + encodeChangeset({}).size())
{
    m_reader.adopt(path, std::move(file), header);
}

bool FoldedState::follow()
{
    Record record;
    while (m_reader.next(&record)) {
        m_size = sizeAfter(record.changes);
        apply(record.changes, &m_values);
    }
    return !m_reader.isMalformed();
}

qint64 FoldedState::sizeAfter(const ZopChangeset &changes) const
{
    qint64 size = m_size;
    for (auto it = changes.assignments.cbegin(); it != changes.assignments.cend(); ++it) {
        size -= sizeOf(it.key());
        if (!changes.removals.contains(it.key()))
            size += encodedSize(it.key(), it.value());
    }
    for (const QString &name : changes.removals) {
        if (!changes.assignments.contains(name))
            size -= sizeOf(name);
    }
    return size;
}

qint64 FoldedState::sizeOf(const QString &name) const
{
    const auto found = m_values.constFind(name);
    return found == m_values.cend() ? 0 : encodedSize(name, *found);
}

} // namespace Journal
} // namespace morvek
