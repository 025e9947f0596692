// SPDX-License-Identifier: Apache-2.0
#include "wifistatecommands.h"

#include "accesspointtext.h"
#include "interfacetext.h"
#include "output.h"
#include "table.h"
#include "texts.h"
#include "wificommand.h"

#include <networkinterfaceservice.h>
#include <publishedsecurity.h>
#include <publishedstatus.h>

namespace morvek {

namespace {

// Nothing tells that a request was accepted, and a refusal takes its time.
constexpr int RefusalTime = 1000;

/*! The addresses that the station has got by its network. */
QString networkAddress()
{
    struct Delete
    {
        void operator()(NetworkInterfaceService *service) const { deleteNetworkInterfaceService(&service); }
    };
    const std::unique_ptr<NetworkInterfaceService, Delete> service(newNetworkInterfaceService());
    QStringList addresses;
    const QList<NetworkInterface> interfaces = service->interfaces();
    for (const NetworkInterface &networkInterface : interfaces) {
        if (networkInterface.type() == NetworkInterface::Wifi && networkInterface.connected())
            addresses += addressText(networkInterface.configuration());
    }
    addresses.removeAll(QString());
    return addresses.join(QLatin1Char(','));
}

class StatusCommand : public WifiCommand
{
public:
    using WifiCommand::WifiCommand;

protected:
    void run() override
    {
        const bool connected = service()->connected();
        WifiAccessPoint accessPoint = service()->connectedAccessPoint();
        accessPoint.setRssi(connected ? PublishedStatus().levelOf(accessPoint.bssid()) : 0);
        const QString address = connected ? networkAddress() : QString();
        if (json()) {
            QJsonObject state = stateJson(service()->powered(), accessPoint);
            state.insert(QStringLiteral("address"), textOrNull(address));
            writeLine(jsonLine(state));
        } else {
            write(accessPoint, address);
        }
        finish(Done);
    }

private:
    void write(const WifiAccessPoint &accessPoint, const QString &address) const
    {
        const bool connected = service()->connected();
        writeTable({
            {QStringLiteral("Radio"), onOrOff(service()->powered())},
            {QStringLiteral("Connected"), {word(connected), connected ? Tone::Good : Tone::Plain}},
            {QStringLiteral("SSID"), accessPoint.ssid()},
            {QStringLiteral("BSSID"), accessPoint.bssid()},
            {QStringLiteral("Signal"), {signalText(accessPoint), signalTone(accessPoint)}},
            {QStringLiteral("Security"), connected ? PublishedSecurity().ofConnected(accessPoint).name() : QString()},
            {QStringLiteral("Cipher"), connected ? cipherName(accessPoint) : QString()},
            {QStringLiteral("Address"), address},
        });
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
        hearRefusals(QStringLiteral("the radio is still %1").arg(onOrOff(!m_on)));
        // The connection of the same update is told after the radio.
        connect(
            service(), &WifiService::poweredChanged, this,
            [this] { tellState(QStringLiteral("The radio is %1.").arg(onOrOff(m_on))); }, Qt::QueuedConnection);
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
        hearRefusals(QStringLiteral("the station was not disconnected"));
        service()->disconnectAccessPoint();
        if (!connected) {
            setOverdue(QStringLiteral("the Wi-Fi daemon may still refuse"));
            QTimer::singleShot(RefusalTime, this, [this] { onNotRefused(); });
            return;
        }
        setOverdue(QStringLiteral("the station is still connected to %1").arg(quoted(ssid)) + silenceReason());
        setDeadline(ChangeTime);
        connect(service(), &WifiService::connectedChanged, this,
                [this, ssid] { tellState(QStringLiteral("Disconnected from %1.").arg(quoted(ssid))); });
    }

private:
    void onNotRefused()
    {
        if (service()->connected())
            fail(QStringLiteral("the station has been connected to %1 meanwhile")
                     .arg(quoted(service()->connectedAccessPoint().ssid())));
        else
            tellState(QStringLiteral("The station is not connected. The Wi-Fi daemon has been asked to give up what it "
                                     "may be joining."));
    }
};

template<bool on>
std::unique_ptr<Command> createPower(const CommandLine &line, QString *)
{
    return std::make_unique<PowerCommand>(line, on);
}

QString changeDetails()
{
    return QStringLiteral(
               "When the Wi-Fi daemon refuses, the command ends with code 1; when nothing has changed within\n"
               "%1, or the time of --timeout, with code 4. With --json it writes what\n"
               "'wifi status --json' would.")
        .arg(inSeconds(ChangeTime));
}

} // namespace

CommandInfo wifiStatusCommand()
{
    return {QStringLiteral("wifi status"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("tell whether the radio is on, and what the station is connected to")}},
            QStringLiteral(
                "What is not known is \"-\" or \"unknown\"; a radio of which the daemon tells nothing is off. The\n"
                "level is that of the last scan, whoever asked for it; the address is the station's own, as the\n"
                "networking daemon tells it."),
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
    return {
        QStringLiteral("wifi disconnect"),
        {},
        0,
        serviceOptions(),
        {{QString(), QStringLiteral("leave the network, and wait until the station has left it")}},
        QStringLiteral("What the daemon is still trying to join is given up, too, whoever has asked for it. When the\n"
                       "station is not connected, code 0 means that the daemon was asked to, and has not refused\n"
                       "within a second.\n")
            + changeDetails(),
        {QStringLiteral("morvekctl wifi disconnect")},
        createFrom<DisconnectCommand>};
}

} // namespace morvek
