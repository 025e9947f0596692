// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTPROFILE_H
#define MORVEK_HOSTD_HOTSPOTPROFILE_H

#include "refusal.h"

#include <QtCore/QJsonObject>

namespace morvek {

/*!
 * Judges and makes the tethering daemon's profile documents. No text of a refusal ever repeats what is wrong: it may
 * be a passphrase in the wrong place.
 */
namespace HotspotProfile {

enum Security { None, Wpa, Wpa2, WpaAndWpa2 };

/*! What a document asks of an access point and of the network behind it. */
struct Network
{
    QString ssid;
    QString passphrase; //!< of no meaning when there is no security
    Security security = None;
    bool in5GHz = false;
    bool isolated = false; //!< the clients from one another
    QString address;
    QString netmask;

    bool operator==(const Network &other) const;
};

/*! What is wrong with a whole document, as messages and the stored file hold it. */
Refusal check(const QJsonObject &document);
/*! What is wrong with its "lanprofile". */
Refusal checkLanProfile(const QJsonObject &lanProfile);
/*! The whole document with this "lanprofile" and the usual network. */
QJsonObject document(const QJsonObject &lanProfile);
/*! One for a hotspot that nobody has set up yet: with WPA2, in the band that every client has. */
QJsonObject first(const QString &ssid, const QString &passphrase);

/*! Whether two documents that are right differ in nothing that anybody reads. */
bool isSame(const QJsonObject &document, const QJsonObject &other);
/*! Of a document that is right. */
Network network(const QJsonObject &document);
/*! The name, quoted, and the security of a document that is right. */
QString summary(const QJsonObject &document);
/*! After how many milliseconds a hotspot without clients stops; 0: never. */
int inactivityTime(const QJsonObject &document);

} // namespace HotspotProfile

} // namespace morvek

#endif
