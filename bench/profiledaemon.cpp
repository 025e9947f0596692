// SPDX-License-Identifier: Apache-2.0
#include "profiledaemon.h"

#include <utility>

using namespace morvek;

namespace {

QJsonObject profile()
{
    return {{QStringLiteral("type"), QStringLiteral("lan")},
            {QStringLiteral("lantype"), QStringLiteral("wlanap")},
            {QStringLiteral("wantype"), QStringLiteral("bridge")},
            {QStringLiteral("lancfg"),
             QJsonObject {{QStringLiteral("gateway_address"), QStringLiteral("192.168.0.1")},
                          {QStringLiteral("gateway_subnet"), QStringLiteral("255.255.255.0")},
                          {QStringLiteral("dhcp_lease_time"), QStringLiteral("120")}}},
            {QStringLiteral("lanprofile"),
             QJsonObject {{QStringLiteral("ssid"), QStringLiteral("Bench")},
                          {QStringLiteral("passphrase"), QStringLiteral("correct horse 7")},
                          {QStringLiteral("mhs_band"), QStringLiteral("5.0")},
                          {QStringLiteral("max_num_sta"), 10},
                          {QStringLiteral("security_type"), QStringLiteral("wpa2")},
                          {QStringLiteral("autoshutdown_time"), 600},
                          {QStringLiteral("privacy"), false},
                          {QStringLiteral("block_conn"), false}}}};
}

} // namespace

ProfileDaemon::ProfileDaemon()
    : m_profile(profile())
{
    m_status = std::make_unique<ZopObject>(QStringLiteral("/zop/services/tethering/status"), ZopObject::Publish, false);
    m_control =
        std::make_unique<ZopObject>(QStringLiteral("/zop/services/tethering/control"), ZopObject::Publish, true);
    connect(m_control.get(), &ZopObject::attributesChanged, this, &ProfileDaemon::onRequest);
}

void ProfileDaemon::onRequest(const ZopChangeset &request)
{
    const QString message = request.assignments.value(QStringLiteral("msg")).toString();
    if (message == QLatin1String("start")) {
        m_isWaiting = false;
        for (const ZopChangeset &waiting : std::exchange(m_waiting, {}))
            reply(waiting);
    } else if (message == QLatin1String("stop")) {
        m_isWaiting = true;
    } else if (m_isWaiting) {
        m_waiting.append(request);
        return;
    }
    reply(request);
}

void ProfileDaemon::reply(const ZopChangeset &request)
{
    ZopChangeset reply;
    reply.assignments = {
        {QStringLiteral("res"), request.assignments.value(QStringLiteral("msg"))},
        {QStringLiteral("id"), request.assignments.value(QStringLiteral("id"))},
        {QStringLiteral("peer"), request.assignments.value(QStringLiteral("peer"))},
        {QStringLiteral("err"), QStringLiteral("0")},
        {QStringLiteral("dat"), m_profile},
    };
    if (!m_control->setAttributes(reply))
        qFatal("cannot reply: %s", qPrintable(m_control->errorString()));
}
