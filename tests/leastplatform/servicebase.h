// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_SERVICEBASE_H
#define LEAST_SERVICEBASE_H

#include <QtCore/QObject>

namespace morvek {

class ServiceBase : public QObject
{
    Q_OBJECT

public:
    ServiceBase();

    virtual bool available() const = 0;
    virtual bool ready() const = 0;

Q_SIGNALS:
    void readyChanged(bool ready);
};

} // namespace morvek

#endif
