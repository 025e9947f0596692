// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LIBRARYLOG_H
#define MORVEK_LIBRARYLOG_H

#include <krellogger.h>

#include <QtCore/QStringList>

namespace morvek {

/*!
 * While it lives, the library's errors are heard, or its warnings, too. What the library logs is written only when
 * KREL_VERBOSITY is set: then it is the user's wish to see it.
 */
class LibraryLog
{
public:
    using Listener = std::function<void(const QString &line)>;

    /*! Hears what is of \a level, or worse. \a listener must not end this. */
    explicit LibraryLog(const Listener &listener, KrelLogger::Level level = KrelLogger::Error);
    ~LibraryLog();

private:
    Q_DISABLE_COPY(LibraryLog)
    void listen();
    void hear(KrelLogger::Level level, unsigned short code, const QString &text);

    const Listener m_listener;
    const KrelLogger::Level m_level;
    const int m_verbosity;
};

} // namespace morvek

#endif
