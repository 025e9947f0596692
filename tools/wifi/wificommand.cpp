// SPDX-License-Identifier: Apache-2.0
#include "wificommand.h"

#include "accesspointtext.h"
#include "output.h"
#include "texts.h"

#include <QtCore/QRegularExpression>

namespace morvek {

namespace {

/*! What follows a failure when \a error of the library tells a refusal; else empty. */
QString refusalIn(const QString &error)
{
    if (error == QLatin1String("Failed to disconnet from Access Point"))
        return QStringLiteral(": the Wi-Fi daemon has refused, or is gone");
    static const QRegularExpression form(
        QStringLiteral("\\AWi-Fi service control command failed\nmsg: .*\nerror code: (.*)\nerror: (.*)\\z"));
    const QRegularExpressionMatch match = form.match(error);
    if (match.hasMatch())
        setFailureCode(match.captured(1).toInt());
    return match.hasMatch() ? QStringLiteral(", code %1: %2").arg(match.captured(1), match.captured(2)) : QString();
}

} // namespace

WifiCommand::WifiCommand(const CommandLine &line)
    : CommandWith(line, QStringLiteral("Wi-Fi"), EventLoopPatience)
{
}

bool WifiCommand::needRadio()
{
    const auto failWithout = [this](bool powered) {
        if (!powered)
            fail(QStringLiteral("the radio is off: switch it on with 'morvekctl wifi on'"));
        return powered;
    };
    // The connection of the same update is told after the radio.
    connect(service(), &WifiService::poweredChanged, this, failWithout, Qt::QueuedConnection);
    return failWithout(service()->powered());
}

void WifiCommand::hearRefusals(const QString &failure)
{
    m_log.emplace([this, failure](const QString &error) {
        const QString refusal = refusalIn(error);
        if (!refusal.isEmpty())
            QTimer::singleShot(0, this, [this, failure, refusal] { fail(failure + refusal); });
    });
}

void WifiCommand::tellState(const QString &sentence)
{
    if (isFinished())
        return;
    writeLine(json() ? jsonLine(stateJson(service()->powered(), service()->connectedAccessPoint())) : sentence);
    finish(Done);
}

QString silenceReason()
{
    return QStringLiteral("; the Wi-Fi daemon has not told why");
}

} // namespace morvek
