// SPDX-License-Identifier: Apache-2.0
#include "stage.h"

#include "daemon.h"
#include "eventlog.h"
#include "eventplayer.h"
#include "faultplan.h"
#include "faultreader.h"
#include "jsonnode.h"
#include "scenarioreader.h"
#include "scenariowarnings.h"
#include "stageview.h"
#include "stagewords.h"
#include "timelinereader.h"

#include <limits>

namespace morvek {

namespace {

QByteArray lineOf(const QJsonObject &answer)
{
    return QJsonDocument(answer).toJson(QJsonDocument::Compact);
}

QByteArray refusal(const QString &reason)
{
    return lineOf({{StageWords::Done, false}, {StageWords::Reason, reason}});
}

/*! \a request, which says whether it is about an event or a fault. */
QJsonValue withItsKind(const QJsonValue &request, QString *reason)
{
    QJsonObject object = request.toObject();
    const QJsonValue word = object.take(StageWords::Act);
    if (!word.isString())
        return request;
    const QString kind = StageWords::kindOf(word.toString(), reason);
    if (object.contains(kind))
        *reason = QStringLiteral("\"act\" and \"%1\" say the same").arg(kind);
    object.insert(kind, word);
    return object;
}

/*! What the readers need to know of \a scenario: no passphrase that is replaced later, and no long story. */
Scenario withoutSecrets(Scenario scenario)
{
    scenario.hotspot.profile.remove(QStringLiteral("lanprofile"));
    scenario.timeline.clear();
    scenario.faults.clear();
    return scenario;
}

} // namespace

Stage::Stage(const Scenario &scenario, const StageTools &tools)
    : m_scenario(withoutSecrets(scenario)),
      m_tools(tools),
      m_server([this](const QByteArray &line) { return answer(line); }, refusal)
{
}

QByteArray Stage::answer(const QByteArray &line)
{
    QString reason;
    const QJsonValue value = parseJson(line, &reason);
    const QJsonValue request = withItsKind(value, &reason);
    if (!reason.isEmpty())
        return refusal(reason);
    QJsonObject answer = treat(JsonNode(request, &reason));
    if (!reason.isEmpty())
        return refusal(reason);
    answer.insert(StageWords::Done, true);
    return lineOf(answer);
}

QJsonObject Stage::treat(const JsonNode &request)
{
    if (!request.value().isObject())
        request.expectObject({});
    else if (request.has(StageWords::Look))
        return look(request);
    else if (!m_tools.player && !(request.has(StageWords::Pass) && m_tools.pace->isHeld()))
        request.fail(m_tools.unplayable);
    else if (request.has(StageWords::Pass))
        pass(request);
    else if (request.has(StageWords::Fault) || request.has(StageWords::Event))
        act(request);
    else
        request.fail(QStringLiteral("needs \"act\", \"event\", \"fault\", \"look\" or \"pass\""));
    return {};
}

void Stage::act(const JsonNode &request)
{
    if (request.has(StageWords::Fault)) {
        const Fault fault = readFault(request, m_scenario);
        if (fault.service)
            expectServed(request, *fault.service);
        if (request.hasFailed())
            return;
        if (!m_tools.faults->add(fault))
            return request.fail(QStringLiteral("too many faults wait for their requests"));
        m_tools.log->happened("stage", fault.word + QLatin1Char(' ') + fault.message);
    } else {
        const TimelineEvent event = readEventOfNow(request, m_scenario, m_tools.player->presence());
        Service teller = event.service;
        if (isToldByOne(event, m_scenario.wifi.interface, &teller))
            expectServed(request, teller);
        if (request.hasFailed())
            return;
        const QString obstacle = m_tools.player->obstacle(event);
        if (!obstacle.isEmpty())
            return request.fail(obstacle);
        m_tools.player->play(event);
        const Daemon *daemon = m_tools.daemons.value(event.service);
        if (event.kind == TimelineEvent::DaemonBack && daemon->isDead())
            request.fail(
                QStringLiteral("the %1 daemon cannot come back yet: its log says why").arg(nameOf(event.service)));
    }
    // Who has everything under control finds everything that follows done.
    if (m_tools.pace->isHeld())
        m_tools.pace->pass(0);
}

/*! Refuses what nobody would ever hear of. */
void Stage::expectServed(const JsonNode &request, Service service) const
{
    if (m_tools.daemons.contains(service) && !m_tools.daemons.value(service))
        request.fail(QStringLiteral("the %1 daemon is left out").arg(nameOf(service)));
}

void Stage::pass(const JsonNode &request)
{
    request.expectObject({StageWords::Pass});
    const int time = request.member(StageWords::Pass).number(0, LongestTime);
    if (!m_tools.pace->isHeld())
        request.fail(QStringLiteral("time passes by itself (--hold lets it stand still)"));
    if (!request.hasFailed())
        m_tools.pace->pass(time);
}

QJsonObject Stage::look(const JsonNode &request) const
{
    request.expectObject({StageWords::Look, StageWords::Since});
    const QString what = request.member(StageWords::Look).text();
    const int since = request.numberOr(StageWords::Since, 0, std::numeric_limits<int>::max(), 0);
    QJsonObject seen;
    if (what == StageWords::Requests || what == StageWords::All)
        seen.insert(StageWords::Requests, StageView::requests(*m_tools.requests, since));
    if (what == StageWords::Objects || what == StageWords::All)
        seen.insert(StageWords::Objects, StageView::objects());
    if (what == StageWords::Faults || what == StageWords::All)
        seen.insert(StageWords::Faults, StageView::faults(*m_tools.faults));
    if (what == StageWords::Daemons || what == StageWords::All)
        seen.insert(StageWords::Daemons, StageView::daemons(m_tools.daemons));
    if (seen.isEmpty())
        request.member(StageWords::Look)
            .fail(QStringLiteral("\"%1\" is none of %2").arg(what, StageWords::Views.join(QLatin1String(", "))));
    return seen;
}

} // namespace morvek
