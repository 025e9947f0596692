// SPDX-License-Identifier: Apache-2.0
#include "servicebase.h"

namespace morvek {

ServiceBase::ServiceBase() = default;

ServiceBase::~ServiceBase() = default;

} // namespace morvek
