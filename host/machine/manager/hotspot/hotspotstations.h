// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOTSPOTSTATIONS_H
#define MORVEK_HOSTD_HOTSPOTSTATIONS_H

#include "gobject.h"

#include <QtCore/QObject>

#include <vector>

namespace morvek {

/*! Who has joined the access point on an interface, as the supplicant that serves it says. */
class HotspotStations : public QObject
{
    Q_OBJECT

public:
    explicit HotspotStations(const QString &interface, QObject *parent = nullptr);
    ~HotspotStations() override;

    /*! Begins to count; from then on, one of the signals comes whenever there is something to tell. */
    void watch();

Q_SIGNALS:
    void counted(int stations);
    /*! The supplicant is not there, or does not tell this user. */
    void unreadable(const QString &reason);

private:
    Q_DISABLE_COPY(HotspotStations)

    void call(const QString &path, const char *interface, const char *method, GVariant *arguments,
              const std::function<void(GVariant *)> &onReply);
    void listen();
    void count();

    QString m_interface;
    QString m_path; // of the supplicant's object for it
    GRef<GDBusConnection> m_bus;
    std::vector<guint> m_subscriptions;
};

} // namespace morvek

#endif
