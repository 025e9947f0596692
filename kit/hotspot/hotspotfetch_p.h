// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTFETCH_P_H
#define MORVEK_HOTSPOTFETCH_P_H

#include "hotspotrequest_p.h"

namespace morvek {

/*! HotspotController::fetch(). */
class HotspotFetch : public HotspotRequest
{
    Q_OBJECT

public:
    explicit HotspotFetch(Hotspot *controller);

protected:
    void start() override;
    QString giveUp(Failure why) override;
    QString refusal() const override;
};

/*! That of the controller itself, which leaves alone what the application has asked for. */
class HotspotFirstFetch : public HotspotFetch
{
    Q_OBJECT

public:
    using HotspotFetch::HotspotFetch;
};

} // namespace morvek

#endif
