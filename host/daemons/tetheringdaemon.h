// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_TETHERINGDAEMON_H
#define MORVEK_HOSTD_TETHERINGDAEMON_H

#include "daemon.h"

namespace morvek {

class HotspotControl;
class HotspotStore;
struct TetheringRequest;

/*! The tethering daemon: publishes whether the hotspot is active, answers requests to it, and keeps its profile. */
class TetheringDaemon : public Daemon
{
    Q_OBJECT

public:
    /*! \a control and \a store must outlive the daemon. */
    TetheringDaemon(HotspotControl *control, const HotspotStore *store, const DaemonTools &tools,
                    QObject *parent = nullptr);
    ~TetheringDaemon() override;

protected:
    Task read(const ZopChangeset &changes) override;
    bool publish(QString *error) override;
    void follow() override;

private:
    Q_DISABLE_COPY(TetheringDaemon)
    void carryOut(const TetheringRequest &request, const AnswerCall &answer);
    void setProfile(const QJsonObject &profile, const AnswerCall &answer);

    HotspotControl *m_control;
    const HotspotStore *m_store;
};

} // namespace morvek

#endif
