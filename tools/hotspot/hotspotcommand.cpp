// SPDX-License-Identifier: Apache-2.0
#include "hotspotcommand.h"

#include "output.h"

namespace morvek {

namespace {

// The one failure of which the library logs the daemon's words, after this.
const QLatin1String UpdateFailed("Failed to update WifiHotspot config.");

} // namespace

// A service that waits for its daemon by itself, and leaves something behind: further ones are made ever more rarely.
HotspotCommand::HotspotCommand(const CommandLine &line)
    : CommandWith(line, QStringLiteral("tethering"), EventLoopPatience, 2)
{
}

void HotspotCommand::fetch(const QString &failure, const Reader &reader)
{
    awaitAnswer(failure + QLatin1String("; the tethering daemon has not answered"));
    fetchAtLeisure(failure, reader, [this](const QString &complaint) { fail(complaint); });
}

void HotspotCommand::fetchAtLeisure(const QString &failure, const Reader &reader, const Complaint &complaint)
{
    // What the library logs as an error is told by the command.
    if (!m_log)
        m_log.emplace([this](const QString &line) { hear(line); }, KrelLogger::Warning);
    m_fetch.reset(service()->configuration());
    connect(m_fetch.get(), &AsyncHotspotConfigOperation::success, this, [=] {
        if (isFinished())
            return;
        const QList<WifiHotspot> results = m_fetch->results();
        if (results.isEmpty()) // it was another request's answer
            complaint(failure + QLatin1String(": what the tethering daemon has answered is no profile"));
        else
            reader(results.first());
    });
    connect(m_fetch.get(), &AsyncHotspotConfigOperation::failure, this,
            [=] { complaint(sentence(failure, m_fetch->error())); });
}

void HotspotCommand::awaitAnswer(const QString &overdue)
{
    setOverdue(overdue);
    setDeadline(AnswerTime);
}

void HotspotCommand::hear(const QString &line)
{
    if (line.startsWith(UpdateFailed))
        m_refusal = line.mid(UpdateFailed.size());
}

QString HotspotCommand::sentence(const QString &failure, const AsyncOperationError &error) const
{
    setFailureCode(error.code());
    const QString known = failure + QStringLiteral(", code %1: ").arg(error.code()) + error.message();
    return m_refusal.isEmpty() ? known : known + QStringLiteral(" (%1)").arg(m_refusal);
}

} // namespace morvek
