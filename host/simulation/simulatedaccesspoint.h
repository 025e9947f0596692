// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SIMULATEDACCESSPOINT_H
#define MORVEK_HOSTD_SIMULATEDACCESSPOINT_H

#include "scenario.h"

#include <QtCore/QJsonObject>

namespace morvek {

struct WifiNetwork;

/*! An access point of a scenario, as it is at this moment. */
class SimulatedAccessPoint
{
public:
    explicit SimulatedAccessPoint(const ScenarioAccessPoint &settings);

    QString bssid() const { return m_settings.bssid; }
    const AddressSet &lease() const { return m_settings.lease; }
    /*! False when nobody has what it asks for. */
    bool canBeJoined() const { return isOpen() || !m_settings.passkey.isEmpty(); }
    bool answers() const { return m_settings.answers; }
    /*! The network that it belongs to, with the passkey that is right. */
    WifiNetwork network() const;

    bool isInRange() const { return m_settings.inRange; }
    void setInRange(bool inRange) { m_settings.inRange = inRange; }
    int level() const { return m_level; }
    /*! Moves the signal level, and the middle from which it strays. */
    void setLevel(int level);
    /*! Lets the signal level stray a little, no further than it may. */
    void drift(Pace *pace);

    /*! True when it has the name and the kind of security that \a network has. */
    bool belongsTo(const WifiNetwork &network) const;
    /*! True when the passkey of \a network, to which it belongs, is right. */
    bool accepts(const WifiNetwork &network) const;

    /*! How it stands in "scan_results". */
    QJsonObject scanResult() const;
    /*! "wifi_status" of a station that is connected to it. */
    QJsonObject status() const;

private:
    bool isOpen() const;
    bool asksForPasskey() const;
    QString keyManagement() const;
    bool offers(const QString &protocol) const;

    ScenarioAccessPoint m_settings;
    int m_level;
};

} // namespace morvek

#endif
