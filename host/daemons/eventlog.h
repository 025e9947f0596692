// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_EVENTLOG_H
#define MORVEK_HOSTD_EVENTLOG_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

namespace morvek {

/*! The program's lines on standard error: what goes wrong always, what happens when it is asked for. */
class EventLog
{
public:
    explicit EventLog(bool verbose);

    /*! "   120 ms  event  vanish wlan0", with the time since the start. */
    void happened(const char *what, const QString &text) const;
    void trouble(const QString &text) const;

    /*! One line "morvek-hostd: TEXT" on standard error; control characters of \a text are escaped. */
    static void write(const QString &text);
    /*! Texts of clients are cut, as they may be of any length. */
    static QString cut(const QString &text);

private:
    QElapsedTimer m_since;
    bool m_verbose;
};

} // namespace morvek

#endif
