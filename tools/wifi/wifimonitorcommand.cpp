// SPDX-License-Identifier: Apache-2.0
#include "wifimonitorcommand.h"

#include "accesspointtext.h"
#include "monitor.h"
#include "wificommand.h"

#include <optional>

namespace morvek {

namespace {

const QString presentEvent = QStringLiteral("present");
const QString connectedEvent = QStringLiteral("connected");
const QString disconnectedEvent = QStringLiteral("disconnected");

class WifiMonitorCommand : public Monitor<WifiCommand>
{
public:
    using Monitor::Monitor;

protected:
    void follow() override
    {
        connect(service(), &WifiService::poweredChanged, this, &WifiMonitorCommand::onPoweredChanged);
        connect(service(), &WifiService::connectedChanged, this, &WifiMonitorCommand::onConnectedChanged);
        const bool powered = service()->powered();
        tell(toJson(presentEvent, powered), text(presentEvent, powered));
    }

private:
    // The connection of the same update is told after the radio: the radio waits for it, for one turn of the event
    // loop.
    void onPoweredChanged(bool powered)
    {
        tellRadio();
        m_radio = powered;
        QTimer::singleShot(0, this, [this] { tellRadio(); });
    }

    void onConnectedChanged(bool connected)
    {
        tellRadio();
        tellEvent(connected ? connectedEvent : disconnectedEvent, service()->powered());
    }

    void tellRadio()
    {
        if (m_radio)
            tellEvent(onOrOff(*m_radio), *m_radio);
        m_radio.reset();
    }

    void tellEvent(const QString &event, bool powered) { tellChange(toJson(event, powered), text(event, powered)); }

    QJsonObject toJson(const QString &event, bool powered) const
    {
        QJsonObject object = stateJson(powered, service()->connectedAccessPoint());
        object.insert(QStringLiteral("event"), event);
        return object;
    }

    QString text(const QString &event, bool powered) const
    {
        const QString connection = service()->connected()
            ? QStringLiteral("connected to ") + connectionText(service()->connectedAccessPoint())
            : QStringLiteral("not connected");
        return QStringLiteral("%1  radio %2, ").arg(padded(event, disconnectedEvent.size()), onOrOff(powered))
            + connection;
    }

    std::optional<bool> m_radio; //!< an event that is not told yet
};

} // namespace

CommandInfo wifiMonitorCommand()
{
    return {QStringLiteral("wifi monitor"),
            {},
            0,
            monitorOptions(),
            {{QString(), QStringLiteral("tell each change of the radio and the connection, after the present state")}},
            QStringLiteral(
                "Each line tells one event and the station's state at that moment:\n"
                "  present        at the start\n"
                "  on, off        the radio has been switched\n"
                "  connected, disconnected\n"
                "A station that changes to another access point of its network (roaming) is not told, nor is the\n"
                "daemon's death. With --json each line is what 'wifi status --json' would write, with \"time\"\n"
                "(UTC) and \"event\". The command ends well by SIGINT (Ctrl-C), SIGTERM, SIGHUP, SIGQUIT,\n"
                "--count, or, without --count, --timeout."),
            {QStringLiteral("morvekctl wifi monitor"),
             QStringLiteral("morvekctl wifi monitor --json --count 1 --timeout 60")},
            createMonitor<WifiMonitorCommand>};
}

} // namespace morvek
