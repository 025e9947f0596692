// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACEREQUEST_P_H
#define MORVEK_INTERFACEREQUEST_P_H

#include "interfacechange_p.h"

namespace morvek {

/*! A request that gives an interface another configuration. */
class InterfaceRequest : public NetworkRequest
{
    Q_OBJECT

public:
    ~InterfaceRequest() override;

    /*! Whether it changes its interface: it has not failed at once. */
    bool isChanging() const { return m_change; }

protected:
    InterfaceRequest(NetworkController *controller, const QString &name, int deadline);

    void start() override;
    QString giveUp(Failure why) override;
    void release() override;

    /*! Why \a networkInterface, which is there, cannot be asked for it: a sentence; empty when it can. */
    virtual QString objection(const NetworkInterface &networkInterface) const = 0;
    /*! What \a networkInterface is to become, one after the other. */
    virtual QVector<NetworkInterfaceConfig> configs(const NetworkInterface &networkInterface) const = 0;
    /*! What may come of it when it is cancelled in \a step, of the interface that is shown as \a name. */
    virtual QString cancelText(InterfaceChange::Step step, const QString &name) const = 0;

private:
    Q_DISABLE_COPY(InterfaceRequest)
    void onEnded(InterfaceChange::End end, int code, const QString &text);
    QString timeOutText(const QString &name) const;

    NetworkServices *m_services;
    QPointer<InterfaceChange> m_change;
};

/*! Gives an interface one configuration. */
class InterfaceConfiguration : public InterfaceRequest
{
    Q_OBJECT

public:
    /*! With \a objection, which is a sentence, it fails, unless that is empty. */
    InterfaceConfiguration(NetworkController *controller, const QString &name, const NetworkInterfaceConfig &config,
                           const QString &objection = QString());
    ~InterfaceConfiguration() override;

protected:
    QString objection(const NetworkInterface &networkInterface) const override;
    QVector<NetworkInterfaceConfig> configs(const NetworkInterface &networkInterface) const override;
    QString cancelText(InterfaceChange::Step step, const QString &name) const override;

private:
    Q_DISABLE_COPY(InterfaceConfiguration)
    const NetworkInterfaceConfig m_config;
    const QString m_objection;
};

/*! Has an interface that is automatic and has no address ask for one again. */
class InterfaceRepair : public InterfaceRequest
{
    Q_OBJECT

public:
    InterfaceRepair(NetworkController *controller, const QString &name);
    ~InterfaceRepair() override;

protected:
    QString objection(const NetworkInterface &networkInterface) const override;
    QVector<NetworkInterfaceConfig> configs(const NetworkInterface &networkInterface) const override;
    QString cancelText(InterfaceChange::Step step, const QString &name) const override;

private:
    Q_DISABLE_COPY(InterfaceRepair)
};

} // namespace morvek

#endif
