// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTFORM_H
#define MORVEK_HOTSPOTFORM_H

#include "kitexport.h"

#include <QtCore/QObject>

#include <memory>

namespace morvek {

class WifiHotspot;

/*!
 * The fields of the hotspot's profile as they are edited, and what is wrong with each.
 *
 * A field follows what is read until it is edited, and again when that is what it was edited to.
 */
class MORVEK_KIT_EXPORT HotspotForm : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed)
    Q_PROPERTY(Security security READ security WRITE setSecurity NOTIFY changed)
    Q_PROPERTY(Band band READ band WRITE setBand NOTIFY changed)
    Q_PROPERTY(int maxClients READ maxClients WRITE setMaxClients NOTIFY changed)
    Q_PROPERTY(int inactivityTime READ inactivityTime WRITE setInactivityTime NOTIFY changed)
    Q_PROPERTY(bool privacy READ privacy WRITE setPrivacy NOTIFY changed)
    Q_PROPERTY(bool blockConnections READ blockConnections WRITE setBlockConnections NOTIFY changed)
    Q_PROPERTY(bool passphraseEdited READ isPassphraseEdited NOTIFY changed)
    Q_PROPERTY(Fault nameFault READ nameFault NOTIFY changed)
    Q_PROPERTY(Fault passphraseFault READ passphraseFault NOTIFY changed)
    Q_PROPERTY(Fault securityFault READ securityFault NOTIFY changed)
    Q_PROPERTY(Fault maxClientsFault READ maxClientsFault NOTIFY changed)
    Q_PROPERTY(Fault inactivityTimeFault READ inactivityTimeFault NOTIFY changed)
    Q_PROPERTY(QString nameText READ nameText NOTIFY changed)
    Q_PROPERTY(QString passphraseText READ passphraseText NOTIFY changed)
    Q_PROPERTY(QString securityText READ securityText NOTIFY changed)
    Q_PROPERTY(QString maxClientsText READ maxClientsText NOTIFY changed)
    Q_PROPERTY(QString inactivityTimeText READ inactivityTimeText NOTIFY changed)
    Q_PROPERTY(bool valid READ isValid NOTIFY changed)
    Q_PROPERTY(bool edited READ isEdited NOTIFY changed)

public:
    enum Security { Open, Wpa, Wpa2, WpaAndWpa2, UnknownSecurity };
    Q_ENUM(Security)
    enum Band { Band2_4GHz, Band5GHz };
    Q_ENUM(Band)
    enum Fault {
        NoFault,
        Missing,
        TooLong,       //!< a name of more than 32 bytes of UTF-8, or a passphrase of more than 63 characters
        TooShort,      //!< a passphrase of less than 8 characters
        NotPrintable,  //!< a passphrase with something else than printable ASCII characters; a name with what is none
        OutOfRange,    //!< a number that is too small
        NotSelectable, //!< a security that cannot be written: UnknownSecurity
    };
    Q_ENUM(Fault)

    explicit HotspotForm(QObject *parent = nullptr);
    ~HotspotForm() override;

    QString name() const;
    void setName(const QString &name);
    /*!
     * UnknownSecurity when the library cannot read what the daemon has told: it stays so until another one is chosen,
     * and nothing can be written before.
     */
    Security security() const;
    void setSecurity(Security security);
    Band band() const;
    void setBand(Band band);
    /*! At least 1. */
    int maxClients() const;
    void setMaxClients(int maxClients);
    /*! At least 0, in the tethering daemon's unit. */
    int inactivityTime() const;
    void setInactivityTime(int inactivityTime);
    bool privacy() const;
    void setPrivacy(bool privacy);
    bool blockConnections() const;
    void setBlockConnections(bool blockConnections);
    /*!
     * What clients are to need from now on: 8 to 63 printable ASCII characters, or 64 hexadecimal digits. Nothing gives
     * it back. An empty one leaves the passphrase as it was read. What is no passphrase is not written for an open
     * network, which keeps the one that it has for when it is protected again.
     */
    Q_INVOKABLE void setPassphrase(const QString &passphrase);
    bool isPassphraseEdited() const;

    Fault nameFault() const;
    Fault passphraseFault() const;
    Fault securityFault() const;
    Fault maxClientsFault() const;
    Fault inactivityTimeFault() const;
    /*! The faults as sentences for the driver; empty where there is none. */
    QString nameText() const;
    QString passphraseText() const;
    QString securityText() const;
    QString maxClientsText() const;
    QString inactivityTimeText() const;
    /*! Whether there is no fault. */
    bool isValid() const;
    /*! Whether a field differs from what was read; what is edited before that differs in any case. */
    bool isEdited() const;

    /*! Takes over \a profile in every field that was not edited. */
    void read(const WifiHotspot &profile);
    /*! Forgets what was edited. */
    Q_INVOKABLE void revert();
    /*! \a profile with what was edited; to be written only while the form is valid. Do not keep it. */
    WifiHotspot applied(const WifiHotspot &profile) const;

Q_SIGNALS:
    /*! A field has changed, or what is wrong with one. */
    void changed();

private:
    Q_DISABLE_COPY(HotspotForm)
    friend class HotspotController;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
