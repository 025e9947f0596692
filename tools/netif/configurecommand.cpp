// SPDX-License-Identifier: Apache-2.0
#include "configurecommand.h"

#include "configureplan.h"
#include "interfacecommand.h"
#include "interfacetext.h"
#include "ipv4.h"
#include "listcommands.h"
#include "output.h"
#include "progress.h"
#include "terminationsignals.h"
#include "texts.h"

#include <asyncnetworkinterfaceoperation.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace morvek {

namespace {

// In milliseconds. A lease may take its time.
constexpr int ApplyTime = 30000;
/*! For addresses that are to go, when nobody waits for the outcome any more. */
constexpr int StayTime = 5000;
/*! For what is told in parts, until it is taken for another configuration. */
constexpr int SettleTime = 500;

/*!
 * An interface that is connected is disconnected first, and asked for its new configuration when its addresses are
 * gone: whoever leaves between leaves it without any. So neither a signal nor a deadline ends this at once.
 */
class ConfigureCommand : public InterfaceCommand
{
public:
    ConfigureCommand(const CommandLine &line, const NetworkInterfaceConfig &config)
        : InterfaceCommand(line),
          m_name(line.words.first()),
          m_config(config),
          m_dryRun(line.has(QStringLiteral("dry-run"))),
          m_waitUntilApplied(line.has(QStringLiteral("applied")))
    {
        m_stay.setSingleShot(true);
        connect(&m_stay, &QTimer::timeout, this, &ConfigureCommand::end);
        m_settle.setSingleShot(true);
        connect(&m_settle, &QTimer::timeout, this, &ConfigureCommand::onOverruled);
    }

protected:
    void run() override
    {
        NetworkInterface networkInterface;
        if (!find(m_name, &networkInterface))
            return;
        if (m_dryRun) {
            tellPlan(networkInterface);
            return;
        }
        if (isAlready(networkInterface)) {
            tell(networkInterface, QStringLiteral("%1 is auto already.").arg(m_name));
            return;
        }
        m_signals = std::make_unique<TerminationSignals>();
        connect(m_signals.get(), &TerminationSignals::received, this, &ConfigureCommand::onSignal);
        connect(service(), &NetworkInterfaceService::interfaceConfigurationChanged, this, &ConfigureCommand::onChanged);
        connect(service(), &NetworkInterfaceService::interfaceConnected, this, &ConfigureCommand::look);
        connect(service(), &NetworkInterfaceService::interfaceDisconnected, this, &ConfigureCommand::look);
        m_wasConnected = networkInterface.connected();
        m_hasAddress = !networkInterface.configuration().ipAddresses().isEmpty();
        m_operation.reset(service()->configure(networkInterface, m_config));
        connect(m_operation.get(), &AsyncNetworkInterfaceOperation::success, this, &ConfigureCommand::onSuccess);
        connect(m_operation.get(), &AsyncNetworkInterfaceOperation::failure, this, &ConfigureCommand::onFailure);
        enter(m_wasConnected ? Releasing : Asked);
    }

    void onTimeUp() override
    {
        if (m_operation)
            leave(QStringLiteral("the time is up"), TimedOut);
        else
            InterfaceCommand::onTimeUp();
    }

private:
    enum Stage {
        Releasing, //!< its addresses are to go
        Asked,     //!< the daemon is asked for the new configuration
        Accepted,
    };

    void enter(Stage stage)
    {
        m_stage = stage;
        if (m_isLeaving) {
            end();
            return;
        }
        const QString notes[] = {QStringLiteral("Waiting until %1 has left its network"),
                                 QStringLiteral("Waiting until %1 is accepted"),
                                 QStringLiteral("Waiting until %1 has its addresses")};
        show(notes[stage].arg(m_name));
        setDeadline(stage == Accepted ? ApplyTime : ChangeTime);
    }

    void show(const QString &deed)
    {
        if (!json() && !isFinished())
            m_progress.emplace(deed);
    }

    void onSignal()
    {
        if (std::exchange(m_isInterrupted, true))
            end();
        else
            leave(QStringLiteral("interrupted"), Failed);
    }

