// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_DEVICERESTORATION_H
#define MORVEK_HOSTD_DEVICERESTORATION_H

#include "managerclient.h"
#include "sessionnotes.h"

namespace morvek {

class EventLog;

/*! Gives one device back what the session has changed of it, one thing after the other. */
class DeviceRestoration : public QObject
{
    Q_OBJECT

public:
    /*! \a client and \a log must outlive this. */
    DeviceRestoration(ManagerClient *client, const QString &interface, const DeviceNotes &notes, const EventLog *log,
                      QObject *parent = nullptr);
    ~DeviceRestoration() override;

    /*! It waits until the device may be connected, as its radio has just been switched on. */
    void waitForRadio() { m_waitsForRadio = true; }
    /*! Begins; finished() comes from the event loop. */
    void start();

    /*! What is not as it was: at last what was refused. */
    const DeviceNotes &left() const { return m_left; }

Q_SIGNALS:
    /*! Everything but what is left() is as it was, or as somebody else has made it. */
    void finished();

private:
    Q_DISABLE_COPY(DeviceRestoration)

    enum class Progress { Waits, Done };

    void goOn();
    void ask();
    void answered(const GError *error);
    void tellLeft(const QString &reason);
    Progress giveConnectionBack(NMDevice *device);
    bool isActivating() const;
    void activate(NMDevice *device, NMRemoteConnection *profile);
    void deactivate(NMDevice *device);
    Progress giveSettingsBack(NMDevice *device);
    void replaceSettings(const QByteArray &applied);
    Progress giveAutoconnectBack(NMDevice *device);

    ManagerClient *m_client;
    QString m_interface;
    DeviceNotes m_notes;
    DeviceNotes m_left;
    const EventLog *m_log;
    bool m_waitsForRadio = false;
    bool m_isAsking = false;
    bool m_hasAsked = false;  // for the thing that is being given back now
    bool m_hasFailed = false; // likewise
    GRef<NMActiveConnection> m_active;
};

} // namespace morvek

#endif
