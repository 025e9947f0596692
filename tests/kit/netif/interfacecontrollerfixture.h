// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_INTERFACECONTROLLERFIXTURE_H
#define MORVEK_TEST_INTERFACECONTROLLERFIXTURE_H

#include "eventloop.h"
#include "interfacecontroller.h"
#include "interfacemodel.h"
#include "ipv4form.h"
#include "modelmirror.h"
#include "networkingdaemon.h"
#include "networkservices.h"

#include <QtTest/QtTest>

/*! A controller of interfaces over the double, which plays the networking daemon. */
class InterfaceControllerFixture : public QObject
{
    Q_OBJECT

protected:
    using Model = morvek::InterfaceModel;
    using Request = morvek::NetworkRequest;

    /*! Begins anew: the daemon is there, without interfaces. */
    void begin()
    {
        end();
        m_mtu = 0;
        ZopDouble::reset();
        NetworkingDaemon::start();
        m_services = std::make_unique<morvek::NetworkServices>();
        m_services->setWatchPause(20);
        m_controller = std::make_unique<morvek::InterfaceController>(m_services.get());
        m_controller->interfaces()->setLeaseTime(0);
        m_mirror = std::make_unique<ModelMirror>(m_controller->interfaces());
    }
    void end()
    {
        endController();
        m_services.reset();
    }
    void endController()
    {
        if (m_mirror)
            m_mirror->compare();
        m_mirror.reset();
        m_controller.reset();
    }

    /*! Waits until all that the daemon has told has been taken in. */
    void settle()
    {
        const int mtu = ++m_mtu;
        if (mtu == 1)
            NetworkingDaemon::addInterface("zz0", {});
        NetworkingDaemon::change("zz0", "mtu", morvek::ZopVariant(mtu));
        QTRY_COMPARE(told("zz0", Model::MtuRole), QVariant(mtu));
        runQueued();
    }
    /*! What the controller's model tells of the interface \a name. */
    QVariant told(const char *name, int role) const
    {
        const Model *model = m_controller->interfaces();
        return model->data(model->index(model->rowOf(QLatin1String(name))), role);
    }
    Model::State state(const char *name) const { return told(name, Model::StateRole).value<Model::State>(); }
    bool isIdle() const { return m_services->isIdle(); }
    /*! Whether nothing of a request is left that could still do something. */
    bool isNothingLeft() const { return m_services->findChildren<morvek::NetworkController *>().isEmpty(); }

    /*! The requests that the daemon has got, a line each. */
    static QStringList requests()
    {
        QStringList lines;
        const QList<ZopDouble::Command> commands = ZopDouble::commands();
        for (const ZopDouble::Command &command : commands)
            lines.append(command.message + QLatin1Char(' ') + command.dat.toString());
        return lines;
    }

    /*! The daemon tells in one update that \a name is connected. */
    static void connectInterface(const char *name, const char *manual, const char *address, const char *gateway)
    {
        ZopDouble::publish(NetworkingDaemon::interfacePath(QLatin1String(name)),
                           {{QStringLiteral("connected"), text("true")},
                            {QStringLiteral("ip_addresses"),
                             json(QStringLiteral("[\"%1\"]").arg(QLatin1String(address)).toLatin1().constData())},
                            {QStringLiteral("ip_gateway"),
                             json(QStringLiteral("[\"%1\"]").arg(QLatin1String(gateway)).toLatin1().constData())},
                            {QStringLiteral("manual"), text(manual)}});
    }
    /*! It tells in one update that \a name is not. */
    static void releaseInterface(const char *name)
    {
        ZopDouble::publish(NetworkingDaemon::interfacePath(QLatin1String(name)),
                           {{QStringLiteral("connected"), text("false")},
                            {QStringLiteral("ip_addresses"), json("[]")},
                            {QStringLiteral("ip_gateway"), json("[]")}});
    }

    /*! Asks for the address 10.0.0.7/8 via 10.0.0.1. */
    Request *configureManual(const char *name)
    {
        morvek::Ipv4Form form;
        form.setAddress(QStringLiteral("10.0.0.7"));
        form.setNetmask(QStringLiteral("8"));
        form.setGateway(QStringLiteral("10.0.0.1"));
        return m_controller->configureManual(QLatin1String(name), &form);
    }

    /*! How \a request ends: "done", or its failure and its sentence, without what sets names apart. */
    static QString end(const Request *request)
    {
        if (!QTest::qWaitFor([&] { return !request->isRunning(); }, 20000))
            return QStringLiteral("open");
        QString sentence = request->sentence();
        if (sentence.size() + 24 - int(qstrlen("en0")) > 120)
            return QStringLiteral("too long with a name of 24 characters: ") + sentence;
        sentence.remove(QChar(0x2068)).remove(QChar(0x2069));
        return request->isDone() ? QStringLiteral("done") + sentence
                                 : QVariant::fromValue(request->failure()).toString() + QStringLiteral(": ") + sentence;
    }

    int m_mtu = 0;
    std::unique_ptr<morvek::NetworkServices> m_services;
    std::unique_ptr<morvek::InterfaceController> m_controller;
    std::unique_ptr<ModelMirror> m_mirror;
};

#endif
