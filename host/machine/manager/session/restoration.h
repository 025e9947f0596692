// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RESTORATION_H
#define MORVEK_HOSTD_RESTORATION_H

#include "managerclient.h"
#include "sessionfile.h"

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>

namespace morvek {

class EventLog;

/*!
 * Notes how the machine was before the session has changed it, and gives that back: at the end, or, after a run that
 * was killed, at the next start. What somebody else has changed meanwhile stays.
 */
class Restoration : public QObject
{
    Q_OBJECT

public:
    /*! \a client and \a log must outlive this. When it is to \a remember, what applications have asked for stays. */
    Restoration(ManagerClient *client, bool remember, const EventLog *log, QObject *parent = nullptr);
    ~Restoration() override;

    bool remembers() const { return m_remembers; }
    /*! Keeps the notes in \a file, and takes up those of runs that were killed. */
    void setFile(const SessionFile &file);

    // To be told before it is asked for:
    /*! \a device, where \a present is applied, gets the IPv4 settings of \a next (Reapply). */
    void reapplies(NMDevice *device, NMConnection *present, NMConnection *next);
    /*!
     * \a device is going to be connected by the session's own profile \a uuid, which ends with it. A profile that is
     * stored for later is not told.
     */
    void activates(NMDevice *device, const QString &uuid);
    /*! \a device is going to be disconnected, or its active connection to be ended. */
    void disconnects(NMDevice *device);

    // These also do it:
    /*! Whether \a device connects by itself. */
    void setAutoconnect(NMDevice *device, bool autoconnect);
    /*! The power switch of all radios. \a answer gets null, or why it was refused. */
    void setPower(bool on, const ManagerClient::ErrorCall &answer);

    /*! Has \a device connected as it was before activates(), and forgets that it was not. */
    void giveConnectionBack(NMDevice *device);
    /*!
     * The same for everything; \a done is called when it is so, or cannot be within some seconds. What is refused stays
     * noted.
     */
    void giveBack(const std::function<void()> &done);

private:
    Q_DISABLE_COPY(Restoration)

    void giveDevicesBack(bool hasSwitchedOn);
    void giveLastBack();
    void givePowerBack(const std::function<void()> &done);
    void end();
    void keep();
    void onStateChanged(NMDevice *device, NMDeviceState now, NMDeviceStateReason reason);
    void lookAtPower();

    ManagerClient *m_client;
    bool m_remembers;
    const EventLog *m_log;
    SessionFile m_file;
    SessionNotes m_notes;
    bool m_hasSwitched = false;   // the power, as the notes say
    std::function<void()> m_done; // while everything is being given back
    int m_open = 0;               // devices that are not yet
    QTimer m_limit;
};

} // namespace morvek

#endif
