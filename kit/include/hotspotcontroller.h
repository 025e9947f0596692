// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTCONTROLLER_H
#define MORVEK_HOTSPOTCONTROLLER_H

#include "networkcontroller.h"

namespace morvek {

class HotspotForm;

/*!
 * The unit's Wi-Fi hotspot as a screen shows it: its state, its profile, and requests that always end.
 *
 * \code
 * #include <hotspotcontroller.h>
 * #include <hotspotform.h>
 * #include <networkservices.h>
 *
 * void Settings::begin()
 * {
 *     m_services = new NetworkServices(this);
 *     m_hotspot = new HotspotController(m_services, this);
 *     connect(m_hotspot, &HotspotController::stateChanged, this, [this] { show(m_hotspot->stateText()); });
 * }
 *
 * void Settings::rename(const QString &name)
 * {
 *     m_hotspot->form()->setName(name);
 *     NetworkRequest *request = m_hotspot->apply();
 *     connect(request, &NetworkRequest::finished, this, [this, request] { show(request->sentence()); });
 * }
 * \endcode
 *
 * The profile is fetched when the service becomes ready, and again before anything is sent: other applications may have
 * changed it. The passphrase is no property, stands in no text, and is wiped from the kit's own memory after use.
 */
class MORVEK_KIT_EXPORT HotspotController : public NetworkController
{
    Q_OBJECT
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString stateText READ stateText NOTIFY stateChanged)
    Q_PROPERTY(bool on READ isOn NOTIFY stateChanged)
    Q_PROPERTY(bool busy READ isBusy NOTIFY stateChanged)
    Q_PROPERTY(bool profileKnown READ isProfileKnown NOTIFY profileChanged)
    Q_PROPERTY(QString name READ name NOTIFY profileChanged)
    Q_PROPERTY(morvek::HotspotForm *form READ form CONSTANT)

public:
    /*! The first one that is true. */
    enum State {
        NotReady,    //!< availability() is not Ready
        SwitchingOn, //!< setOn() is running
        SwitchingOff,
        On,
        Off,
    };
    Q_ENUM(State)

    explicit HotspotController(QObject *parent = nullptr);
    explicit HotspotController(NetworkServices *services, QObject *parent = nullptr);
    ~HotspotController() override;

    State state() const;
    /*! A sentence about the state, for the driver. */
    QString stateText() const;
    /*! Whether the hotspot is on, as the daemon has told last. */
    bool isOn() const;
    /*! Whether a request of this controller is running. */
    bool isBusy() const;
    /*! Whether the profile has been read. */
    bool isProfileKnown() const;
    /*! The hotspot's name, as it was read last. */
    QString name() const;
    /*!
     * The fields of the profile, to be edited; owned by this. They follow what is read until one of them is edited, and
     * again after apply() is done or HotspotForm::revert().
     */
    HotspotForm *form() const;

    /*! Reads the profile. Deadline: 5 s. */
    Q_INVOKABLE morvek::NetworkRequest *fetch();
    /*!
     * Switches the hotspot; done when the daemon tells that it is so, also when it is so already. It starts with the
     * profile that is fetched just before. Deadline: 20 s. Refused when the daemon refuses; Overtaken when the opposite
     * is asked for meanwhile, or somebody else switches it back.
     */
    Q_INVOKABLE morvek::NetworkRequest *setOn(bool on);
    /*!
     * Writes what form() holds: fetches the profile, changes in it what was edited, writes it and reads it back. Done
     * when what is read back is what was written; Overtaken when it is something else. Deadline: 15 s. Invalid when
     * the form is not valid, or nothing has been read yet.
     */
    Q_INVOKABLE morvek::NetworkRequest *apply();

    /*! The passphrase as it was read last, for a driver who has asked to see it. Do not keep it. */
    Q_INVOKABLE QString reveal() const;

Q_SIGNALS:
    /*! state(), or what goes with it, has changed. All of it is as it will stay when this comes. */
    void stateChanged();
    /*! The profile has been read, and differs from what was read before. */
    void profileChanged();

protected:
    void onServiceReplaced() override;
    void onAvailabilityChanged() override;

private:
    Q_DISABLE_COPY(HotspotController)
    friend class HotspotRequest;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
