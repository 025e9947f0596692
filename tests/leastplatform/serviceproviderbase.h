// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_SERVICEPROVIDERBASE_H
#define LEAST_SERVICEPROVIDERBASE_H

#include <QtCore/QObject>

namespace morvek {

class ServiceProviderBase : public QObject
{
    Q_OBJECT

public:
    ServiceProviderBase();

    bool ready() const;
    void setReady(bool ready);

Q_SIGNALS:
    void readyChanged(bool ready);
};

} // namespace morvek

#endif
