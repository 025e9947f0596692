// SPDX-License-Identifier: Apache-2.0
#include <QtCore/QByteArray>

namespace {

/*! Installed programs find morvek-hostd by where they stand; these do not. */
const bool isNamed = qEnvironmentVariableIsSet("MORVEK_HOSTD") || qputenv("MORVEK_HOSTD", MORVEK_BUILT_HOSTD);

} // namespace
