// SPDX-License-Identifier: Apache-2.0
// Configurations of interfaces and what the networking daemon makes of them. A script: "up NAME", "down NAME",
// "release NAME" and "vanish NAME" change interfaces, "set NAME KIND" configures one, "ok N" and "err N CODE TEXT" end
// the command N. A model says which commands are sent and how each configuration ends.
#include "asyncnetworkinterfaceoperation.h"
#include "fuzz.h"
#include "logcapture.h"
#include "networkingdaemon.h"
#include "networkinterfaceservice.h"
#include "operationend.h"

#include <memory>

using namespace morvek;

namespace {

const char *const Unknown = "failure -1 The interface to configure is not in the list of known interfaces.";
const char *const Same =
    "failure -1 The new configuration settings are the same as the current configuration settings.";
const char *const Incomplete = "failure -1 For manual configuration, the new configuration settings must specify an IP "
                               "address, a netmask address and a gateway address.";

struct Operation
{
    std::unique_ptr<AsyncNetworkInterfaceOperation> operation;
    std::unique_ptr<OperationEnd<AsyncNetworkInterfaceOperation>> end;
    QStringList expected;
};

struct Command
{
    QString name;
    size_t operation;
    bool connects;
    QString settings; //!< of the command that follows
    bool answered = false;
    bool refused = false;
    bool followed = false;
    bool vanished = false;
};

NetworkInterfaceConfig configOf(const QByteArray &kind)
{
    NetworkInterfaceConfig config;
    if (kind == "auto")
        return config;
    config.setType(kind == "other" ? NetworkInterfaceConfig::ConfigurationType(2) : NetworkInterfaceConfig::Manual);
    QNetworkAddressEntry entry;
    entry.setIp(QHostAddress(QStringLiteral("10.1.1.20")));
    entry.setNetmask(QHostAddress(QStringLiteral("255.255.255.0")));
    config.addIpAddress(entry);
    if (kind != "partial")
        config.addGatewayAddress(QHostAddress(QStringLiteral("10.1.1.1")));
    return config;
}

QString settingsOf(const QByteArray &kind)
{
    if (kind == "auto")
        return QStringLiteral(R"({"manual":"no","manual6":"off"})");
    if (kind == "other")
        return QStringLiteral(R"({"manual6":"off"})");
    return QStringLiteral(R"({"gateway":"10.1.1.1","ip_address":"10.1.1.20","manual":"yes","manual6":"off",)"
                          R"("netmask":"255.255.255.0"})");
}

class Play
{
public:
    void line(Fuzz::Line line)
    {
        const QByteArray first = line.next();
        const QString name = QLatin1String(first == "b" ? "b" : "a");
        if (line.word == "up" || line.word == "down")
            publish(name, line.word == "up");
        else if (line.word == "release" && m_connected.contains(name))
            release(name);
        else if (line.word == "vanish" && m_connected.contains(name))
            vanish(name);
        else if (line.word == "set" && m_last.contains(name))
            configure(name, line.rest);
        else if (line.word == "ok" || line.word == "err")
            answer(first.toInt(), line);
        check();
    }

private:
    /*! Whether there was such an interface before or not, it has an address, by hand or not, and a gateway. */
    void publish(const QString &name, bool connected)
    {
        const ZopDouble::Values values = NetworkingDaemon::with(
            NetworkingDaemon::with(NetworkingDaemon::wired(), "connected", text(connected ? "true" : "false")),
            "manual", text(connected ? "yes" : "no"));
        if (m_connected.contains(name))
            ZopDouble::publish(NetworkingDaemon::interfacePath(name), values);
        else
            ZopDouble::add(NetworkingDaemon::interfaces(), name, values);
        m_connected.insert(name, connected);
        remember();
    }

    void remember()
    {
        const QList<NetworkInterface> interfaces = m_service.interfaces();
        for (const NetworkInterface &one : interfaces)
            m_last.insert(one.name(), one);
    }

    void release(const QString &name)
    {
        for (size_t i = 0, count = m_commands.size(); i < count; ++i) {
            if (m_commands[i].name != name || m_commands[i].connects || m_commands[i].followed
                || m_commands[i].vanished)
                continue;
            m_commands[i].followed = true;
            const QString settings = m_commands[i].settings;
            sendConnect(name, m_commands[i].operation, settings);
        }
        NetworkingDaemon::releaseAddresses(name.toLatin1().constData());
        remember();
    }

