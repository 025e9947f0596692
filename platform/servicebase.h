// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SERVICEBASE_H
#define MORVEK_SERVICEBASE_H

#include "platformexport.h"

#include <QtCore/QObject>

namespace morvek {

/*! What every service of the platform offers: whether it exists on this unit, and whether it can be used now. */
class MORVEK_PLATFORM_EXPORT ServiceBase : public QObject
{
    Q_OBJECT

public:
    ServiceBase();
    ~ServiceBase() override;

    /*! Whether the unit has this service at all. */
    virtual bool available() const = 0;
    /*! Whether the service can be used now. */
    virtual bool ready() const = 0;

Q_SIGNALS:
    /*! ready() has become \a ready. */
    void readyChanged(bool ready);

private:
    Q_DISABLE_COPY(ServiceBase)
};

} // namespace morvek

#endif