    /*! Ends the command as soon as the interface can be left. */
    void leave(const QString &cause, ExitCode code)
    {
        if (!std::exchange(m_isLeaving, true)) {
            m_cause = cause;
            m_leaveCode = code;
            m_stay.start(StayTime);
        }
        if (m_stage != Releasing)
            end();
        else
            show(QStringLiteral("Waiting until %1 can be left").arg(m_name)
                 + (m_isInterrupted ? QStringLiteral("; Ctrl-C leaves it at once") : QString()));
    }

    void end() { fail(m_cause + QLatin1String(": ") + stateText(), m_leaveCode); }

    void withdraw() override { m_progress.reset(); }

    QString stateAtDeath() const override { return QLatin1String(": ") + stateText(); }

    NetworkInterface present() const
    {
        const QList<NetworkInterface> interfaces = service()->interfaces();
        const auto it = std::find_if(interfaces.begin(), interfaces.end(),
                                     [this](const NetworkInterface &candidate) { return candidate.name() == m_name; });
        return it == interfaces.end() ? NetworkInterface() : *it;
    }

    QString stateText() const
    {
        const NetworkInterface now = present();
        if (now.isEmpty())
            return QStringLiteral("%1 has vanished").arg(m_name);
        const QString mode = modeName(m_config);
        const bool hasAddress = !now.configuration().ipAddresses().isEmpty();
        if (m_stage == Releasing && !hasAddress)
            return QStringLiteral("%1 has no address, and %2 may not have been asked for; %3")
                .arg(m_name, mode, wayOut(now));
        if (m_stage == Releasing)
            return QStringLiteral("%1 has its addresses still, and %2 was not asked for; should it lose them later, %3")
                .arg(m_name, mode, wayOut(now));
        const QString state = m_stage == Asked
            ? QStringLiteral("the networking daemon has not answered; it may still make %1 %2").arg(m_name, mode)
            : QStringLiteral("%1 was accepted, but %2 does not report it yet").arg(mode, m_name);
        return hasAddress ? state : state + QStringLiteral("; if no address comes, ") + wayOut(now);
    }

    void onSuccess()
    {
        if (isFinished())
            return;
        if (!m_waitUntilApplied && !m_isLeaving) {
            tell(m_operation->results().first(),
                 QStringLiteral("%1: the networking daemon has accepted %2.").arg(m_name, modeName(m_config)));
            return;
        }
        enter(Accepted);
        look(present());
    }

    void onFailure()
    {
        const AsyncOperationError error = m_operation->error();
        setFailureCode(error.code());
        const NetworkInterface now = present();
        const bool isStranded = !now.isEmpty() && now.configuration().ipAddresses().isEmpty()
            && (m_wasConnected || requestsFor(now, m_config).isEmpty());
        fail(QStringLiteral("%1 was not configured, code %2: %3")
                 .arg(m_name, QString::number(error.code()), error.message())
             + (isStranded ? QStringLiteral(" (%1 has no address: %2)").arg(m_name, wayOut(now)) : QString()));
    }

    void onChanged(const NetworkInterface &networkInterface)
    {
        if (networkInterface.name() != m_name)
            return;
        const bool hasAddress = !networkInterface.configuration().ipAddresses().isEmpty();
        // The library asks for the new configuration after this has been told. One that has had no address may be told
        // for another reason, for which the library does not.
        if (std::exchange(m_hasAddress, hasAddress) && !hasAddress)
            QTimer::singleShot(0, this, &ConfigureCommand::onReleased);
        look(networkInterface);
    }

    void look(const NetworkInterface &networkInterface)
    {
        if (m_stage != Accepted || networkInterface.name() != m_name || isFinished())
            return;
        if (isApplied(networkInterface))
            tell(networkInterface);
        else
            follow(networkInterface);
    }

    void onReleased()
    {
        if (m_stage == Releasing && !isFinished())
            enter(Asked);
    }

    /*! \a networkInterface is not as it was asked for: that will not come any more when it stays so. */
    void follow(const NetworkInterface &networkInterface)
    {
        if (!networkInterface.connected() || networkInterface.configuration().ipAddresses().isEmpty())
            m_settle.stop();
        else if (!m_settle.isActive())
            m_settle.start(SettleTime);
    }

