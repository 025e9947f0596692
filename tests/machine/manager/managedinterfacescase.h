// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_MANAGEDINTERFACESCASE_H
#define MORVEK_TEST_MANAGEDINTERFACESCASE_H

#include "daemonclient.h"
#include "fakemanager.h"
#include "privatebus.h"

#include <QtTest/QtTest>

#include <memory>

/*! The daemon over a manager that is played, with the wired interface eth0. */
class ManagedInterfacesCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

protected:
    /*! One that eth0 can be connected with: m_profile. */
    void addProfile();
    /*! By DHCP, with that profile, and starts. */
    bool connectDevice();
    bool start(const QStringList &arguments = {});
    /*! Changes what eth0 says beside all this, and waits until \a eth0 sees that, and with it what came before. */
    bool tellMtu(const Seen &eth0, uint mtu);
    /*! Whether a request that concerns nothing has its answer. */
    bool answersAnother();

    /*! "house" is automatic; this one has in addition much that belongs to its own addresses. */
    static BusSettings richProfile(int metric, const char *uuid = "6a8e5ea9-6b3e-4d1f-9c39-0d3a4bb1c001");

    // A lease that is gone without its manager is not missed before this: the daemon's 2 s or little less.
    static constexpr int LeaseTime = 1900;
    static const char Automatic[];
    static const char Manual[];

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeManager> m_manager;
    std::unique_ptr<DaemonFixture> m_daemon;
    std::unique_ptr<morvek::ZopObject> m_control;
    QString m_device;
    QString m_profile;
};

#endif
