// SPDX-License-Identifier: Apache-2.0
#include "listcommands.h"

#include "interfacecommand.h"
#include "interfacetext.h"
#include "output.h"
#include "table.h"
#include "texts.h"

namespace morvek {

namespace {

enum Column { Name, Type, Available, Connected, Preferred, Priority, Mode, Address, Gateway, Parent };

Cell connectedCell(const NetworkInterface &networkInterface)
{
    const bool connected = networkInterface.connected();
    return {word(connected), connected ? Tone::Good : Tone::Plain};
}

QString priorityText(const NetworkInterface &networkInterface)
{
    return networkInterface.priority() < 0 ? QString() : QString::number(networkInterface.priority());
}

bool isPreferred(const NetworkInterface &networkInterface, const NetworkInterface &preferred)
{
    return !preferred.isEmpty() && networkInterface.name() == preferred.name();
}

QJsonObject toJson(const NetworkInterface &networkInterface, const NetworkInterface &preferred)
{
    QJsonObject object = toJson(networkInterface);
    object.insert(QStringLiteral("preferred"), isPreferred(networkInterface, preferred));
    return object;
}

void writeJson(const QList<NetworkInterface> &interfaces, const NetworkInterface &preferred)
{
    QJsonArray array;
    for (const NetworkInterface &networkInterface : interfaces)
        array.append(toJson(networkInterface, preferred));
    writeLine(jsonLine(array));
}

void writeList(const QList<NetworkInterface> &interfaces, const NetworkInterface &preferred)
{
    Table table {{QStringLiteral("NAME"), QStringLiteral("TYPE"), QStringLiteral("AVAILABLE"),
                  QStringLiteral("CONNECTED"), QStringLiteral("PREFERRED"), QStringLiteral("PRIORITY"),
                  QStringLiteral("MODE"), QStringLiteral("ADDRESS"), QStringLiteral("GATEWAY"),
                  QStringLiteral("PARENT")}};
    for (const NetworkInterface &networkInterface : interfaces) {
        const NetworkInterfaceConfig config = networkInterface.configuration();
        table.append({networkInterface.name(), typeName(networkInterface.type()), word(networkInterface.available()),
                      connectedCell(networkInterface), word(isPreferred(networkInterface, preferred)),
                      priorityText(networkInterface), modeName(config), addressText(config), gatewayText(config),
                      networkInterface.parent().name()});
    }
    writeTable(table, {Parent, Available, Priority, Gateway, Mode, Preferred, Type});
}

class InterfacesCommand : public InterfaceCommand
{
public:
    using InterfaceCommand::InterfaceCommand;

protected:
    void run() override
    {
        if (json())
            writeJson(service()->interfaces(), service()->preferredInterface());
        else
            writeList(service()->interfaces(), service()->preferredInterface());
        finish(Done);
    }
};

class ShowCommand : public InterfaceCommand
{
public:
    explicit ShowCommand(const CommandLine &line)
        : InterfaceCommand(line),
          m_name(line.words.first())
    {
    }

protected:
    void run() override
    {
        NetworkInterface networkInterface;
        if (!find(m_name, &networkInterface))
            return;
        writeInterface(networkInterface, service()->preferredInterface(), json());
        finish(Done);
    }

private:
    const QString m_name;
};

class PreferredCommand : public InterfaceCommand
{
public:
    using InterfaceCommand::InterfaceCommand;

protected:
    void run() override
    {
        const NetworkInterface preferred = service()->preferredInterface();
        if (!preferred.isEmpty())
            writeInterface(preferred, preferred, json());
        else
            writeLine(json() ? QStringLiteral("null") : QStringLiteral("No interface is preferred."));
        finish(Done);
    }
};

} // namespace

void writeInterface(const NetworkInterface &networkInterface, const NetworkInterface &preferred, bool json)
{
    if (json) {
        writeLine(jsonLine(toJson(networkInterface, preferred)));
        return;
    }
    const NetworkInterfaceConfig config = networkInterface.configuration();
    const int mtu = networkInterface.maxTransmissionUnit();
    writeTable({
        {QStringLiteral("Name"), networkInterface.name()},
        {QStringLiteral("Type"), typeName(networkInterface.type())},
        {QStringLiteral("Available"), word(networkInterface.available())},
        {QStringLiteral("Connected"), connectedCell(networkInterface)},
        {QStringLiteral("Preferred"), word(isPreferred(networkInterface, preferred))},
        {QStringLiteral("Priority"), priorityText(networkInterface)},
        {QStringLiteral("Mode"), modeName(config)},
        {QStringLiteral("Address"), addressText(config)},
        {QStringLiteral("Gateway"), gatewayText(config)},
        {QStringLiteral("Hardware address"), networkInterface.macAddress()},
        {QStringLiteral("MTU"), mtu == 0 ? QString() : QString::number(mtu)},
        {QStringLiteral("Virtual"), word(networkInterface.isVirtual())},
        {QStringLiteral("Parent"), networkInterface.parent().name()},
    });
}

CommandInfo interfacesCommand()
{
    return {
        QStringLiteral("interfaces"),
        {},
        0,
        serviceOptions(),
        {{QString(), QStringLiteral("list the network interfaces")}},
        QStringLiteral("PRIORITY is 1 for the most preferred interface; MODE is auto for addresses obtained by DHCP,\n"
                       "manual for those given by hand. What is not known is \"-\", in JSON null."),
        {QStringLiteral("morvekctl interfaces"),
         QStringLiteral("morvekctl interfaces --json | jq -r '.[] | select(.connected).name'")},
        createFrom<InterfacesCommand>};
}

CommandInfo showCommand()
{
    return {QStringLiteral("show"),
            {interfaceWord()},
            0,
            serviceOptions(),
            {{QStringLiteral("NAME"), QStringLiteral("tell everything that is known of one interface")}},
            {},
            {QStringLiteral("morvekctl show eth0")},
            createFrom<ShowCommand>};
}

CommandInfo preferredCommand()
{
    return {QStringLiteral("preferred"),
            {},
            0,
            serviceOptions(),
            {{QString(), QStringLiteral("tell which interface the unit prefers now")}},
            QStringLiteral("When there is none, this says so, in JSON by null, and succeeds."),
            {QStringLiteral("morvekctl preferred"), QStringLiteral("morvekctl preferred --json | jq -r .name")},
            createFrom<PreferredCommand>};
}

} // namespace morvek
