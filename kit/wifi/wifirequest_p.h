// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_WIFIREQUEST_P_H
#define MORVEK_WIFIREQUEST_P_H

#include "networkrequest.h"
#include "scanrun_p.h"
#include "sharedstation_p.h"

namespace morvek {

/*! A request of the Wi-Fi service. */
class WifiRequest : public NetworkRequest
{
    Q_OBJECT

public:
    ~WifiRequest() override;

    /*! Whether it has been begun, and its end has not been told: what cannot be asked for ends before that. */
    bool isUnderWay() const { return m_isUnderWay && isRunning(); }
    bool isScanning() const { return m_scan != nullptr; }

protected:
    /*! \a station is null while there is no service. */
    WifiRequest(NetworkController *controller, SharedStation *station, const QString &subject, int deadline);

    /*! Not to be called any more when the services are gone, which ends a request. */
    SharedStation &station() const { return *m_station; }
    bool hasStation() const { return !m_station.isNull(); }

    void setUnderWay() { m_isUnderWay = true; }
    /*! False, and ended, when the radio is off. */
    bool needRadio();
    /*! Ends it when the radio is off by now. */
    void onRadioOff();

    /*! Looks for networks; onScanned() follows. One at a time. */
    void scan();
    void endScan() { m_scan.reset(); }
    virtual void onScanned(const QList<WifiAccessPoint> &accessPoints, const PublishedSecurity &security);

    void release() override { endScan(); }

private:
    Q_DISABLE_COPY(WifiRequest)
    const QPointer<SharedStation> m_station;
    std::unique_ptr<ScanRun> m_scan;
    bool m_isUnderWay = false;
};

} // namespace morvek

#endif
