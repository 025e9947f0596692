// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SHAREDHOTSPOT_P_H
#define MORVEK_SHAREDHOTSPOT_P_H

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QVector>

namespace morvek {

class HotspotRequest;
class NetworkServices;

/*! What the controllers of the same services share, so that they do not get in each other's way. */
class SharedHotspot : public QObject
{
    Q_OBJECT

public:
    /*! That of \a services, which own it. */
    static SharedHotspot *of(NetworkServices *services);
    ~SharedHotspot() override;

    void add(HotspotRequest *request);
    /*! Those that have not ended, the earliest first. */
    QVector<HotspotRequest *> open() const;

private:
    Q_DISABLE_COPY(SharedHotspot)
    explicit SharedHotspot(NetworkServices *services);

    QVector<QPointer<HotspotRequest>> m_requests; //!< and some that have ended
};

} // namespace morvek

#endif
