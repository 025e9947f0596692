// SPDX-License-Identifier: Apache-2.0
#include "wifistatecommands.h"

#include "accesspointtext.h"
#include "output.h"
#include "texts.h"
#include "wificommand.h"

namespace morvek {

namespace {

constexpr int ChangeTime = 10000;

class StatusCommand : public WifiCommand
{
public:
    using WifiCommand::WifiCommand;

protected:
    void run() override
    {
        if (json()) {
            tellState(QString());
            return;
        }
        const WifiAccessPoint accessPoint = service()->connectedAccessPoint();
        const bool connected = service()->connected();
        writeTable({
            {QStringLiteral("Radio"), onOrOff(service()->powered())},
            {QStringLiteral("Connected"), word(connected)},
            {QStringLiteral("SSID"), accessPoint.ssid()},
            {QStringLiteral("BSSID"), accessPoint.bssid()},
            {QStringLiteral("Security"), connected ? securityName(accessPoint) : QString()},
            {QStringLiteral("Cipher"), connected ? cipherName(accessPoint) : QString()},
        });
        finish(Done);
    }
};

class PowerCommand : public WifiCommand
{
public:
    PowerCommand(const CommandLine &line, bool on)
        : WifiCommand(line),
          m_on(on)
    {
    }

protected:
    void run() override
    {
        if (service()->powered() == m_on) {
            tellState(QStringLiteral("The radio is %1 already.").arg(onOrOff(m_on)));
            return;
        }
        setOverdue(QStringLiteral("the radio is still %1").arg(onOrOff(!m_on)) + silenceReason());
        setDeadline(ChangeTime);
        connect(service(), &WifiService::poweredChanged, this,
                [this] { tellState(QStringLiteral("The radio is %1.").arg(onOrOff(m_on))); });
        if (m_on)
            service()->powerOn();
        else
            service()->powerOff();
    }

private:
    const bool m_on;
};

class DisconnectCommand : public WifiCommand
{
public:
    using WifiCommand::WifiCommand;

protected:
    void run() override
    {
        const QString ssid = service()->connectedAccessPoint().ssid();
        // Also when it is not connected: a daemon may still be trying to join what an application has asked for.
        const bool connected = service()->connected();
        service()->disconnectAccessPoint();
        if (!connected) {
            tellState(QStringLiteral("The station is not connected."));
            return;
        }
        setOverdue(QStringLiteral("the station is still connected to %1").arg(quoted(ssid)) + silenceReason());
        setDeadline(ChangeTime);
        connect(service(), &WifiService::connectedChanged, this,
                [this, ssid] { tellState(QStringLiteral("Disconnected from %1.").arg(quoted(ssid))); });
    }
};

template<bool on>
std::unique_ptr<Command> createPower(const CommandLine &line, QString *)
{
    return std::make_unique<PowerCommand>(line, on);
}

QString changeDetails()
{
    return QStringLiteral("The Wi-Fi daemon does not tell a refusal: when nothing has changed within 10 seconds, or\n"
                          "the time of --timeout, the command ends with code 4. With --json it writes what\n"
                          "'wifi status --json' would.");
}

} // namespace

CommandInfo wifiStatusCommand()
{
    return {QStringLiteral("wifi status"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("tell whether the radio is on, and what the station is connected to")}},
            QStringLiteral("What is not known is \"-\" or \"unknown\"."),
            {QStringLiteral("morvekctl wifi status"),
             QStringLiteral("morvekctl wifi status --json | jq -r .accessPoint.ssid")},
            createFrom<StatusCommand>};
}

CommandInfo wifiOnCommand()
{
    return {QStringLiteral("wifi on"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("switch the radio on, and wait until it is")}},
            changeDetails(),
            {QStringLiteral("morvekctl wifi on")},
            createPower<true>};
}

CommandInfo wifiOffCommand()
{
    return {QStringLiteral("wifi off"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("switch the radio off, and wait until it is")}},
            changeDetails(),
            {QStringLiteral("morvekctl wifi off")},
            createPower<false>};
}

CommandInfo wifiDisconnectCommand()
{
    return {QStringLiteral("wifi disconnect"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("leave the network, and wait until the station has left it")}},
            QStringLiteral("What the daemon is still trying to join is given up, too, whoever has asked for it.\n")
                + changeDetails(),
            {QStringLiteral("morvekctl wifi disconnect")},
            createFrom<DisconnectCommand>};
}

} // namespace morvek
