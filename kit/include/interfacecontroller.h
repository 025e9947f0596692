// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACECONTROLLER_H
#define MORVEK_INTERFACECONTROLLER_H

#include "networkcontroller.h"

namespace morvek {

class InterfaceModel;
class Ipv4Form;

/*!
 * The network interfaces of the unit as a screen shows them, and requests to configure them that always end.
 *
 * \code
 * #include <interfacecontroller.h>
 * #include <ipv4form.h>
 * #include <networkservices.h>
 *
 * void Settings::begin()
 * {
 *     m_services = new NetworkServices(this);
 *     m_interfaces = new InterfaceController(m_services, this);
 *     m_form = new Ipv4Form(this);
 * }
 *
 * void Settings::apply(const QString &name)
 * {
 *     if (!m_form->isValid())
 *         return; // and show its faults, each beside its field
 *     NetworkRequest *request = m_interfaces->configureManual(name, m_form);
 *     connect(request, &NetworkRequest::finished, this, [this, request] { show(request->sentence()); });
 * }
 * \endcode
 */
class MORVEK_KIT_EXPORT InterfaceController : public NetworkController
{
    Q_OBJECT
    Q_PROPERTY(morvek::InterfaceModel *interfaces READ interfaces CONSTANT)
    Q_PROPERTY(QString preferred READ preferred NOTIFY preferredChanged)
    Q_PROPERTY(bool online READ isOnline NOTIFY preferredChanged)

public:
    explicit InterfaceController(QObject *parent = nullptr);
    explicit InterfaceController(NetworkServices *services, QObject *parent = nullptr);
    ~InterfaceController() override;

    /*! The interfaces, also those that come and go; owned by this. */
    InterfaceModel *interfaces() const;
    /*! The name of the interface that the unit prefers; empty when there is none. */
    QString preferred() const;
    /*! Whether that one is connected. */
    bool isOnline() const;

    /*!
     * Has the interface \a name obtain its addresses by DHCP; done when it has them, also when it has them already.
     * Deadline: 40 s. An interface that is automatic and has no address is not asked again by this, but waited for: see
     * repair(). It fails with
     *
     * - Busy: another request for this interface is running, of any controller of the same services.
     * - Invalid: there is no such interface.
     * - Refused: the daemon refuses, with its code and text. The interface may have lost its addresses by then.
     * - Overtaken: other addresses than these have stood for half a second.
     * - TimedOut, also when nobody answers DHCP: sentence() tells where it hangs.
     * - Lost: the interface has vanished, or the daemon has died.
     *
     * NetworkServices::isIdle() is false while the interface has lost its former addresses for this, and has not been
     * asked for the new ones yet, also when the request has been cancelled or has timed out, five seconds more at most.
     */
    Q_INVOKABLE morvek::NetworkRequest *configureAutomatic(const QString &name);
    /*! The same with the addresses of \a form, which is read at once. A form that is not valid is Invalid, too. */
    Q_INVOKABLE morvek::NetworkRequest *configureManual(const QString &name, morvek::Ipv4Form *form);
    /*!
     * Has an interface that is automatic and has no address ask for one again: gives it a link-local address by hand,
     * and then makes it automatic; NetworkServices::isIdle() is false for all of that. Done when it has another
     * address, wherever that comes from. Deadline: 60 s. It fails with Invalid for any other interface, and one without
     * a link.
     */
    Q_INVOKABLE morvek::NetworkRequest *repair(const QString &name);

Q_SIGNALS:
    void preferredChanged();

protected:
    void onServiceReplaced() override;
    void onAvailabilityChanged() override;

private:
    Q_DISABLE_COPY(InterfaceController)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
