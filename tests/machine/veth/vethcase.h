// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_VETHCASE_H
#define MORVEK_TEST_VETHCASE_H

#include "daemonclient.h"
#include "networkinterfaceservice.h"
#include "realmanager.h"
#include "servicepointer.h"

#include <QtTest/QtTest>

#include <memory>

/*!
 * What an application sees of interfaces that a real manager cares for: vt0 is connected by DHCP with the profile
 * "house" when a test begins, vt1 is not connected and has no profile.
 */
class VethCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

protected:
    using Service = NetworkInterfaceServicePointer;

    bool startDaemon(const QStringList &arguments = {});
    bool startApplication();
    RealManager &manager() { return *m_manager; }
    HostdProcess &daemon() { return m_daemon->process(); }
    morvek::NetworkInterfaceService *service() { return m_service.get(); }

    morvek::NetworkInterface interface(const char *name) { return interface(m_service.get(), name); }
    static morvek::NetworkInterface interface(morvek::NetworkInterfaceService *service, const char *name);
    /*! "10.9.0.101/24 via 10.9.0.1", with "manual" or "auto" before and "connected" or "apart" behind it. */
    static QString text(const morvek::NetworkInterface &interface);
    QString text(const char *name) { return text(interface(name)); }
    static morvek::NetworkInterfaceConfig dhcp();
    static morvek::NetworkInterfaceConfig byHand(const char *address, const char *gateway);

    /*! The IPv4 addresses that the kernel has on an interface, with their prefixes. */
    static QStringList kernelAddresses(const char *interface);
    /*! The interface and the gateway of the kernel's best default route. */
    static QString kernelRoute();

private:
    std::unique_ptr<RealManager> m_manager;
    std::unique_ptr<DaemonFixture> m_daemon;
    Service m_service;
};

#endif