    void onOverruled()
    {
        const NetworkInterfaceConfig config = present().configuration();
        fail(QStringLiteral("%1 was accepted, but %2 is %3 with %4 via %5 now: somebody has configured it meanwhile")
                 .arg(modeName(m_config), m_name, modeName(config), addressText(config), gatewayText(config)));
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
        m_progress.reset();
        if (json() || m_waitUntilApplied)
            writeInterface(networkInterface, service()->preferredInterface(), json());
        else
            writeLine(sentence);
        finish(Done);
    }

    void tellPlan(const NetworkInterface &networkInterface)
    {
        const QVector<ControlRequest> requests = requestsFor(networkInterface, m_config);
        if (requests.isEmpty() && !isAlready(networkInterface)) {
            const bool isStranded = networkInterface.configuration().ipAddresses().isEmpty();
            fail(
                QStringLiteral("nothing would be sent: %1 is %2 like that already%3")
                    .arg(m_name, modeName(m_config),
                         isStranded ? QStringLiteral(", without an address; ") + wayOut(networkInterface) : QString()));
            return;
        }
        QJsonArray array;
        for (const ControlRequest &request : requests) {
            array.append(
                QJsonObject {{QStringLiteral("msg"), request.message}, {QStringLiteral("dat"), request.content}});
            if (!json())
                writeLine(QStringLiteral("Would send %1 %2%3")
                              .arg(request.message, contentText(request),
                                   array.size() == 2 ? QStringLiteral(" when the addresses are gone") : QString()));
        }
        if (json())
            writeLine(
                jsonLine(QJsonObject {{QStringLiteral("interface"), m_name}, {QStringLiteral("requests"), array}}));
        else if (array.isEmpty())
            writeLine(QStringLiteral("Would send nothing: %1 is auto already.").arg(m_name));
        finish(Done);
    }

    const QString m_name;
    const NetworkInterfaceConfig m_config;
    const bool m_dryRun;
    const bool m_waitUntilApplied;
    std::unique_ptr<TerminationSignals> m_signals;
    std::unique_ptr<AsyncNetworkInterfaceOperation> m_operation;
    std::optional<Progress> m_progress;
    Stage m_stage = Asked;
    bool m_wasConnected = false;
    bool m_hasAddress = false;
    QTimer m_settle;
    QTimer m_stay;
    bool m_isLeaving = false;
    bool m_isInterrupted = false;
    QString m_cause;
    ExitCode m_leaveCode = Failed;
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
    options.push_back({QStringLiteral("dry-run"), {}, QStringLiteral("tell what would be sent, and send nothing")});
    return {
        QStringLiteral("configure"),
        {interfaceWord(), {QStringLiteral("auto|manual"), modes}},
        0,
        withServiceOptions(options),
        {{QStringLiteral("NAME auto"), QStringLiteral("let the interface obtain its addresses by DHCP")},
         {QStringLiteral("NAME manual --address A/N --gateway G"), QStringLiteral("give it these addresses")}},
        QStringLiteral("A connected interface is disconnected first, which may take %1, as may the answer. The\n"
                       "command returns when the networking daemon has accepted the configuration, which may be\n"
                       "before the addresses are there: --applied waits %2 more for them, and ends when\n"
                       "somebody else's configuration comes. When the time is up, or on Ctrl-C, an interface that is\n"
                       "being disconnected is waited for until it can be left, %3 at most; a second Ctrl-C\n"
                       "ends that. An interface that is auto already and has an address is left as it is, with\n"
                       "code 0.")
            .arg(inSeconds(ChangeTime), inSeconds(ApplyTime), inSeconds(StayTime)),
        {QStringLiteral("morvekctl configure eth0 manual --address 192.168.0.2/24 --gateway 192.168.0.1"),
         QStringLiteral("morvekctl configure eth0 auto --applied --timeout 60"),
         QStringLiteral("morvekctl configure eth0 auto --dry-run")},
        create};
}

} // namespace morvek
