// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COUNTEDROLES_H
#define MORVEK_COUNTEDROLES_H

#include <QtCore/QStringList>

/*! One process whose instructions or system calls are counted; -1 when \a arguments name none. */
int runCountedRole(const QStringList &arguments);

#endif
