// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_LIBRARYLOG_H
#define MORVEK_LIBRARYLOG_H

#include <krellogger.h>

#include <QtCore/QStringList>

namespace morvek {

/*! From now on the library's lines are not written, unless KREL_VERBOSITY is set. */
void hideLibraryLog();
/*! From now on they are, the warnings too. */
void showLibraryLog();

/*! While it lives, the library's errors are heard, or its warnings, too. They are written as they were before. */
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
