// SPDX-License-Identifier: Apache-2.0
#include "playedstand.h"

std::unique_ptr<Stand> Stand::make()
{
    return std::make_unique<PlayedStand>();
}
