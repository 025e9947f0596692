// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SUPPLICANTWATCH_H
#define MORVEK_HOSTD_SUPPLICANTWATCH_H

#include "gobject.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QVector>

namespace morvek {

/*!
 * What the supplicant tells that the network manager keeps to itself: signal levels, and passkeys that are refused at
 * once. It tells that by itself; only what it knew already is asked for. Where none of that may be read, nothing is
 * told.
 */
class SupplicantWatch : public QObject
{
    Q_OBJECT

public:
    explicit SupplicantWatch(GDBusConnection *bus, QObject *parent = nullptr);
    ~SupplicantWatch() override;

    /*! In dBm, as it was told last; \a otherwise when it was not. */
    int levelOf(const QString &bssid, int otherwise) const { return m_levels.value(bssid, otherwise); }

Q_SIGNALS:
    /*! An access point has refused to authenticate. */
    void refused();

private:
    Q_DISABLE_COPY(SupplicantWatch)

    using Heard = std::function<void(const QByteArray &path, GVariant *arguments)>;
    void hear(const char *interface, const char *signal, const char *firstArgument, const Heard &heard);
    void ask(const QByteArray &path, const char *interface, const char *property,
             const std::function<void(GVariant *answer)> &answered);
    void askAll();
    void askForEach(GVariant *paths, const std::function<void(const QByteArray &path)> &function);
    void take(const QByteArray &path, GVariant *properties);

    GRef<GDBusConnection> m_bus;
    QVector<guint> m_subscriptions;
    QHash<QByteArray, QString> m_bssids; // by the supplicant's objects
    QHash<QString, int> m_levels;        // by bssid
};

} // namespace morvek

#endif
