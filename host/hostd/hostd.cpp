// SPDX-License-Identifier: Apache-2.0
#include "hostd.h"

#include "eventplayer.h"
#include "formerobjects.h"
#include "hostdoptions.h"
#include "hotspotcontrol.h"
#include "hotspotprofile.h"
#include "managedmachine.h"
#include "networkingdaemon.h"
#include "recordedworld.h"
#include "rootlock.h"
#include "simulatedhotspot.h"
#include "simulatednetwork.h"
#include "simulatedradio.h"
#include "stage.h"
#include "systemnetwork.h"
#include "tetheringdaemon.h"
#include "timelineplayer.h"
#include "wifidaemon.h"

#include <QtCore/QCoreApplication>

#include <chrono>
#include <utility>

namespace morvek {

namespace {

constexpr std::chrono::seconds LookInterval {1};

} // namespace

Hostd::Hostd(const HostdOptions &options, const Scenario &scenario, const Recording &recording)
    : m_lock(std::make_unique<RootLock>()),
      m_log(options.verbose),
      m_pace(options.speed, options.seed == -1 ? scenario.seed : static_cast<quint32>(options.seed)),
      m_faults(scenario.faults),
      m_without(options.without),
      m_isFresh(options.fresh)
{
    if (options.hold)
        m_pace.hold();
    switch (options.network) {
    case NetworkSource::Manager: // what there is, it tells when it is asked
        m_machine = std::make_unique<ManagedMachine>(options.manager, &m_world, &m_pace, &m_log);
        return;
    case NetworkSource::Kernel:
        m_system = std::make_unique<SystemNetwork>(&m_world, &m_log);
        makeDaemons(m_system.get(), nullptr, nullptr);
        break;
    case NetworkSource::Scenario:
        makeScenario(scenario);
        break;
    case NetworkSource::Recording:
        makeRecording(recording);
        break;
    }
    makeStage(scenario);
}

Hostd::~Hostd() = default;

void Hostd::makeScenario(const Scenario &scenario)
{
    m_simulated = std::make_unique<SimulatedNetwork>(scenario, &m_world, &m_pace);
    if (!scenario.wifi.interface.isEmpty())
        m_radio = std::make_unique<SimulatedRadio>(scenario, &m_world, m_simulated.get(), &m_pace);
    if (!scenario.hotspot.profile.isEmpty())
        m_hotspot = std::make_unique<SimulatedHotspot>(scenario, &m_world, &m_pace);
    makeDaemons(m_simulated.get(), m_radio.get(), m_hotspot.get());
    for (const auto &daemon : m_daemons)
        daemon.second->setReplyDelay(scenario.delays.reply);
    m_events = std::make_unique<EventPlayer>(
        PlayedWorld {&m_world, m_simulated.get(), m_radio.get(), m_hotspot.get(), &m_faults, servedDaemons()}, &m_log);
    m_player = std::make_unique<TimelinePlayer>(
        &m_pace, [this, timeline = scenario.timeline](int number) { m_events->play(timeline.at(number)); });
    QVector<int> times;
    for (const TimelineEvent &event : scenario.timeline)
        times += event.at;
    m_player->setTimes(times);
}

/*! Every request meets the refusal first: what carries requests out is never asked. */
void Hostd::makeRecording(const Recording &recording)
{
    m_faults = FaultPlan({RecordedWorld::refusal()});
    m_recorded = std::make_unique<RecordedWorld>(recording, &m_world, &m_pace, &m_log);
    const DaemonTools daemonTools = tools();
    m_daemons[Service::Networking] = std::make_unique<NetworkingDaemon>(nullptr, daemonTools);
    if (m_recorded->services().count(Service::Wifi) > 0)
        m_daemons[Service::Wifi] = std::make_unique<WifiDaemon>(nullptr, daemonTools);
    if (m_recorded->services().count(Service::Tethering) > 0)
        m_daemons[Service::Tethering] = std::make_unique<TetheringDaemon>(nullptr, &m_store, daemonTools);
}

DaemonTools Hostd::tools()
{
    return {&m_world, &m_faults, &m_pace, &m_log, [this](QString *reason) { return mayPublish(reason); }, &m_requests};
}

void Hostd::makeDaemons(InterfaceControl *interfaces, RadioControl *radio, HotspotControl *hotspot)
{
    const DaemonTools daemonTools = tools();
    const auto isNew = [this](const void *control, Service service) {
        return control && m_daemons.count(service) == 0;
    };
    if (isNew(interfaces, Service::Networking))
        m_daemons[Service::Networking] = std::make_unique<NetworkingDaemon>(interfaces, daemonTools);
    if (isNew(radio, Service::Wifi))
        m_daemons[Service::Wifi] = std::make_unique<WifiDaemon>(radio, daemonTools);
    if (isNew(hotspot, Service::Tethering))
        m_daemons[Service::Tethering] = std::make_unique<TetheringDaemon>(hotspot, &m_store, daemonTools);
    m_hotspotControl = hotspot;
}

QMap<Service, Daemon *> Hostd::servedDaemons() const
{
    QMap<Service, Daemon *> daemons;
    for (const auto &daemon : m_daemons)
        daemons.insert(daemon.first, m_without.contains(daemon.first) ? nullptr : daemon.second.get());
    return daemons;
}

void Hostd::makeStage(const Scenario &scenario)
{
    m_stage = std::make_unique<Stage>(
        scenario,
        StageTools {m_events.get(), &m_faults, &m_pace, &m_requests, &m_log, servedDaemons(),
                    m_recorded ? QStringLiteral("a recording is played: nothing else can be")
                               : QStringLiteral("this machine's own interfaces are shown: nothing can be played")});
}

HostdExitCode Hostd::startMachine(const QVector<Service> &served, QString *error)
{
    if (!m_machine->start(root(), served, error))
        return HostdExitCode::NoManager;
    makeDaemons(m_machine->interfaces(), m_machine->radio(), m_machine->hotspot());
    makeStage(Scenario());
    m_machine->setGrown([this] { serveMore(); });
    const QList<Daemon *> daemons = servedDaemons().values();
    if (std::any_of(daemons.begin(), daemons.end(), [](const Daemon *daemon) { return daemon != nullptr; }))
        return HostdExitCode::Success;
    *error = QStringLiteral("no daemon is left to serve");
    return HostdExitCode::NothingToServe;
}

/*! What is not there when a daemon starts is taken up as after its death. */
void Hostd::serveMore()
{
    if (!m_looks.isActive()) // it ends
        return;
    const bool hadHotspot = m_hotspotControl;
    makeDaemons(m_machine->interfaces(), m_machine->radio(), m_machine->hotspot());
    m_stage->setDaemons(servedDaemons());
    if (m_hotspotControl && !hadHotspot && !m_without.contains(Service::Tethering))
        restoreHotspot();
    const QList<Daemon *> daemons = servedDaemons().values();
    for (Daemon *daemon : daemons) {
        if (daemon && daemon->isDead())
            daemon->comeBack();
    }
}

HostdExitCode Hostd::start(QString *error)
{
    QVector<Service> served;
    for (const ServiceWords &words : Services) {
        if (!m_without.contains(words.service))
            served.append(words.service);
    }
    switch (m_lock->take(served, error)) {
    case RootLock::Taken:
        break;
    case RootLock::Unusable:
        return HostdExitCode::UnusableRoot;
    case RootLock::Held:
        return HostdExitCode::AlreadyRunning;
    }
    m_store.setRoot(root());
    if ((m_isFresh && !forgetFormerRuns(served, error)) || (m_system && !m_system->start(error)))
        return HostdExitCode::CannotPublish;
    if (m_machine) {
        const HostdExitCode code = startMachine(served, error);
        if (code != HostdExitCode::Success || m_isEnding)
            return code;
    }
    if (m_hotspotControl && served.contains(Service::Tethering))
        restoreHotspot();
    if (!startDaemons(error))
        return HostdExitCode::CannotPublish;
    if (m_player)
        m_player->start();
    if (m_recorded)
        m_recorded->start();
    keepStage();
    QObject::connect(&m_looks, &QTimer::timeout, &m_looks, [this] { look(); });
    m_looks.setTimerType(Qt::VeryCoarseTimer);
    m_looks.start(LookInterval);
    return HostdExitCode::Success;
}

void Hostd::end(HostdExitCode code)
{
    m_isAskedToEnd = true;
    if (std::exchange(m_isEnding, true) || !m_looks.isActive())
        QCoreApplication::exit(static_cast<int>(code));
    else
        giveBack(code);
}

void Hostd::giveBack(HostdExitCode code)
{
    const auto quit = [code] { QCoreApplication::exit(static_cast<int>(code)); };
    if (!m_machine) {
        quit();
        return;
    }
    // Nobody asks for anything any more.
    m_looks.stop();
    m_stage.reset();
    m_daemons.clear();
    m_machine->giveBack(quit);
}

/*!
 * The root may have been removed or exchanged: then it is taken anew, unless another morvek-hostd was faster. No reason
 * means that this one ends.
 */
bool Hostd::mayPublish(QString *reason)
{
    const RootLock::Result result = m_isEnding ? RootLock::Held : m_lock->keep(reason);
    if (result == RootLock::Held) {
        if (!std::exchange(m_isEnding, true)) {
            m_log.trouble(*reason);
            // Not here, where one of the daemons that end with this has asked.
            QTimer::singleShot(0, &m_looks, [this] { giveBack(HostdExitCode::AlreadyRunning); });
        }
        reason->clear();
    }
    return result == RootLock::Taken;
}

/*! Nothing tells when somebody spoils what the daemons publish, or the root, in all ways in which that can be done. */
void Hostd::look()
{
    QString reason;
    const bool may = mayPublish(&reason);
    if (!std::exchange(m_isTroubled, !may) && !reason.isEmpty())
        m_log.trouble(reason);
    for (const auto &daemon : m_daemons) {
        if (may)
            daemon.second->look();
    }
    if (may)
        keepStage();
}

void Hostd::keepStage()
{
    QString reason;
    const bool has = m_stage->keep(&reason);
    if (!std::exchange(m_hasNoStage, !has) && !has)
        m_log.trouble(QStringLiteral("nothing can be played or looked at here: ") + reason);
}

QString Hostd::root() const
{
    return m_lock->root();
}

bool Hostd::forgetFormerRuns(const QVector<Service> &services, QString *error) const
{
    return (!services.contains(Service::Tethering) || m_store.forget(error))
        && std::all_of(services.begin(), services.end(),
                       [error](Service service) { return FormerObjects::remove(service, error); });
}

void Hostd::restoreHotspot()
{
    QString error;
    const QJsonObject profile = m_store.load(&error);
    if (!error.isEmpty())
        m_log.trouble(error);
    if (profile.isEmpty()) {
        // A machine's is made up, with a passphrase that has to be the same the next time.
        if (m_machine && error.isEmpty() && !m_store.save(m_hotspotControl->profile(), &error))
            m_log.trouble(QStringLiteral("cannot store the hotspot's profile: ") + error);
        return;
    }
    if (!m_machine && !HotspotProfile::isSame(profile, m_hotspotControl->profile()))
        m_log.trouble(QStringLiteral("the hotspot's profile is the one that is stored in \"%1\", not the scenario's: "
                                     "--fresh forgets it")
                          .arg(m_store.file()));
    m_hotspotControl->setProfile(profile);
}

bool Hostd::startDaemons(QString *error)
{
    return std::all_of(m_daemons.begin(), m_daemons.end(), [this, error](const auto &daemon) {
        return m_without.contains(daemon.first) || daemon.second->start(error);
    });
}

} // namespace morvek
