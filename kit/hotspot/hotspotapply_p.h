// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTAPPLY_P_H
#define MORVEK_HOTSPOTAPPLY_P_H

#include "hotspotrequest_p.h"

namespace morvek {

/*! HotspotController::apply(). */
class HotspotApply : public HotspotRequest
{
    Q_OBJECT

public:
    explicit HotspotApply(Hotspot *controller);

protected:
    void start() override;
    QString giveUp(Failure why) override;
    void release() override;
    QString refusal() const override;

private:
    void change(const WifiHotspot &present);
    void compare(const WifiHotspot &now);
    bool isValid();

    std::unique_ptr<HotspotForm> m_form; //!< as it was when this was asked for
    KeptProfile m_wanted;
    bool m_isWritten = false;
    bool m_isTaken = false;
};

} // namespace morvek

#endif
