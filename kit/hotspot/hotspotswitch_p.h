// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTSWITCH_P_H
#define MORVEK_HOTSPOTSWITCH_P_H

#include "hotspotrequest_p.h"

namespace morvek {

/*! HotspotController::setOn(). */
class HotspotSwitch : public HotspotRequest
{
    Q_OBJECT

public:
    HotspotSwitch(Hotspot *controller, bool on);

    /*! Whether it is to be on. */
    bool isOn() const { return m_on; }
    /*! False when nothing stands to be switched: another request is in the way. */
    bool isUnderWay() const { return m_isUnderWay; }
    /*! The service has told that the hotspot is \a on now. */
    void onEnabledChanged(bool on);
    /*! The opposite is asked for. */
    void overtake();

protected:
    void start() override;
    QString giveUp(Failure why) override;
    void onRefused(const AsyncOperationError &error) override;
    QString refusal() const override;

private:
    void startWith(const WifiHotspot &profile, bool isWritten);
    void request();
    void onAccepted();
    void comeTrue();

    const bool m_on;
    bool m_isUnderWay = false;
    bool m_isReversal = false; //!< of what this controller has asked for before
    bool m_isAsked = false;
    bool m_isAccepted = false;
    bool m_hasComeTrue = false;
};

} // namespace morvek

#endif
