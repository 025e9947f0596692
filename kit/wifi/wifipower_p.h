// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIPOWER_P_H
#define MORVEK_WIFIPOWER_P_H

#include "wifirequest_p.h"

namespace morvek {

/*! Switches the radio on or off. */
class WifiPower : public WifiRequest
{
    Q_OBJECT

public:
    WifiPower(NetworkController *controller, SharedStation *station, bool on);

    bool isOn() const { return m_on; }

protected:
    void start() override;
    QString giveUp(Failure why) override;

private:
    void compare();

    const bool m_on;
    bool m_mayFlip; //!< the radio is as it should be, but may be switched once more, as was asked before
};

} // namespace morvek

#endif
