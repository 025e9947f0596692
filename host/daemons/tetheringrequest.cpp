// SPDX-License-Identifier: Apache-2.0
#include "tetheringrequest.h"

#include "hotspotprofile.h"
#include "wirenames.h"

#include <QtCore/QStringList>

namespace morvek {

namespace {

// Unlike the "lantype" of a profile.
const auto LanTypeKey = QLatin1String("lan_type");

void readScope(TetheringRequest *request, const ZopVariant &dat)
{
    const QJsonObject hotspot {{Wire::Type, Wire::Lan}, {LanTypeKey, Wire::WlanAp}};
    if (dat.toJson().object() != hotspot)
        request->refusal =
            Refusal::malformed(QStringLiteral("dat must be {\"type\": \"lan\", \"lan_type\": \"wlanap\"}"));
}

void readProfile(TetheringRequest *request, const ZopVariant &dat)
{
    const QJsonDocument document = dat.toJson();
    request->profile = document.object();
    if (!document.isObject())
        request->refusal = Refusal::malformed(QStringLiteral("dat must be a profile"));
    else if (request->profile.isEmpty())
        request->refusal = Refusal::malformed(QStringLiteral("dat holds no profile"));
    else
        request->refusal = HotspotProfile::check(request->profile);
}

} // namespace

TetheringRequest TetheringRequest::read(const ZopChangeset &changes)
{
    TetheringRequest request(changes);
    const ZopVariant dat = changes.assignments.value(Wire::Dat);
    if (request.message == Wire::RetrieveProfile) {
        request.kind = RetrieveProfile;
        readScope(&request, dat);
    } else if (request.message == Wire::UpdateProfile) {
        request.kind = UpdateProfile;
        readProfile(&request, dat);
    } else if (request.message == Wire::Start) {
        request.kind = Start;
        readProfile(&request, dat);
    } else if (request.message == Wire::Stop) {
        request.kind = Stop;
        request.expectNothing(dat);
    } else {
        request.refuseUnknown();
    }
    return request;
}

QString TetheringRequest::toString() const
{
    QStringList words {message, QLatin1String("id=") + id.toString()};
    if (!profile.isEmpty() && !refusal)
        words += HotspotProfile::summary(profile);
    return words.join(QLatin1Char(' '));
}

} // namespace morvek
