// SPDX-License-Identifier: Apache-2.0
#include <interfacecontroller.h>
#include <interfacemodel.h>
#include <networkservices.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <utility>

using namespace morvek;

/*! Sees to it that an interface has an address, and says what stands in the way. */
class Caretaker
{
public:
    Caretaker(NetworkServices *services, const QString &name)
        : m_services(services),
          m_interfaces(services),
          m_name(name)
    {
        const auto follow = [this] { look(); };
        QObject::connect(&m_interfaces, &InterfaceController::availabilityChanged, follow);
        QObject::connect(m_interfaces.interfaces(), &InterfaceModel::countChanged, follow);
        QObject::connect(m_interfaces.interfaces(), &InterfaceModel::dataChanged, follow);
        QObject::connect(services, &NetworkServices::idleChanged, follow);
        look();
    }

private:
    void look()
    {
        if (m_interfaces.availability() != InterfaceController::Ready)
            return say(m_interfaces.availabilityText());
        const InterfaceModel *interfaces = m_interfaces.interfaces();
        const int row = interfaces->rowOf(m_name);
        if (row < 0)
            return say(QStringLiteral("There is no such interface."));
        const QModelIndex interface = interfaces->index(row);
        say(interface.data(InterfaceModel::StateTextRole).toString());
        switch (interface.data(InterfaceModel::StateRole).toInt()) {
        case InterfaceModel::WithoutAddress:
            if (!std::exchange(m_hasTried, true))
                repair();
            break;
        case InterfaceModel::Connected:
            if (m_services->isIdle())
                QCoreApplication::exit(0);
            break;
        }
    }

    void repair()
    {
        const NetworkRequest *request = m_interfaces.repair(m_name);
        QObject::connect(request, &NetworkRequest::finished, [this, request] {
            if (!request->isDone())
                say(request->sentence());
        });
    }

    void say(const QString &sentence)
    {
        if (sentence != m_said)
            m_out << sentence << Qt::endl;
        m_said = sentence;
    }

    QTextStream m_out {stdout};
    NetworkServices *m_services;
    InterfaceController m_interfaces;
    QString m_name;
    QString m_said;
    bool m_hasTried = false;
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    NetworkServices services;
    Caretaker caretaker(&services, application.arguments().value(1));
    return application.exec();
}
