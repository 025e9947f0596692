// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGERREFUSAL_H
#define MORVEK_HOSTD_MANAGERREFUSAL_H

#include "gobject.h"
#include "refusal.h"

namespace morvek {

Refusal managerGone();
/*! What a call of the manager has failed with, as a reply says it: a code, and the manager's own text. */
Refusal refusalOf(const GError *error);

} // namespace morvek

#endif
