// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_REFUSAL_H
#define MORVEK_HOSTD_REFUSAL_H

#include <QtCore/QString>

namespace morvek {

/*! Why a request is refused: what its reply carries as "err" and "errmsg". Code 0 stands for no refusal. */
struct Refusal
{
    enum Code {
        UnknownMessage = 1,
        MalformedDat = 2,
        NotFound = 3,
        BadValue = 4,
        NoLink = 5,
        ReadOnly = 6,
        RadioOff = 7,
        NotStored = 8,
        // Of a machine's network manager:
        NotPermitted = 9,
        ManagerGone = 10,
        Unmanaged = 11,
        Protected = 12, //!< it carries the user's remote session, or is none of those that may be touched
        ManagerRefused = 13,
        // Of a recording:
        Recording = 14,
    };

    int code = 0;
    QString text;

    explicit operator bool() const { return code != 0; }

    static Refusal malformed(const QString &text) { return {MalformedDat, text}; }
    static Refusal noInterface(const QString &name)
    {
        return {NotFound, QStringLiteral("no interface \"%1\"").arg(name)};
    }
    static Refusal noLink(const QString &interface)
    {
        return {NoLink, QStringLiteral("\"%1\" has no link").arg(interface)};
    }
};

} // namespace morvek

#endif
