// SPDX-License-Identifier: Apache-2.0
#include "hotspotreader.h"

#include "hotspotprofile.h"
#include "jsonnode.h"

namespace morvek {

ScenarioHotspot readHotspot(const JsonNode &node)
{
    const QString active = QStringLiteral("active");
    const QString profile = QStringLiteral("profile");
    node.expectObject({active, profile});
    const JsonNode place = node.member(profile);
    if (!place.value().isObject())
        place.fail(QStringLiteral("must be an object"));
    const QJsonObject lanProfile = place.value().toObject();
    if (const Refusal fault = HotspotProfile::checkLanProfile(lanProfile))
        place.fail(fault.text);
    ScenarioHotspot hotspot;
    hotspot.profile = HotspotProfile::document(lanProfile);
    hotspot.active = node.flagOr(active, false);
    return hotspot;
}

void expectHotspot(const JsonNode &node, const Scenario &scenario)
{
    if (scenario.hotspot.profile.isEmpty())
        node.fail(QStringLiteral("there is no \"hotspot\" in this scenario"));
}

} // namespace morvek
