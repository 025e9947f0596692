// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_KRELLOGGER_H
#define MORVEK_KRELLOGGER_H

#include "platformexport.h"

#include <QtCore/QString>
#include <QtCore/QTextStream>

#include <functional>

namespace morvek {

class KrelStream;

/*!
 * The system logger. A statement makes one, writes one line with it and drops it, after it has asked
 * getVerbosity() whether the line is wanted:
 *
 * \code
 * if (KrelLogger::getVerbosity() >= 2)
 *     KrelLogger().error(1300) << "No such interface: " << name;
 * \endcode
 *
 * Lines go to standard error with time, level, code and text; control characters of the text are escaped, so
 * that no value can forge a second line.
 *
 * The library itself asks for the verbosity, streams errors and debug1, and prints errors, warnings and debug2. The
 * rest is for daemons, tools and tests.
 */
class MORVEK_PLATFORM_EXPORT KrelLogger
{
public:
    /*! 0 to 7: from the environment's KREL_VERBOSITY, 2 when that is unset or no such number. */
    static int getVerbosity();

    KrelStream error(unsigned short code);
    KrelStream debug1(unsigned short code);

    // What the format makes of its arguments is read in the locale's encoding.
    void error(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);
    void warning(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);
    void debug1(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);
    void debug2(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);

    // For daemons, tools and tests.

    enum Level { Error = 2, Warning = 3, Debug1 = 6, Debug2 = 7 };
    using Sink = std::function<void(Level level, unsigned short code, const QString &text)>;

    /*! Overrides the environment from now on. */
    static void setVerbosity(int verbosity);
    /*!
     * Sends every line, unescaped, to \a sink in place of standard error; an empty sink restores that. The thread
     * that writes a line calls it.
     */
    static void setSink(const Sink &sink);

    KrelStream warning(unsigned short code);
    KrelStream debug2(unsigned short code);
};

/*! The text of one line, which is written when the stream is destroyed. */
class MORVEK_PLATFORM_EXPORT KrelStream : public QTextStream
{
public:
    ~KrelStream() override;

private:
    friend class KrelLogger;
    KrelStream(KrelLogger::Level level, unsigned short code);

    QString m_text;
    KrelLogger::Level m_level;
    unsigned short m_code;
};

} // namespace morvek

#endif
