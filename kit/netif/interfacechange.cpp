// SPDX-License-Identifier: Apache-2.0
#include "interfacechange_p.h"

#include "interfacebell_p.h"
#include "networkservices.h"

#include <asyncnetworkinterfaceoperation.h>
#include <networkinterfaceservice.h>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

// In milliseconds.
constexpr int StayTime = 5000;
constexpr int SettleTime = 500;  // for what is told in parts, until it is taken for another configuration
constexpr int NoDaemonCode = -1; // of the library, which asks for nothing that it refuses itself

bool hasAddress(const NetworkInterface &networkInterface)
{
    return !networkInterface.configuration().ipAddresses().isEmpty();
}

/*! Whether the library refuses to ask for \a config, since it is so already. */
bool isSame(const NetworkInterfaceConfig &present, const NetworkInterfaceConfig &config)
{
    const bool isAuto = present.type() == NetworkInterfaceConfig::Auto;
    return present == config || (isAuto && config.type() == NetworkInterfaceConfig::Auto);
}

} // namespace

InterfaceChange::InterfaceChange(NetworkServices *services, const QString &name)
    : NetworkController(Networking, services),
      m_name(name)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(SettleTime);
    connect(&m_settle, &QTimer::timeout, this, &InterfaceChange::onSettled);
    m_stay.setSingleShot(true);
    m_stay.setInterval(StayTime);
    connect(&m_stay, &QTimer::timeout, this, &InterfaceChange::leave);
    setServices(services);
}

InterfaceChange::~InterfaceChange() = default;

bool InterfaceChange::isAwaited(const NetworkServices *services, const QString &name)
{
    const auto changes = services->findChildren<InterfaceChange *>(QString(), Qt::FindDirectChildrenOnly);
    return std::any_of(changes.begin(), changes.end(), [&name](const InterfaceChange *change) {
        return change->m_name == name && change->m_index >= 0 && !change->m_isAbandoned;
    });
}

NetworkInterface InterfaceChange::present() const
{
    if (!service())
        return NetworkInterface();
    const QList<NetworkInterface> interfaces = interfaceService()->interfaces();
    const auto it = std::find_if(interfaces.begin(), interfaces.end(),
                                 [this](const NetworkInterface &candidate) { return candidate.name() == m_name; });
    return it == interfaces.end() ? NetworkInterface() : *it;
}

void InterfaceChange::begin(const QVector<NetworkInterfaceConfig> &configs)
{
    // What was abandoned must not ask for something else behind this one's back.
    const auto others = services()->findChildren<InterfaceChange *>(QString(), Qt::FindDirectChildrenOnly);
    for (InterfaceChange *other : others) {
        if (other != this && other->m_name == m_name)
            other->leave();
    }
    m_configs = configs;
    const auto *bell = new InterfaceBell(interfaceService(), this);
    connect(bell, &InterfaceBell::rung, this, &InterfaceChange::look);
    connect(interfaceService(), &NetworkInterfaceService::interfaceConfigurationChanged, this,
            &InterfaceChange::onChanged);
    next();
}

void InterfaceChange::abandon()
{
    m_isAbandoned = true;
    if (m_isHeld)
        m_stay.start();
    else
        leave();
}

bool InterfaceChange::isApplied(const NetworkInterface &networkInterface, const NetworkInterfaceConfig &config)
{
    const NetworkInterfaceConfig present = networkInterface.configuration();
    if (!networkInterface.connected() || present.type() != config.type() || !hasAddress(networkInterface))
        return false;
    return config.type() == NetworkInterfaceConfig::Auto || present == config;
}

// It is of no use to one that begins when the service is ready: that one stays.
void InterfaceChange::onServiceReplaced() { }

void InterfaceChange::onAvailabilityChanged()
{
    if (m_index >= 0 && availability() != Ready)
        end(Died);
}

NetworkInterfaceService *InterfaceChange::interfaceService() const
{
    return static_cast<NetworkInterfaceService *>(service());
}

void InterfaceChange::next()
{
    ++m_index;
    const NetworkInterface now = present();
    const NetworkInterfaceConfig &config = m_configs.at(m_index);
    if (isSame(now.configuration(), config)) {
        accept();
        return;
    }
    m_step = now.connected() ? Releasing : Asked;
    m_hasAddress = hasAddress(now);
    m_operation.reset(interfaceService()->configure(now, config));
    connect(m_operation.get(), &AsyncNetworkInterfaceOperation::success, this, &InterfaceChange::onSuccess);
    connect(m_operation.get(), &AsyncNetworkInterfaceOperation::failure, this, &InterfaceChange::onFailure);
    setHeld(m_step == Releasing || !isLast());
}

void InterfaceChange::onChanged(const NetworkInterface &networkInterface)
{
    if (m_isOver || m_step != Releasing || networkInterface.name() != m_name)
        return;
    const bool hadAddress = std::exchange(m_hasAddress, hasAddress(networkInterface));
    // The library asks for the configuration after this has been told. One that has had no address may be told for
    // another reason, for which the library does not.
    if (!m_hasAddress && (hadAddress || !networkInterface.connected()))
        QTimer::singleShot(0, this, &InterfaceChange::onReleased);
}

void InterfaceChange::onReleased()
{
    if (m_isOver || m_step != Releasing)
        return;
    m_step = Asked;
    setHeld(!isLast());
}

void InterfaceChange::onSuccess()
{
    if (!m_isOver)
        accept();
}

void InterfaceChange::accept()
{
    const QPointer<InterfaceChange> self(this);
    m_step = Accepted;
    setHeld(!isLast());
    if (self)
        look();
}

void InterfaceChange::onFailure()
{
    if (m_isOver)
        return;
    const AsyncOperationError error = m_operation->error();
    if (present().isEmpty())
        end(Vanished);
    else
        end(error.code() == NoDaemonCode ? Died : Refused, error.code(), error.message());
}

void InterfaceChange::look()
{
    if (m_isOver)
        return;
    const NetworkInterface now = present();
    if (now.isEmpty()) {
        end(Vanished);
        return;
    }
    const bool isSo = m_step == Accepted && isApplied(now, m_configs.at(m_index));
    if (isOtherwiseConnected(now) || (isSo && isLast()))
        end(Applied);
    else if (isSo)
        next();
    else if (!now.connected() || !hasAddress(now))
        m_settle.stop();
    else if (m_step == Accepted && !m_settle.isActive())
        m_settle.start(); // what stands in its place will not go any more when it stays
}

void InterfaceChange::onSettled()
{
    if (!m_isOver)
        end(Overtaken);
}

/*! Whether it is connected, though not as the first of two configurations wants it: what both were for has come. */
bool InterfaceChange::isOtherwiseConnected(const NetworkInterface &networkInterface) const
{
    return m_configs.size() > 1 && networkInterface.connected() && hasAddress(networkInterface)
        && networkInterface.configuration() != m_configs.first();
}

// Who hears that the services are idle may delete them, and this.
void InterfaceChange::setHeld(bool held)
{
    if (std::exchange(m_isHeld, held) == held)
        return;
    if (held) {
        beginUninterruptible();
        return;
    }
    if (m_isAbandoned)
        leave();
    endUninterruptible();
}

void InterfaceChange::end(End end, int code, const QString &text)
{
    if (!std::exchange(m_hasEnded, true))
        Q_EMIT ended(end, code, text);
    if (end != Applied)
        setHeld(false); // nothing will be sent any more
}

void InterfaceChange::leave()
{
    if (std::exchange(m_isOver, true))
        return;
    deleteLater();
    setHeld(false);
}

} // namespace morvek
