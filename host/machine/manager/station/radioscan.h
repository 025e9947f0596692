// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RADIOSCAN_H
#define MORVEK_HOSTD_RADIOSCAN_H

#include "answer.h"
#include "gobject.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QObject>

namespace morvek {

class ManagerClient;
class SupplicantWatch;
class World;

/*! Has the radio scan, and publishes what each scan has found once it is finished, whoever has asked for it. */
class RadioScan : public QObject
{
    Q_OBJECT

public:
    RadioScan(ManagerClient *client, World *world, QObject *parent = nullptr);
    ~RadioScan() override;

    /*! An application asks. When the manager finds it too early for a scan, the last results are published anew. */
    void ask(const AnswerCall &answer);
    /*! Asks for a scan of one's own, which the manager may refuse; such as one for the hidden network \a ssid. */
    void request(const QString &ssid);
    /*! The radio may have finished a scan. */
    void look();

    SupplicantWatch *supplicant() { return m_supplicant.get(); }

Q_SIGNALS:
    /*! Comes after the results are published. */
    void finished();

private:
    Q_DISABLE_COPY(RadioScan)

    void send(const QString &ssid, const std::function<void(const GError *error)> &answered);
    void publish();

    ManagerClient *m_client;
    World *m_world;
    std::unique_ptr<SupplicantWatch> m_supplicant;
    QByteArray m_radio; // the manager's object
    qint64 m_lastScan = 0;
    QDeadlineTimer m_asked; // has not expired while an application's scan is under way
};

} // namespace morvek

#endif
