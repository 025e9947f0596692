// SPDX-License-Identifier: Apache-2.0
#include "monitorcommand.h"

#include "interfacecommand.h"
#include "interfacetext.h"
#include "monitor.h"

#include <optional>

namespace morvek {

namespace {

const QString presentEvent = QStringLiteral("present");
const QString preferredEvent = QStringLiteral("preferred");
const QString configurationEvent = QStringLiteral("configuration");
const QString connectedEvent = QStringLiteral("connected");
const QString disconnectedEvent = QStringLiteral("disconnected");
const QString addedEvent = QStringLiteral("added");
const QString removedEvent = QStringLiteral("removed");

class MonitorCommand : public Monitor<InterfaceCommand>
{
public:
    MonitorCommand(const CommandLine &line, int count)
        : Monitor(line, count, configurationEvent.size())
    {
    }

protected:
    void follow() override
    {
        for (const auto signal :
             {&NetworkInterfaceService::interfaceConnected, &NetworkInterfaceService::interfaceDisconnected})
            connect(service(), signal, this, &MonitorCommand::onConnectionChanged);
        connect(service(), &NetworkInterfaceService::interfaceConfigurationChanged, this,
                &MonitorCommand::onConfigurationChanged);
        connect(service(), &NetworkInterfaceService::preferredInterfaceChanged, this,
                &MonitorCommand::onPreferredChanged);

        const QList<NetworkInterface> interfaces = service()->interfaces();
        for (const NetworkInterface &networkInterface : interfaces)
            makeRoom(networkInterface);
        for (const NetworkInterface &networkInterface : interfaces) {
            m_told.insert(networkInterface.name(), {networkInterface, stateShown(networkInterface)});
            tellPresent(presentEvent, networkInterface);
        }
        m_preferred = service()->preferredInterface().name();
        tellPresent(preferredEvent, service()->preferredInterface());
    }

    void compare() override
    {
        tellHeld();
        const QList<NetworkInterface> interfaces = service()->interfaces();
        QMap<QString, Told> gone = m_told;
        for (const NetworkInterface &networkInterface : interfaces) {
            gone.remove(networkInterface.name());
            tellInterface(networkInterface);
        }
        for (const Told &told : qAsConst(gone)) {
            m_told.remove(told.networkInterface.name());
            tellEvent(removedEvent, told.networkInterface);
        }
        tellPreferred(service()->preferredInterface());
    }

private:
    // The library tells the connection before it has read the rest of an update: the line waits for that.
    void onConnectionChanged(const NetworkInterface &networkInterface)
    {
        tellHeld();
        m_held = networkInterface;
        compareLater();
    }

    void onConfigurationChanged(const NetworkInterface &networkInterface)
    {
        if (m_held && m_held->name() == networkInterface.name())
            m_held.reset();
        tellHeld();
        tellInterface(networkInterface);
        compareLater();
    }

    void onPreferredChanged(const NetworkInterface &networkInterface)
    {
        tellHeld();
        tellPreferred(networkInterface);
        compareLater();
    }

    void tellHeld()
    {
        if (m_held)
            tellInterface(*m_held);
        m_held.reset();
    }

    void tellInterface(const NetworkInterface &networkInterface)
    {
        const QString shown = stateShown(networkInterface);
        const auto told = m_told.constFind(networkInterface.name());
        QString event = configurationEvent;
        if (told == m_told.constEnd()) {
            makeRoom(networkInterface);
            event = addedEvent;
        } else if (told->shown == shown) {
            return;
        } else if (told->networkInterface.connected() != networkInterface.connected()) {
            event = networkInterface.connected() ? connectedEvent : disconnectedEvent;
        }
        m_told.insert(networkInterface.name(), {networkInterface, shown});
        tellEvent(event, networkInterface);
    }

    void tellPreferred(const NetworkInterface &networkInterface)
    {
        if (std::exchange(m_preferred, networkInterface.name()) != networkInterface.name())
            tellEvent(preferredEvent, networkInterface);
    }

    void tellEvent(const QString &event, const NetworkInterface &networkInterface)
    {
        tellChange(toJson(event, networkInterface), text(event, networkInterface));
    }

    void tellPresent(const QString &event, const NetworkInterface &networkInterface)
    {
        tell(toJson(event, networkInterface), text(event, networkInterface));
    }

    QString stateShown(const NetworkInterface &networkInterface) const
    {
        return shown(morvek::toJson(networkInterface), stateText(networkInterface));
    }

    void makeRoom(const NetworkInterface &networkInterface)
    {
        m_nameWidth = std::max(m_nameWidth, printable(networkInterface.name()).size());
    }

    static QJsonObject toJson(const QString &event, const NetworkInterface &networkInterface)
    {
        const bool none = networkInterface.isEmpty();
        return {
            {QStringLiteral("event"), event},
            {QStringLiteral("interface"), none ? QJsonValue() : QJsonValue(morvek::toJson(networkInterface))},
        };
    }

    QString text(const QString &event, const NetworkInterface &networkInterface) const
    {
        const QString name = networkInterface.isEmpty() ? QStringLiteral("-") : printable(networkInterface.name());
        QString line = eventColumn(event) + padded(name, m_nameWidth) + QLatin1String("  ");
        if (!networkInterface.isEmpty() && event != removedEvent)
            line += stateText(networkInterface);
        return line.trimmed();
    }

    static QString stateText(const NetworkInterface &networkInterface)
    {
        const NetworkInterfaceConfig config = networkInterface.configuration();
        QStringList words {typeName(networkInterface.type()),
                           networkInterface.connected() ? QStringLiteral("connected") : QStringLiteral("not connected"),
                           modeName(config)};
        if (!config.ipAddresses().isEmpty())
            words += addressText(config);
        if (!config.gatewayAddresses().isEmpty())
            words += QStringLiteral("via ") + gatewayText(config);
        return words.join(QLatin1String(", "));
    }

    struct Told
    {
        NetworkInterface networkInterface;
        QString shown; // as it was then: the parent of a copy changes
    };

    QMap<QString, Told> m_told;
    QString m_preferred;                    //!< its name, as it was told
    std::optional<NetworkInterface> m_held; //!< not told yet
    int m_nameWidth = 0;
};

} // namespace

CommandInfo monitorCommand()
{
    return {QStringLiteral("monitor"),
            {},
            0,
            monitorOptions(),
            {{QString(), QStringLiteral("tell each change as it comes, after the present state")}},
            QStringLiteral(
                "Each line tells one event and the interface's state at that moment:\n"
                "  present        at the start, one line an interface, then one \"preferred\"\n"
                "  preferred      the unit prefers this interface now, \"-\" for none (JSON: null)\n"
                "  configuration  a property of the interface has changed\n"
                "  connected, disconnected\n"
                "  added, removed the interface; told with the next change of whatever it is\n"
                "  gone, back     the networking daemon; not counted\n"
                "With --json each line is one object: \"time\" (UTC), \"event\", \"interface\". The command ends well\n"
                "by SIGINT (Ctrl-C), SIGTERM, SIGHUP, SIGQUIT, --count, or, without --count, --timeout."),
            {QStringLiteral("morvekctl monitor"), QStringLiteral("morvekctl monitor --json --count 1 --timeout 60")},
            createMonitor<MonitorCommand>};
}

} // namespace morvek
