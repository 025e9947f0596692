// SPDX-License-Identifier: Apache-2.0
#include "interfacecontroller.h"

#include "interfacebell_p.h"
#include "interfacemodel.h"
#include "interfacerequest_p.h"
#include "ipv4form.h"

#include <networkinterfaceservice.h>

#include <memory>
#include <utility>

namespace morvek {

namespace {

/*! What is wrong with \a form, as a sentence; empty when nothing is. */
QString objectionTo(const Ipv4Form *form)
{
    if (!form)
        return InterfaceController::tr("The addresses are missing.");
    if (form->addressFault() != Ipv4Form::NoFault)
        return InterfaceController::tr("Address: %1").arg(form->addressText());
    if (form->netmaskFault() != Ipv4Form::NoFault)
        return InterfaceController::tr("Netmask: %1").arg(form->netmaskText());
    if (form->gatewayFault() != Ipv4Form::NoFault)
        return InterfaceController::tr("Gateway: %1").arg(form->gatewayText());
    return QString();
}

} // namespace

class Q_DECL_HIDDEN InterfaceController::Private
{
public:
    explicit Private(InterfaceController *controller)
        : q(controller),
          model(new InterfaceModel(controller))
    {
    }

    void read();
    NetworkRequest *follow(InterfaceRequest *request);

    InterfaceController *q;
    InterfaceModel *model;
    QPointer<InterfaceBell> bell;
    QString preferred;
    bool isOnline = false;
};

InterfaceController::InterfaceController(QObject *parent)
    : InterfaceController(nullptr, parent)
{
}

InterfaceController::InterfaceController(NetworkServices *services, QObject *parent)
    : NetworkController(Networking, parent),
      d(new Private(this))
{
    setServices(services);
}

InterfaceController::~InterfaceController() = default;

InterfaceModel *InterfaceController::interfaces() const
{
    return d->model;
}

QString InterfaceController::preferred() const
{
    return d->preferred;
}

bool InterfaceController::isOnline() const
{
    return d->isOnline;
}

NetworkRequest *InterfaceController::configureAutomatic(const QString &name)
{
    return d->follow(takeForSubject(new InterfaceConfiguration(this, name, NetworkInterfaceConfig())));
}

NetworkRequest *InterfaceController::configureManual(const QString &name, Ipv4Form *form)
{
    const NetworkInterfaceConfig config = form ? form->configuration() : NetworkInterfaceConfig();
    return d->follow(takeForSubject(new InterfaceConfiguration(this, name, config, objectionTo(form))));
}

NetworkRequest *InterfaceController::repair(const QString &name)
{
    return d->follow(takeForSubject(new InterfaceRepair(this, name)));
}

void InterfaceController::onServiceReplaced()
{
    if (d->bell)
        d->bell->deleteLater();
    if (const auto *service = static_cast<NetworkInterfaceService *>(this->service())) {
        d->bell = new InterfaceBell(service, this);
        connect(d->bell, &InterfaceBell::rung, this, [this] { d->read(); });
    }
}

void InterfaceController::onAvailabilityChanged()
{
    d->read();
}

/*! Takes over what the service knows; what it has told last stays when it is gone. */
void InterfaceController::Private::read()
{
    const auto *service = static_cast<NetworkInterfaceService *>(q->service());
    if (!service)
        return;
    const NetworkInterface now = service->preferredInterface();
    const bool hasChanged = now.name() != preferred || now.connected() != isOnline;
    preferred = now.name();
    isOnline = now.connected();
    model->setInterfaces(service->interfaces(), preferred);
    if (hasChanged)
        Q_EMIT q->preferredChanged();
}

/*! Has the rows of the model tell of \a request, before it tells its own end. */
NetworkRequest *InterfaceController::Private::follow(InterfaceRequest *request)
{
    if (!request->isChanging())
        return request;
    model->setConfiguring(request->subject(), true);
    const auto onGone = [this, name = request->subject(), isThere = std::make_shared<bool>(true)] {
        if (!std::exchange(*isThere, false))
            return;
        const QPointer<InterfaceController> self(q); // a slot may end it
        read();
        if (self)
            model->setConfiguring(name, false);
    };
    connect(request, &NetworkRequest::ending, q, onGone);
    connect(request, &QObject::destroyed, q, onGone);
    return request;
}

} // namespace morvek
