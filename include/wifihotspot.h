// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIHOTSPOT_H
#define MORVEK_WIFIHOTSPOT_H

#include "networkexport.h"
#include "privatepart.h"
#include "wifisecurity.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

class QTextStream;

namespace morvek {

/*! Radio band of the hotspot. */
enum WifiBand : int {
    WifiBand2_4GHz = 0,
    WifiBand5GHz = 1,
};

/*!
 * The profile of the unit's Wi-Fi hotspot. A copy shares nothing with its source; what was moved from is as a new one.
 */
class MORVEK_NETWORK_EXPORT WifiHotspot
{
public:
    WifiHotspot();
    WifiHotspot(const WifiHotspot &other);
    WifiHotspot(WifiHotspot &&other) noexcept;
    ~WifiHotspot();
    WifiHotspot &operator=(const WifiHotspot &other);
    WifiHotspot &operator=(WifiHotspot &&other) noexcept;
    void swap(WifiHotspot &other) noexcept { d.swap(other.d); }

    /*! Equal in every field. */
    bool operator==(const WifiHotspot &other) const;
    bool operator!=(const WifiHotspot &other) const;

    /*! True when the name or the passphrase is empty, or the inactivity time or the maximum of clients is -1. */
    bool isEmpty() const;

    /*! The network's name; empty at first. */
    QString name() const;
    void setName(const QString &name);

    /*! What clients need to join the network; empty at first. */
    QString passphrase() const;
    void setPassphrase(const QString &passphrase);

    /*!
     * WPA2 at first; WPA and WPA2 together mean that clients may use either. The tethering daemon knows none, WPA,
     * WPA2 and these two together: anything else is written as an empty text, and what it tells in other words is read
     * as no flag at all. A value that was once written as an empty text is what that text is read as from then on.
     */
    QFlags<WifiSecurityProtocol> securityType() const;
    void setSecurityType(const QFlags<WifiSecurityProtocol> &securityType);

    /*!
     * The radio band that the hotspot works in; 2.4 GHz at first, and when the tethering daemon tells it in words that
     * are not known. A value that is none of the two is kept, and written as an empty text, which is read as that value
     * from then on.
     */
    WifiBand band() const;
    void setBand(WifiBand band);

    /*! How long the hotspot stays on unused, in the tethering daemon's unit; -1, not set, at first. */
    int inactivityTime() const;
    void setInactivityTime(int inactivityTime);

    /*! How many clients may connect; -1, not set, at first. */
    int maxClients() const;
    void setMaxClients(int maxClients);

    /*! The privacy switch of the tethering daemon's profile, passed on as it is; false at first. */
    bool privacy() const;
    void setPrivacy(bool privacy);

    /*! The profile's switch that blocks connections, passed on as it is; false at first. */
    bool blockConn() const;
    void setBlockConn(bool blockConn);

private:
    class Private;
    PrivatePart<Private> d;
};

inline void swap(WifiHotspot &left, WifiHotspot &right) noexcept
{
    left.swap(right);
}

/*! Writes one line that describes \a hotspot, the passphrase included: never log it. */
MORVEK_NETWORK_EXPORT QTextStream &operator<<(QTextStream &stream, WifiHotspot &hotspot);

} // namespace morvek

Q_DECLARE_METATYPE(morvek::WifiBand)
Q_DECLARE_METATYPE(morvek::WifiHotspot)
Q_DECLARE_TYPEINFO(morvek::WifiHotspot, Q_MOVABLE_TYPE);

#endif
