// SPDX-License-Identifier: Apache-2.0
#include "wifimonitorcommand.h"

#include "accesspointtext.h"
#include "monitor.h"
#include "wificommand.h"

#include <publishedstatus.h>
#include <zopobject.h>

#include <optional>

namespace morvek {

namespace {

const QString presentEvent = QStringLiteral("present");
const QString connectedEvent = QStringLiteral("connected");
const QString disconnectedEvent = QStringLiteral("disconnected");
const QString roamedEvent = QStringLiteral("roamed");

struct State
{
    bool powered;
    WifiAccessPoint accessPoint;
};

bool isConnected(const State &state)
{
    return !state.accessPoint.isEmpty();
}

QString eventBetween(const State &former, const State &state)
{
    if (former.powered != state.powered)
        return onOrOff(state.powered);
    if (!isConnected(state))
        return disconnectedEvent;
    const bool sameNetwork = isConnected(former) && former.accessPoint.ssid() == state.accessPoint.ssid();
    return sameNetwork ? roamedEvent : connectedEvent;
}

QJsonObject stateJson(const State &state)
{
    return morvek::stateJson(state.powered, state.accessPoint);
}

QString text(const State &state)
{
    return QStringLiteral("radio %1, ").arg(onOrOff(state.powered))
        + (isConnected(state) ? QStringLiteral("connected to ") + connectionText(state.accessPoint)
                              : QStringLiteral("not connected"));
}

class WifiMonitorCommand : public Monitor<WifiCommand>
{
public:
    WifiMonitorCommand(const CommandLine &line, int count)
        : Monitor(line, count, disconnectedEvent.size())
    {
    }

protected:
    void follow() override
    {
        connect(service(), &WifiService::poweredChanged, this, &WifiMonitorCommand::onPoweredChanged);
        connect(service(), &WifiService::connectedChanged, this, &WifiMonitorCommand::onConnectedChanged);
        // The library does not tell when the station changes to another access point.
        m_status.emplace(PublishedStatus::path(), ZopObject::Subscribe, false);
        connect(&*m_status, &ZopObject::attributesChanged, this, [this] { compareLater(); });
        m_told = present();
        m_shown = stateShown(m_told);
        tell(toJson(presentEvent, m_told), eventColumn(presentEvent) + text(m_told));
    }

    void compare() override
    {
        tellHeld();
        tellState(present());
    }

private:
    State present() const { return {service()->powered(), service()->connectedAccessPoint()}; }

    // The library tells the radio before it has read the connection of the same update: the line waits for that.
    void onPoweredChanged()
    {
        tellHeld();
        m_held = present();
        compareLater();
    }

    void onConnectedChanged()
    {
        m_held.reset();
        tellState(present());
    }

    void tellHeld()
    {
        if (m_held)
            tellState(*m_held);
        m_held.reset();
    }

    void tellState(const State &state)
    {
        const QString shown = stateShown(state);
        if (std::exchange(m_shown, shown) == shown)
            return;
        const QString event = eventBetween(std::exchange(m_told, state), state);
        tellChange(toJson(event, state), eventColumn(event) + text(state));
    }

    QString stateShown(const State &state) const { return shown(stateJson(state), text(state)); }

    static QJsonObject toJson(const QString &event, const State &state)
    {
        QJsonObject object = stateJson(state);
        object.insert(QStringLiteral("event"), event);
        return object;
    }

    std::optional<ZopObject> m_status;
    State m_told = {};
    QString m_shown;             //!< of that
    std::optional<State> m_held; //!< not told yet
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
                "  roamed         another access point of the same network\n"
                "  gone, back     the Wi-Fi daemon; not counted\n"
                "With --json each line is one object: \"time\" (UTC), \"event\", \"powered\", \"connected\",\n"
                "\"accessPoint\". The command ends well by SIGINT (Ctrl-C), SIGTERM, SIGHUP, SIGQUIT, --count, or,\n"
                "without --count, --timeout."),
            {QStringLiteral("morvekctl wifi monitor"),
             QStringLiteral("morvekctl wifi monitor --json --count 1 --timeout 60")},
            createMonitor<WifiMonitorCommand>};
}

} // namespace morvek
