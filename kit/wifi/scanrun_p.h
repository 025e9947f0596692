// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SCANRUN_P_H
#define MORVEK_SCANRUN_P_H

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <memory>

namespace morvek {

class AsyncWifiScanOperation;
class PublishedSecurity;
class SharedStation;
class WifiAccessPoint;

/*! One look around; deleting it gives it up. Slots may do so. */
class ScanRun : public QObject
{
    Q_OBJECT

public:
    explicit ScanRun(SharedStation *station);
    ~ScanRun() override;

Q_SIGNALS:
    /*! What was found: the station's list of networks is that already. */
    void found(const QList<morvek::WifiAccessPoint> &accessPoints, const morvek::PublishedSecurity &security);
    /*! The library has not even asked, and tells why. */
    void failed(const QString &text);

private:
    Q_DISABLE_COPY(ScanRun)
    void onSuccess();

    const QPointer<SharedStation> m_station;
    std::unique_ptr<AsyncWifiScanOperation> m_operation;
};

} // namespace morvek

#endif
