// SPDX-License-Identifier: Apache-2.0
#include "librarylog.h"

#include <algorithm>

namespace morvek {

namespace {

/*! What the library does when nobody listens. */
void write(KrelLogger::Level level, unsigned short code, const QString &text)
{
    switch (level) {
    case KrelLogger::Error:
        KrelLogger().error(code) << text;
        break;
    case KrelLogger::Warning:
        KrelLogger().warning(code) << text;
        break;
    case KrelLogger::Debug1:
        KrelLogger().debug1(code) << text;
        break;
    case KrelLogger::Debug2:
        KrelLogger().debug2(code) << text;
        break;
    }
}

} // namespace

void hideLibraryLog()
{
    if (!qEnvironmentVariableIsSet("KREL_VERBOSITY"))
        KrelLogger::setVerbosity(0);
}

void showLibraryLog()
{
    KrelLogger::setVerbosity(std::max(KrelLogger::getVerbosity(), int(KrelLogger::Warning)));
}

LibraryLog::LibraryLog(const Listener &listener, KrelLogger::Level level)
    : m_listener(listener),
      m_level(level),
      m_verbosity(KrelLogger::getVerbosity())
{
    KrelLogger::setVerbosity(std::max(m_verbosity, int(level)));
    listen();
}

LibraryLog::~LibraryLog()
{
    KrelLogger::setSink({});
    KrelLogger::setVerbosity(m_verbosity);
}

void LibraryLog::listen()
{
    KrelLogger::setSink(
        [this](KrelLogger::Level level, unsigned short code, const QString &text) { hear(level, code, text); });
}

void LibraryLog::hear(KrelLogger::Level level, unsigned short code, const QString &text)
{
    if (level <= m_verbosity) {
        KrelLogger::setSink({});
        write(level, code, text);
        listen();
    }
    if (level <= m_level)
        m_listener(text);
}

} // namespace morvek
