// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_LIVELYMANAGER_H
#define MORVEK_TEST_LIVELYMANAGER_H

#include "fakemanager.h"

#include <QtCore/QTimer>

/*!
 * A manager that goes on by itself, while the event loop runs: it ends scans, lets its radio into networks by the right
 * passkey only, makes it a hotspot, gives out addresses, and brings an idle radio back to its user's network.
 */
class LivelyManager : public FakeManager
{
    Q_OBJECT

public:
    LivelyManager();

    /*! A passkey that lets a station in; networks without one are open. */
    void setPasskey(const QByteArray &ssid, const QString &passkey) { m_passkeys.insert(ssid, passkey); }
    /*! Has the user's own profile of a network, and is there, at \a accessPoint. */
    void joinAsTheUser(const QByteArray &ssid, const QString &accessPoint);

    QString radio() const { return m_radio; }

private:
    void go();
    void switchRadio(bool on);
    void rest();
    void enter();
    void leaveAddresses();

    QString m_radio;
    QString m_profile;
    QHash<QByteArray, QString> m_passkeys;
    QTimer m_clock;
    int m_idle = 0; // ticks
    bool m_isScanning = false;
};

#endif
