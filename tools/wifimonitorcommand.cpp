// SPDX-License-Identifier: Apache-2.0
#include "wifimonitorcommand.h"

#include "accesspointtext.h"
#include "monitor.h"
#include "wificommand.h"

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
        connect(service(), &WifiService::poweredChanged, this, [this](bool powered) { onChange(onOrOff(powered)); });
        connect(service(), &WifiService::connectedChanged, this,
                [this](bool connected) { onChange(connected ? connectedEvent : disconnectedEvent); });
        tell(toJson(presentEvent), text(presentEvent));
    }

private:
    void onChange(const QString &event) { tellChange(toJson(event), text(event)); }

    QJsonObject toJson(const QString &event) const
    {
        QJsonObject object = stateJson(service()->powered(), service()->connectedAccessPoint());
        object.insert(QStringLiteral("event"), event);
        return object;
    }

    QString text(const QString &event) const
    {
        const QString connection = service()->connected()
            ? QStringLiteral("connected to ") + connectionText(service()->connectedAccessPoint())
            : QStringLiteral("not connected");
        return QStringLiteral("%1  radio %2, ")
                   .arg(padded(event, disconnectedEvent.size()), onOrOff(service()->powered()))
            + connection;
    }
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
                "A station that changes to another access point of its network (roaming) is not told. With --json\n"
                "each line is what 'wifi status --json' would write, with \"time\" (UTC) and \"event\". The command\n"
                "ends well by SIGINT (Ctrl-C), SIGTERM, --count, or, without --count, --timeout."),
            {QStringLiteral("morvekctl wifi monitor"),
             QStringLiteral("morvekctl wifi monitor --json --count 1 --timeout 60")},
            createMonitor<WifiMonitorCommand>};
}

} // namespace morvek
