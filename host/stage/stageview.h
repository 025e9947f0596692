// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STAGEVIEW_H
#define MORVEK_HOSTD_STAGEVIEW_H

#include "service.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>

namespace morvek {

class Daemon;
class FaultPlan;
class RequestBook;

/*! What can be seen of running daemons, as JSON. Nothing of it holds a passkey or a passphrase. */
namespace StageView {

/*! The requests with numbers above \a since, the earliest first. */
QJsonArray requests(const RequestBook &book, int since);
/*! The state objects by their paths, with their attributes, as everybody finds them now. */
QJsonObject objects();
/*! The faults that requests still meet, in the order in which they are looked at. */
QJsonArray faults(const FaultPlan &plan);
/*! How each daemon of the world is; one that is left out is null. */
QJsonObject daemons(const QMap<Service, Daemon *> &daemons);

} // namespace StageView

} // namespace morvek

#endif
