// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STAGE_H
#define MORVEK_HOSTD_STAGE_H

#include "scenario.h"
#include "stageserver.h"

#include <QtCore/QMap>

namespace morvek {

class Daemon;
class EventLog;
class EventPlayer;
class FaultPlan;
class JsonNode;
class RequestBook;

/*! What the stage reaches. It must outlive it. */
struct StageTools
{
    const EventPlayer *player; //!< null: nothing can be played, only looked at
    FaultPlan *faults;
    Pace *pace;
    const RequestBook *requests;
    const EventLog *log;
    QMap<Service, Daemon *> daemons; //!< those of the world; null for one that is left out
    QString unplayable;              //!< why nothing can be played, without a player
};

/*! Lets clients on a local socket play events and faults, and look at what has come of them. */
class Stage
{
public:
    Stage(const Scenario &scenario, const StageTools &tools);

    /*! Begins to serve, or sees to it that clients still find it; false when that cannot be. */
    bool keep(QString *error) { return m_server.keep(error); }

    void setDaemons(const QMap<Service, Daemon *> &daemons) { m_tools.daemons = daemons; }

    /*! What a client's line is answered with: one line, without its end. */
    QByteArray answer(const QByteArray &line);

private:
    Q_DISABLE_COPY(Stage)

    QJsonObject treat(const JsonNode &request);
    void act(const JsonNode &request);
    void expectServed(const JsonNode &request, Service service) const;
    void pass(const JsonNode &request);
    QJsonObject look(const JsonNode &request) const;

    Scenario m_scenario;
    StageTools m_tools;
    StageServer m_server;
};

} // namespace morvek

#endif
