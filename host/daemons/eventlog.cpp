// SPDX-License-Identifier: Apache-2.0
#include "eventlog.h"

#include "visibletext.h"

#include <cstdio>

namespace morvek {

namespace {

// Clients choose names of messages and interfaces: none may be a whole page of the log.
constexpr int LongestText = 400;

QByteArray oneLine(const QString &text)
{
    return visible(EventLog::cut(text)).toUtf8();
}

} // namespace

EventLog::EventLog(bool verbose)
    : m_verbose(verbose)
{
    m_since.start();
}

void EventLog::happened(const char *what, const QString &text) const
{
    if (m_verbose)
        std::fprintf(stderr, "%8lld ms  %-7s %s\n", static_cast<long long>(m_since.elapsed()), what,
                     oneLine(text).constData());
}

void EventLog::trouble(const QString &text) const
{
    write(text);
}

QString EventLog::cut(const QString &text)
{
    return text.size() > LongestText ? text.left(LongestText) + QStringLiteral("...") : text;
}

void EventLog::write(const QString &text)
{
    std::fprintf(stderr, "morvek-hostd: %s\n", oneLine(text).constData());
}

} // namespace morvek
