// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_MANAGEDMACHINE_H
#define MORVEK_HOSTD_MANAGEDMACHINE_H

#include "manageroptions.h"
#include "service.h"

#include <QtCore/QVector>

#include <functional>
#include <memory>

namespace morvek {

class EventLog;
class HotspotControl;
class InterfaceControl;
class Pace;
class RadioControl;
class World;

/*! The world that is this machine, and that its network manager changes as applications ask. */
class ManagedMachine
{
public:
    /*! \a world, \a pace and \a log must outlive the machine. */
    ManagedMachine(const ManagerOptions &options, World *world, const Pace *pace, const EventLog *log);
    ~ManagedMachine();

    /*!
     * Gives back what runs that were killed have changed, and notes what this one does, below \a root, where nobody
     * else publishes \a served; fills the world, and follows the manager from then on. False, with the reason, when
     * there is none to follow.
     */
    bool start(const QString &root, const QVector<Service> &served, QString *error);
    /*! Has \a grown called when one of those below has come that was not there, as a radio has been plugged in. */
    void setGrown(const std::function<void()> &grown);
    /*! Gives back what this one has changed; \a done is called when that is so, or cannot be within some seconds. */
    void giveBack(const std::function<void()> &done);

    // From then on:
    InterfaceControl *interfaces() const; //!< null when there is none of those that are to be shown
    RadioControl *radio() const;          //!< null when the machine has none
    HotspotControl *hotspot() const;      //!< null when no radio of the machine can be one

private:
    Q_DISABLE_COPY(ManagedMachine)

    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace morvek

#endif
