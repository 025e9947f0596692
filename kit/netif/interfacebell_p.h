// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_INTERFACEBELL_P_H
#define MORVEK_INTERFACEBELL_P_H

#include <zopdirwatcher.h>

#include <QtCore/QTimer>

namespace morvek {

class NetworkInterfaceService;

/*! Tells that what a service knows of its interfaces may have changed, also that one has come or gone. */
class InterfaceBell : public QObject
{
    Q_OBJECT

public:
    /*! One of \a service, which watches longer, and so has heard of what comes and goes before this does. */
    InterfaceBell(const NetworkInterfaceService *service, QObject *parent);
    ~InterfaceBell() override;

Q_SIGNALS:
    /*! From the event loop, once for all that has come in one turn. */
    void rung();

private:
    Q_DISABLE_COPY(InterfaceBell)
    ZopDirWatcher m_folder;
    QTimer m_turn;
};

} // namespace morvek

#endif