    void vanish(const QString &name)
    {
        for (Command &command : m_commands) {
            const bool waits = command.name == name && !command.vanished && !command.connects && !command.followed;
            if (waits && command.answered && !command.refused)
                m_operations[command.operation].expected.append(QLatin1String(Unknown));
            command.vanished = command.vanished || command.name == name;
        }
        m_connected.remove(name);
        NetworkingDaemon::removeInterface(name.toLatin1().constData());
    }

    void sendConnect(const QString &name, size_t operation, const QString &settings)
    {
        m_commands.push_back({name, operation, true, settings});
        m_sent.append(QStringLiteral("net_connected [\"%1\",").arg(name) + settings + QLatin1Char(']'));
    }

    void configure(const QString &name, const QByteArray &kind)
    {
        const NetworkInterface networkInterface = m_last.value(name);
        const NetworkInterfaceConfig config = kind == "same" ? networkInterface.configuration() : configOf(kind);
        Operation operation;
        const bool automatic = config.type() == NetworkInterfaceConfig::Auto;
        if (!m_connected.contains(name)) {
            operation.expected.append(QLatin1String(Unknown));
        } else if (kind == "same" || (automatic && networkInterface.configuration().type() == config.type())) {
            operation.expected.append(QLatin1String(Same));
        } else if (kind == "partial") {
            operation.expected.append(QLatin1String(Incomplete));
        } else if (m_connected.value(name)) {
            m_commands.push_back({name, m_operations.size(), false, settingsOf(kind)});
            m_sent.append(QStringLiteral("net_disconnected \"%1\"").arg(name));
        } else {
            sendConnect(name, m_operations.size(), settingsOf(kind));
        }
        operation.operation.reset(m_service.configure(networkInterface, config));
        operation.end = std::make_unique<OperationEnd<AsyncNetworkInterfaceOperation>>(operation.operation.get());
        m_operations.push_back(std::move(operation));
    }

    void answer(int index, Fuzz::Line &line)
    {
        const int code = line.next().toInt();
        const QString reason = Fuzz::text(line.rest);
        if (index < 0 || index >= int(m_commands.size()))
            return;
        Command &command = m_commands[size_t(index)];
        const bool refused = line.word == "err";
        if (!command.answered) {
            expectAnswer(command, refused,
                         QStringLiteral("failure %1 The system was unable to configure the interface.").arg(code)
                             + (reason.isEmpty() ? QString() : QLatin1String(" (") + reason + QLatin1Char(')')));
            command.answered = true;
            command.refused = refused;
        }
        if (refused)
            ZopDouble::answerError(index, code, reason);
        else
            ZopDouble::answer(index);
    }

    void expectAnswer(const Command &command, bool refused, const QString &failure)
    {
        QStringList &expected = m_operations[command.operation].expected;
        if (refused)
            expected.append(failure);
        else if (command.connects)
            expected.append(QLatin1String("success ") + command.name);
        else if (command.vanished && !command.followed)
            expected.append(QLatin1String(Unknown));
    }

    void check()
    {
        QStringList sent;
        const QList<ZopDouble::Command> commands = ZopDouble::commands();
        for (const ZopDouble::Command &command : commands)
            sent.append(command.message + QLatin1Char(' ') + command.dat.toString());
        Fuzz::expectEqual(sent, m_sent, "the commands");
        for (const Operation &operation : m_operations) {
            const QString expected = operation.expected.join(QLatin1String(" / "));
            Fuzz::expectEqual(operation.end->text(), expected, "how an operation ends, and how often");
        }
    }

    LogCapture m_log {7};
    NetworkInterfaceService m_service;
    QMap<QString, bool> m_connected;
    QMap<QString, NetworkInterface> m_last;
    std::vector<Operation> m_operations;
    std::vector<Command> m_commands;
    QStringList m_sent;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ZopDouble::reset();
    NetworkingDaemon::start();
    Play play;
    const QList<Fuzz::Line> lines = Fuzz::script(data, size, 32);
    for (const Fuzz::Line &line : lines)
        play.line(line);
    return 0;
}
