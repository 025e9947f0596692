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
 * The profile is fetched when the service becomes ready, and again before it is sent: other applications may have
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
     * The fields of the profile, to be edited; owned by this. Each follows what is read until it is edited, and again
     * after apply() is done or HotspotForm::revert().
     */
    HotspotForm *form() const;

    /*! Reads the profile. Deadline: 5 s. Refused when the daemon does not tell it. */
    Q_INVOKABLE morvek::NetworkRequest *fetch();
    /*!
     * Switches the hotspot; done when the daemon tells that it is so, also when it is so already. It starts with the
     * profile that is fetched just before. Deadline: 20 s. It fails with
     *
     * - Refused: the daemon refuses that, or to tell its profile.
     * - Overtaken: the opposite is asked for meanwhile, or it was switched back at once.
     * - Busy: it is to be on while apply() is running, of any controller of the same services.
     * - Invalid: it cannot be on with the profile as it is.
     */
    Q_INVOKABLE morvek::NetworkRequest *setOn(bool on);
    /*!
     * Writes what form() holds now: fetches the profile, changes in it what was edited, writes it and reads it back.
     * Done when what is read back is what was written. Deadline: 15 s. It fails with
     *
     * - Invalid: the form is not valid, or nothing has been read yet.
     * - Refused: the daemon does not take the profile, or does not tell it.
     * - Overtaken: what is read back is something else.
     * - Busy: setOn(true) or another apply() is running, of any controller of the same services.
     */
    Q_INVOKABLE morvek::NetworkRequest *apply();

    /*!
     * The passphrase as it was read last, for a driver who has asked to see it; empty when there is none. Do not keep
     * it.
     */
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
