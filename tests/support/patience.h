// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_PATIENCE_H
#define MORVEK_TEST_PATIENCE_H

#include <QtCore/QtGlobal>

/*! Milliseconds; MORVEK_PATIENCE is for where everything is slower. */
inline const int Patience =
    qEnvironmentVariableIsSet("MORVEK_PATIENCE") ? qEnvironmentVariableIntValue("MORVEK_PATIENCE") : 20000;

#endif
