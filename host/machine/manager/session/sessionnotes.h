// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_SESSIONNOTES_H
#define MORVEK_HOSTD_SESSIONNOTES_H

#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QStringList>

#include <optional>

namespace morvek {

/*! A setting as it was before the session has changed it, and as that has left it. */
template<typename Value>
struct Changed
{
    Value former;
    Value ours;

    /*! Notes that \a present becomes \a next; nothing is left to note when that is what it was at first. */
    static void note(std::optional<Changed> *noted, const Value &present, const Value &next)
    {
        // What is not ours, somebody else has set meanwhile.
        const Value former = *noted && (*noted)->ours == present ? (*noted)->former : present;
        *noted = former == next ? std::nullopt : std::make_optional(Changed {former, next});
    }
};

/*! What the session has changed of one interface. */
struct DeviceNotes
{
    /*! The profile of the active connection was \a present, and becomes \a next, which is ours; empty: none. */
    void connects(const QString &present, const QString &next);
    /*! Whether the profile of the active connection, \a present, comes from the session. */
    bool isOurs(const QString &present) const;
    /*! The profile \a present has the IPv4 settings \a former applied, and gets \a next. */
    void reapplies(const QString &present, const QByteArray &former, const QByteArray &next);
    /*! Whether the IPv4 settings \a applied come from the session. */
    bool isOurs(const QByteArray &applied) const
    {
        return ipv4 && !applied.isEmpty() && (applied == ipv4->ours || applied == earlier);
    }
    bool isEmpty() const { return !connection && !ipv4 && !autoconnect; }

    std::optional<QString> connection; //!< the profile that was active; empty: none
    QStringList ours;                  //!< what was active instead since then
    bool isDisconnected = false;       //!< by the session: with none of them

    QString reapplied; //!< the profile that has not its own IPv4 settings
    std::optional<Changed<QByteArray>> ipv4;
    QByteArray earlier; //!< our own ones before those: they stay when the manager refuses the others

    std::optional<Changed<bool>> autoconnect;
};

/*! What the session has changed of the machine. There are no secrets in it. */
struct SessionNotes
{
    bool isEmpty() const { return devices.isEmpty() && !power; }
    /*! For a file, and from one; what does not make sense there counts as not noted. */
    QJsonObject toJson() const;
    static SessionNotes fromJson(const QJsonObject &json);
    /*! Takes from \a other what is not noted here. */
    void add(const SessionNotes &other);

    QMap<QString, DeviceNotes> devices; //!< by interface
    std::optional<Changed<bool>> power; //!< of all radios
};

} // namespace morvek

#endif
