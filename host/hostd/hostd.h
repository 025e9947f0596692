// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOSTD_H
#define MORVEK_HOSTD_HOSTD_H

#include "eventlog.h"
#include "faultplan.h"
#include "hostdexitcode.h"
#include "hotspotstore.h"
#include "pace.h"
#include "recording.h"
#include "requestbook.h"
#include "service.h"
#include "world.h"

#include <QtCore/QTimer>

#include <map>
#include <memory>

namespace morvek {

class Daemon;
class EventPlayer;
class HotspotControl;
class InterfaceControl;
class ManagedMachine;
class RadioControl;
class RecordedWorld;
class RootLock;
class SimulatedHotspot;
class SimulatedNetwork;
class SimulatedRadio;
class Stage;
class SystemNetwork;
class TimelinePlayer;
struct DaemonTools;
struct HostdOptions;
struct Scenario;

/*! The whole: one world below one root, what drives it, and the daemons that publish it. */
class Hostd
{
public:
    /*! Of \a scenario and \a recording, the one that \a options ask for counts. */
    Hostd(const HostdOptions &options, const Scenario &scenario, const Recording &recording = {});
    ~Hostd();

    /*! Takes the root and publishes. \a error says why when that did not succeed. */
    HostdExitCode start(QString *error);
    QString root() const;

    /*!
     * Has the event loop end with \a code when the machine is as it was before; at once when that is asked for again,
     * or before start() has returned.
     */
    void end(HostdExitCode code);
    bool isAskedToEnd() const { return m_isAskedToEnd; }

private:
    Q_DISABLE_COPY(Hostd)

    void makeScenario(const Scenario &scenario);
    void makeRecording(const Recording &recording);
    DaemonTools tools();
    void makeDaemons(InterfaceControl *interfaces, RadioControl *radio, HotspotControl *hotspot);
    QMap<Service, Daemon *> servedDaemons() const;
    void makeStage(const Scenario &scenario);
    HostdExitCode startMachine(const QVector<Service> &served, QString *error);
    void serveMore();
    bool forgetFormerRuns(const QVector<Service> &services, QString *error) const;
    void restoreHotspot();
    bool startDaemons(QString *error);
    void giveBack(HostdExitCode code);
    bool mayPublish(QString *reason);
    void look();
    void keepStage();

    // In this order, so that what is used by others goes after them.
    std::unique_ptr<RootLock> m_lock;
    EventLog m_log;
    Pace m_pace;
    World m_world;
    FaultPlan m_faults;
    RequestBook m_requests;
    std::unique_ptr<ManagedMachine> m_machine;     // none, unless the machine's manager is asked
    std::unique_ptr<SystemNetwork> m_system;       // none, unless the machine is shown
    std::unique_ptr<SimulatedNetwork> m_simulated; // none without a scenario
    std::unique_ptr<SimulatedRadio> m_radio;       // none without Wi-Fi
    std::unique_ptr<SimulatedHotspot> m_hotspot;   // none without a hotspot
    HotspotControl *m_hotspotControl = nullptr;    // of whichever there is
    std::unique_ptr<RecordedWorld> m_recorded;     // none without a recording
    HotspotStore m_store;
    std::map<Service, std::unique_ptr<Daemon>> m_daemons; // of what there is in this world
    std::unique_ptr<EventPlayer> m_events;                // none without a scenario
    std::unique_ptr<TimelinePlayer> m_player;             // likewise
    std::unique_ptr<Stage> m_stage;
    QVector<Service> m_without;
    bool m_isFresh;
    QTimer m_looks;
    bool m_isTroubled = false; // and has said so
    bool m_hasNoStage = false; // likewise
    bool m_isEnding = false;
    bool m_isAskedToEnd = false;
};

} // namespace morvek

#endif
