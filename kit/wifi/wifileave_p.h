// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFILEAVE_P_H
#define MORVEK_WIFILEAVE_P_H

#include "wifirequest_p.h"

namespace morvek {

/*! Leaves the network. */
class WifiLeave : public WifiRequest
{
    Q_OBJECT

public:
    WifiLeave(NetworkController *controller, SharedStation *station);

protected:
    void start() override;
    QString giveUp(Failure why) override;

private:
    void compare();
};

} // namespace morvek

#endif
