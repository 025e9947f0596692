// SPDX-License-Identifier: Apache-2.0
#include "monitorcommand.h"

#include "interfacecommand.h"
#include "interfacetext.h"
#include "output.h"
#include "terminationsignals.h"

#include <networkinterfaceservice.h>

#include <QtCore/QDateTime>

namespace morvek {

namespace {

const QString presentEvent = QStringLiteral("present");
const QString preferredEvent = QStringLiteral("preferred");
const QString configurationEvent = QStringLiteral("configuration");
const QString connectedEvent = QStringLiteral("connected");
const QString disconnectedEvent = QStringLiteral("disconnected");

class MonitorCommand : public InterfaceCommand
{
public:
    /*! Ends after \a count signals of the service; never when that is 0. */
    MonitorCommand(const CommandLine &line, int count)
        : InterfaceCommand(line),
          m_count(count)
    {
        connect(&m_signals, &TerminationSignals::received, this, [this] { finish(Done); });
    }

protected:
    void run() override
    {
        if (m_count > 0)
            setOverdue(QStringLiteral("fewer changes than --count came"));
        else
            setOverdue(QString(), Done);

        const auto follow = [this](void (NetworkInterfaceService::*signal)(const NetworkInterface &),
                                   const QString &event) {
            connect(service(), signal, this,
                    [this, event](const NetworkInterface &networkInterface) { onChange(event, networkInterface); });
        };
        follow(&NetworkInterfaceService::interfaceConfigurationChanged, configurationEvent);
        follow(&NetworkInterfaceService::preferredInterfaceChanged, preferredEvent);
        follow(&NetworkInterfaceService::interfaceConnected, connectedEvent);
        follow(&NetworkInterfaceService::interfaceDisconnected, disconnectedEvent);

        const QList<NetworkInterface> interfaces = service()->interfaces();
        for (const NetworkInterface &networkInterface : interfaces)
            m_nameWidth = std::max(m_nameWidth, printable(networkInterface.name()).size());
        for (const NetworkInterface &networkInterface : interfaces)
            tell(presentEvent, networkInterface);
        tell(preferredEvent, service()->preferredInterface());
    }

private:
    void onChange(const QString &event, const NetworkInterface &networkInterface)
    {
        tell(event, networkInterface);
        if (m_count > 0 && --m_count == 0)
            finish(Done);
    }

    void tell(const QString &event, const NetworkInterface &networkInterface)
    {
        const QDateTime now = QDateTime::currentDateTime();
        writeLine(json() ? jsonLine(event, networkInterface, now) : textLine(event, networkInterface, now));
        if (outputError() != 0)
            finish(Failed);
    }

    static QString jsonLine(const QString &event, const NetworkInterface &networkInterface, const QDateTime &now)
    {
        const bool none = networkInterface.isEmpty();
        return morvek::jsonLine({
            {QStringLiteral("time"), now.toUTC().toString(Qt::ISODateWithMs)},
            {QStringLiteral("event"), event},
            {QStringLiteral("interface"), none ? QJsonValue() : QJsonValue(toJson(networkInterface))},
        });
    }

    QString textLine(const QString &event, const NetworkInterface &networkInterface, const QDateTime &now) const
    {
        const QString name = networkInterface.isEmpty() ? QStringLiteral("-") : printable(networkInterface.name());
        QStringList line {now.toString(QStringLiteral("HH:mm:ss.zzz")), padded(event, configurationEvent.size()),
                          padded(name, m_nameWidth)};
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

    TerminationSignals m_signals;
    int m_count;
    int m_nameWidth = 0;
};

std::unique_ptr<Command> create(const CommandLine &line, QString *error)
{
    int count = 0;
    if (line.has(QStringLiteral("count"))) {
        const QString text = line.options.value(QStringLiteral("count"));
        count = text.toInt();
        if (count < 1) {
            *error = QStringLiteral("--count \"%1\" is no number of changes: give 1 or more").arg(text);
            return nullptr;
        }
    }
    return std::make_unique<MonitorCommand>(line, count);
}

} // namespace

CommandInfo monitorCommand()
{
    std::vector<Option> options {
        {QStringLiteral("count"), QStringLiteral("N"),
         QStringLiteral("stop after N changes, the present state not counted")},
    };
    const std::vector<Option> common = interfaceOptions();
    options.insert(options.end(), common.begin(), common.end());
    return {QStringLiteral("monitor"),
            {},
            0,
            options,
            {{QString(), QStringLiteral("tell each change as it comes, after the present state")}},
            QStringLiteral(
                "Each line tells one event and the interface's state at that moment:\n"
                "  present        at the start, one line an interface, then one \"preferred\"\n"
                "  preferred      the unit prefers this interface now, \"-\" for none (JSON: null)\n"
                "  configuration  a property of the interface has changed\n"
                "  connected, disconnected\n"
                "With --json each line is one object: \"time\" (UTC), \"event\", \"interface\". The command ends well\n"
                "by SIGINT (Ctrl-C), SIGTERM, --count, or, without --count, --timeout."),
            {QStringLiteral("morvekctl monitor"), QStringLiteral("morvekctl monitor --json --count 1 --timeout 60")},
            create};
}

} // namespace morvek
