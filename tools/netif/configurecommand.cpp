// SPDX-License-Identifier: Apache-2.0
#include "configurecommand.h"

#include "interfacecommand.h"
#include "interfacetext.h"
#include "ipv4.h"
#include "listcommands.h"
#include "output.h"

#include <asyncnetworkinterfaceoperation.h>

#include <algorithm>

namespace morvek {

namespace {

class ConfigureCommand : public InterfaceCommand
{
public:
    ConfigureCommand(const CommandLine &line, const NetworkInterfaceConfig &config)
        : InterfaceCommand(line),
          m_name(line.words.first()),
          m_config(config),
          m_waitUntilApplied(line.has(QStringLiteral("applied")))
    {
    }

protected:
    void run() override
    {
        NetworkInterface networkInterface;
        if (!find(m_name, &networkInterface))
            return;
        if (isAlready(networkInterface)) {
            tell(networkInterface, QStringLiteral("%1 is auto already.").arg(m_name));
            return;
        }
        setOverdue(QStringLiteral("the networking daemon has not answered; it may still change %1").arg(m_name));
        m_operation.reset(service()->configure(networkInterface, m_config));
        connect(m_operation.get(), &AsyncNetworkInterfaceOperation::success, this, &ConfigureCommand::onSuccess);
        connect(m_operation.get(), &AsyncNetworkInterfaceOperation::failure, this, &ConfigureCommand::onFailure);
    }

private:
    void onSuccess()
    {
        if (!m_waitUntilApplied) {
            tell(m_operation->results().first(),
                 QStringLiteral("%1: the networking daemon has accepted %2.").arg(m_name, modeName(m_config)));
            return;
        }
        setOverdue(QStringLiteral("%1 was accepted, but %2 does not report it yet").arg(modeName(m_config), m_name));
        connect(service(), &NetworkInterfaceService::interfaceConfigurationChanged, this, &ConfigureCommand::look);
        connect(service(), &NetworkInterfaceService::interfaceConnected, this, &ConfigureCommand::look);
        const QList<NetworkInterface> interfaces = service()->interfaces();
        for (const NetworkInterface &networkInterface : interfaces)
            look(networkInterface);
    }

    void onFailure()
    {
        const AsyncOperationError error = m_operation->error();
        setFailureCode(error.code());
        complain(QStringLiteral("%1 was not configured, code %2: %3")
                     .arg(m_name, QString::number(error.code()), error.message()));
        finish(Failed);
    }

    void look(const NetworkInterface &networkInterface)
    {
        if (networkInterface.name() == m_name && isApplied(networkInterface))
            tell(networkInterface);
    }

    /*! The library refuses what is the same; who wants addresses by DHCP and has them has what he wants. */
    bool isAlready(const NetworkInterface &networkInterface) const
    {
        const NetworkInterfaceConfig config = networkInterface.configuration();
        return m_config.type() == NetworkInterfaceConfig::Auto && config.type() == NetworkInterfaceConfig::Auto
            && !config.ipAddresses().isEmpty() && (networkInterface.connected() || !m_waitUntilApplied);
    }

    bool isApplied(const NetworkInterface &networkInterface) const
    {
        const NetworkInterfaceConfig config = networkInterface.configuration();
        if (!networkInterface.connected() || config.type() != m_config.type() || config.ipAddresses().isEmpty())
            return false;
        return m_config.type() == NetworkInterfaceConfig::Auto || config == m_config;
    }

    /*! Ends the command well: with the interface, or with \a sentence when nobody has asked for that. */
    void tell(const NetworkInterface &networkInterface, const QString &sentence = QString())
    {
        if (json() || m_waitUntilApplied)
            writeInterface(networkInterface, service()->preferredInterface(), json());
        else
            writeLine(sentence);
        finish(Done);
    }

    const QString m_name;
    const NetworkInterfaceConfig m_config;
    const bool m_waitUntilApplied;
    std::unique_ptr<AsyncNetworkInterfaceOperation> m_operation;
};

QStringList modes(const QStringList & = {})
{
    return {QStringLiteral("auto"), QStringLiteral("manual")};
}

std::vector<Option> addressOptions()
{
    const QString manual = QStringLiteral("manual: ");
    return {
        {QStringLiteral("address"), QStringLiteral("A/N"),
         manual + QStringLiteral("the interface's IPv4 address, like 10.20.0.5/16")},
        {QStringLiteral("netmask"), QStringLiteral("M"),
         manual + QStringLiteral("its netmask, like 255.255.0.0, in place of /N")},
        {QStringLiteral("prefix"), QStringLiteral("N"), manual + QStringLiteral("or the length of that, like 16")},
        {QStringLiteral("gateway"), QStringLiteral("G"), manual + QStringLiteral("the router, in the same network")},
    };
}

bool readConfiguration(const CommandLine &line, NetworkInterfaceConfig *config, QString *error)
{
    const QString mode = line.words.last();
    if (!modes().contains(mode)) {
        *error = QStringLiteral("\"%1\" is no mode: use auto or manual").arg(mode);
        return false;
    }
    if (mode == QLatin1String("manual"))
        return manualConfiguration(
            {line.options.value(QStringLiteral("address")), line.options.value(QStringLiteral("netmask")),
             line.options.value(QStringLiteral("prefix")), line.options.value(QStringLiteral("gateway"))},
            config, error);
    for (const Option &option : addressOptions()) {
        if (!line.has(option.name))
            continue;
        *error = QStringLiteral("auto takes no --%1: leave it out, or use manual").arg(option.name);
        return false;
    }
    return true;
}

std::unique_ptr<Command> create(const CommandLine &line, QString *error)
{
    NetworkInterfaceConfig config;
    if (!readConfiguration(line, &config, error))
        return nullptr;
    return std::make_unique<ConfigureCommand>(line, config);
}

} // namespace

CommandInfo configureCommand()
{
    std::vector<Option> options = addressOptions();
    options.push_back({QStringLiteral("applied"),
                       {},
                       QStringLiteral("return only when the interface is connected and reports the new addresses")});
    return {QStringLiteral("configure"),
            {interfaceWord(), {QStringLiteral("auto|manual"), modes}},
            0,
            withServiceOptions(options),
            {{QStringLiteral("NAME auto"), QStringLiteral("let the interface obtain its addresses by DHCP")},
             {QStringLiteral("NAME manual --address A/N --gateway G"), QStringLiteral("give it these addresses")}},
            QStringLiteral(
                "A connected interface is disconnected first. The command returns when the networking daemon\n"
                "has accepted the configuration, which may be before the addresses are there: see --applied.\n"
                "A daemon may keep silent for ever: see --timeout. An interface that is auto already and has an\n"
                "address is left as it is, with code 0."),
            {QStringLiteral("morvekctl configure eth0 manual --address 192.168.0.2/24 --gateway 192.168.0.1"),
             QStringLiteral("morvekctl configure eth0 auto --applied --timeout 30")},
            create};
}

} // namespace morvek
