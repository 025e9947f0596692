// SPDX-License-Identifier: Apache-2.0
#include "requestbook.h"

#include "eventlog.h"

namespace morvek {

int RequestBook::add(const Entry &entry)
{
    m_entries.push_back(entry);
    Entry &last = m_entries.back();
    last.number = ++m_last;
    last.at = m_since.elapsed();
    for (QString *text : {&last.message, &last.interface, &last.ssid, &last.text})
        *text = EventLog::cut(*text);
    if (m_entries.size() > size_t(Most))
        m_entries.pop_front();
    return m_last;
}

void RequestBook::addAnswer(int number, const QString &answer)
{
    const int index = int(m_entries.size()) - 1 - (m_last - number);
    if (index >= 0)
        m_entries[size_t(index)].answers += EventLog::cut(answer);
}

} // namespace morvek
