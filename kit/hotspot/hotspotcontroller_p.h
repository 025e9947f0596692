// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTCONTROLLER_P_H
#define MORVEK_HOTSPOTCONTROLLER_P_H

#include "hotspotcontroller.h"
#include "hotspotform_p.h"

#include <QtCore/QTimer>
#include <QtCore/QVector>

namespace morvek {

class HotspotRequest;
class HotSpotService;

class HotspotController::Private
{
public:
    explicit Private(HotspotController *controller);

    /*! Null while there is none. */
    HotSpotService *service() const;
    const HotspotFields &fields() const { return form->d->fields; }
    /*! Gives \a other what the form holds. */
    void copyForm(HotspotForm *other) const { other->d->fields = fields().copy(); }
    /*! \a profile with what was edited in \a edited. */
    static KeptProfile applied(const HotspotForm &edited, const KeptProfile &profile)
    {
        return edited.d->fields.applied(profile.copy());
    }

    /*! Takes a request of the application, and is the first to hear of its end. */
    template<typename Request>
    NetworkRequest *take(Request *request);
    /*! The requests of all controllers of the same services that have not ended, the earliest first. */
    template<typename Request>
    QVector<Request *> open() const;

    /*! Reads the profile, and goes on trying as long as that fails. */
    void readProfile();
    void onRead(const WifiHotspot &profile);
    void onEnabledChanged(bool on);
    /*! Tells what has changed of the state. */
    void update();
    State present() const;

    HotspotController *q;
    HotspotForm *form;
    QVector<HotspotRequest *> running; //!< those of the application that have not told their end
    QTimer readAgain;
    bool isOn = false;

    // What was told last.
    State state = NotReady;
    bool wasOn = false;
    bool wasBusy = false;
};

} // namespace morvek

#endif
