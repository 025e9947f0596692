// SPDX-License-Identifier: Apache-2.0
#include "monitorcommand.h"

#include "interfacecommand.h"
#include "interfacetext.h"
#include "monitor.h"

namespace morvek {

namespace {

const QString presentEvent = QStringLiteral("present");
const QString preferredEvent = QStringLiteral("preferred");
const QString configurationEvent = QStringLiteral("configuration");
const QString connectedEvent = QStringLiteral("connected");
const QString disconnectedEvent = QStringLiteral("disconnected");

class MonitorCommand : public Monitor<InterfaceCommand>
{
public:
    using Monitor::Monitor;

protected:
    void follow() override
    {
        const auto tellOf = [this](void (NetworkInterfaceService::*signal)(const NetworkInterface &),
                                   const QString &event) {
            connect(service(), signal, this, [this, event](const NetworkInterface &networkInterface) {
                tellChange(toJson(event, networkInterface), text(event, networkInterface));
            });
        };
        tellOf(&NetworkInterfaceService::interfaceConfigurationChanged, configurationEvent);
        tellOf(&NetworkInterfaceService::preferredInterfaceChanged, preferredEvent);
        tellOf(&NetworkInterfaceService::interfaceConnected, connectedEvent);
        tellOf(&NetworkInterfaceService::interfaceDisconnected, disconnectedEvent);

        const QList<NetworkInterface> interfaces = service()->interfaces();
        for (const NetworkInterface &networkInterface : interfaces)
            m_nameWidth = std::max(m_nameWidth, printable(networkInterface.name()).size());
        for (const NetworkInterface &networkInterface : interfaces)
            tellPresent(presentEvent, networkInterface);
        tellPresent(preferredEvent, service()->preferredInterface());
    }

private:
    void tellPresent(const QString &event, const NetworkInterface &networkInterface)
    {
        tell(toJson(event, networkInterface), text(event, networkInterface));
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
        QStringList line {padded(event, configurationEvent.size()), padded(name, m_nameWidth)};
        if (!networkInterface.isEmpty())
            line += stateText(networkInterface);
        return line.join(QLatin1String("  ")).trimmed();
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
                "With --json each line is one object: \"time\" (UTC), \"event\", \"interface\". The command ends well\n"
                "by SIGINT (Ctrl-C), SIGTERM, SIGHUP, SIGQUIT, --count, or, without --count, --timeout."),
            {QStringLiteral("morvekctl monitor"), QStringLiteral("morvekctl monitor --json --count 1 --timeout 60")},
            createMonitor<MonitorCommand>};
}

} // namespace morvek
