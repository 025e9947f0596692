// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SERVICEPROVIDERBASE_H
#define MORVEK_SERVICEPROVIDERBASE_H

#include "platformexport.h"

#include <QtCore/QObject>

namespace morvek {

/*! What stands behind a service and does its work; it starts as not ready. */
class MORVEK_PLATFORM_EXPORT ServiceProviderBase : public QObject
{
    Q_OBJECT

public:
    ServiceProviderBase();
    ~ServiceProviderBase() override;

    bool ready() const;
    /*! Emits readyChanged() when the value changes. */
    void setReady(bool ready);

Q_SIGNALS:
    void readyChanged(bool ready);

private:
    Q_DISABLE_COPY(ServiceProviderBase)
    bool m_ready = false;
};

} // namespace morvek

#endif
