// SPDX-License-Identifier: Apache-2.0
#ifndef TETHERINGDAEMON_H
#define TETHERINGDAEMON_H

#include "attributevalue.h"
#include "zopdouble.h"

/*! What the tethering manager publishes, played by the double. */
namespace TetheringDaemon {

const char *const Directory = "/zop/services/tethering/";
const char *const Status = "/zop/services/tethering/status";
const char *const Control = "/zop/services/tethering/control";

/*! A profile as the manager answers it, that of the hotspot "Car" with the passphrase "open sesame". */
const char *const CarProfile =
    R"({"type":"lan","lantype":"wlanap","wantype":"bridge",)"
    R"("lancfg":{"gateway_address":"10.1.1.1","gateway_subnet":"255.0.0.0","dhcp_lease_time":"7"},)"
    R"("lanprofile":{"ssid":"Car","passphrase":"open sesame","mhs_band":"5.0","max_num_sta":10,)"
    R"("security_type":"wpa2","autoshutdown_time":0,"privacy":false,"block_conn":true,"band":"2.4"}})";

/*! Lets whoever watches the manager's directory know of \a name. */
inline void announce(const char *name)
{
    ZopDouble::announce(QLatin1String(Directory), QLatin1String(name));
}

/*! The control and status objects, of which nobody is told yet. */
inline void store(const ZopDouble::Values &status = {})
{
    ZopDouble::store(QLatin1String(Control), {});
    ZopDouble::store(QLatin1String(Status), status);
}

/*! The manager comes up as \a status says: clients become ready. */
inline void start(const ZopDouble::Values &status)
{
    store(status);
    announce("status");
    announce("control");
}

/*! The manager comes up with the hotspot off. (Not a default argument: GCC takes two such lists in two headers for
 * one.) */
inline void start()
{
    start({{QStringLiteral("state"), text("INACTIVE")}});
}

/*! One update of one attribute of the status object. */
inline void change(const char *attribute, const morvek::ZopVariant &value)
{
    ZopDouble::publish(QLatin1String(Status), {{QLatin1String(attribute), value}});
}

/*! One update of the control object with \a values. */
inline void tell(const ZopDouble::Values &values)
{
    ZopDouble::publish(QLatin1String(Control), values);
}

/*! A reply that accepts the request \a id. */
inline void accept(const char *request, int id, const morvek::ZopVariant &dat = morvek::ZopVariant())
{
    ZopDouble::Values values {
        {QStringLiteral("res"), text(request)},
        {QStringLiteral("id"), morvek::ZopVariant(id)},
        {QStringLiteral("err"), text("0")},
    };
    if (dat.isValid())
        values.insert(QStringLiteral("dat"), dat);
    tell(values);
}

/*! A reply that refuses the request \a id. */
inline void refuse(const char *request, int id, const char *reason = "Not now")
{
    tell({
        {QStringLiteral("res"), text(request)},
        {QStringLiteral("id"), morvek::ZopVariant(id)},
        {QStringLiteral("err"), text("16")},
        {QStringLiteral("errmsg"), text(reason)},
    });
}

/*! The identifier of the last request; 0 when there was none. */
inline int lastId()
{
    const QList<ZopDouble::Write> writes = ZopDouble::writes();
    return writes.isEmpty() ? 0 : writes.last().changes.assignments.value(QStringLiteral("id")).toInt();
}

/*! The requests that were written, each as "name dat", or "name" alone when it has none. */
inline QStringList requests()
{
    QStringList texts;
    const QList<ZopDouble::Write> writes = ZopDouble::writes();
    for (const ZopDouble::Write &write : writes) {
        const ZopDouble::Values &values = write.changes.assignments;
        const morvek::ZopVariant dat = values.value(QStringLiteral("dat"));
        texts.append(values.value(QStringLiteral("msg")).toString()
                     + (dat.isValid() ? QLatin1Char(' ') + dat.toString() : QString()));
    }
    return texts;
}

/*! Deletes what services have left behind. */
inline void deleteProviders()
{
    qDeleteAll(ZopDouble::owners());
}

} // namespace TetheringDaemon

#endif
