// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_FORMEROBJECTS_H
#define MORVEK_HOSTD_FORMEROBJECTS_H

#include "service.h"

#include <QtCore/QString>

namespace morvek {

/*! The state objects that a service's daemons of former runs have left below the root. */
namespace FormerObjects {

/*! Removes them, unless a daemon of the service is there, whose they are then. False when one of them stays. */
bool remove(Service service, QString *error);

} // namespace FormerObjects

} // namespace morvek

#endif
