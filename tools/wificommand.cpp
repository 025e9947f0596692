// SPDX-License-Identifier: Apache-2.0
#include "wificommand.h"

#include "accesspointtext.h"
#include "output.h"
#include "texts.h"

namespace morvek {

namespace {

// The service opens the daemon's objects from the event loop. Not much later, as a rule: when it has seen their folder.
constexpr int Patience = 1000;

} // namespace

WifiCommand::WifiCommand(const CommandLine &line)
    : CommandWith(line, QStringLiteral("Wi-Fi"), Patience)
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

void WifiCommand::tellState(const QString &sentence)
{
    if (isFinished())
        return;
    writeLine(json() ? jsonLine(stateJson(service()->powered(), service()->connectedAccessPoint())) : sentence);
    finish(Done);
}

void WifiCommand::fail(const QString &sentence, ExitCode code)
{
    if (isFinished())
        return;
    withdraw();
    complain(sentence);
    finish(code);
}

QString silenceReason()
{
    return QStringLiteral("; the Wi-Fi daemon may have refused, or does not answer");
}

} // namespace morvek
