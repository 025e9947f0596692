// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTFIELDS_P_H
#define MORVEK_HOTSPOTFIELDS_P_H

#include "keptprofile_p.h"
#include "passkeyfault_p.h"

namespace morvek {

/*!
 * The fields of a profile of the hotspot: as they were read, with what was edited in them. A field that is read as it
 * was edited is edited no more.
 */
class HotspotFields
{
public:
    enum Field : unsigned {
        Name = 0x01,
        Security = 0x02,
        Band = 0x04,
        MaxClients = 0x08,
        InactivityTime = 0x10,
        Privacy = 0x20,
        BlockConnections = 0x40,
        Passphrase = 0x80,
    };

    HotspotFields copy() const;

    bool isRead() const { return m_isRead; }
    /*! The profile as it was read last. */
    const KeptProfile &profile() const { return m_read; }
    /*! The fields that differ from it. What is edited before anything was read differs in any case. */
    unsigned edited() const { return m_edited; }
    /*! The fields as they are edited, without the passphrase. */
    const WifiHotspot &values() const { return m_values; }

    /*! Takes \a profile over in every field that is not edited. */
    void read(KeptProfile profile);
    /*! Edits \a field as it is in \a values. */
    void edit(Field field, const WifiHotspot &values);
    /*! An empty \a passphrase leaves it as it was read. */
    void editPassphrase(Secret passphrase);
    void revert();

    bool isOpen() const;
    /*! Why the passphrase cannot be used; an open network needs none. */
    PasskeyFault passphraseFault() const;

    /*! \a profile with what is edited. */
    KeptProfile applied(KeptProfile profile) const;

private:
    void forgetWhatWasRead();

    KeptProfile m_read;
    WifiHotspot m_values;
    Secret m_passphrase; //!< as it is edited
    unsigned m_edited = 0;
    bool m_isRead = false;
};

} // namespace morvek

#endif
