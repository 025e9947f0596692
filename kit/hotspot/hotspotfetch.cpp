// SPDX-License-Identifier: Apache-2.0
#include "hotspotfetch_p.h"

namespace morvek {

HotspotFetch::HotspotFetch(Hotspot *controller)
    : HotspotRequest(controller, 5000)
{
}

// The service itself has told it by now.
void HotspotFetch::start()
{
    fetch([this](const WifiHotspot &) { succeed(); });
}

QString HotspotFetch::giveUp(Failure why)
{
    return early(why, tr("The settings were not read."));
}

QString HotspotFetch::refusal() const
{
    return tr("The hotspot service does not tell its settings.");
}

} // namespace morvek
