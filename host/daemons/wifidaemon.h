// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_WIFIDAEMON_H
#define MORVEK_HOSTD_WIFIDAEMON_H

#include "daemon.h"

namespace morvek {

class RadioControl;

/*! Publishes the Wi-Fi status of the world, and answers requests to the radio. */
class WifiDaemon : public Daemon
{
    Q_OBJECT

public:
    /*! \a control must outlive the daemon. */
    WifiDaemon(RadioControl *control, const DaemonTools &tools, QObject *parent = nullptr);
    ~WifiDaemon() override;

protected:
    Task read(const ZopChangeset &changes) override;
    bool publish(QString *error) override;
    void follow() override;

private:
    Q_DISABLE_COPY(WifiDaemon)

    RadioControl *m_control;
};

} // namespace morvek

#endif
