// SPDX-License-Identifier: Apache-2.0
#include "krellogger.h"

#include "visibletext.h"

#include <QtCore/QDateTime>

#include <cstdarg>
#include <cstdio>

namespace morvek {

namespace {

constexpr int DefaultVerbosity = 2;

int environmentVerbosity()
{
    bool ok = false;
    const int verbosity = qEnvironmentVariableIntValue("KREL_VERBOSITY", &ok);
    return ok && verbosity >= 0 && verbosity <= 7 ? verbosity : DefaultVerbosity;
}

int &currentVerbosity()
{
    static int verbosity = environmentVerbosity();
    return verbosity;
}

KrelLogger::Sink &currentSink()
{
    static KrelLogger::Sink sink;
    return sink;
}

const char *levelName(KrelLogger::Level level)
{
    switch (level) {
    case KrelLogger::Error:
        return "error";
    case KrelLogger::Warning:
        return "warning";
    case KrelLogger::Debug1:
        return "debug1";
    case KrelLogger::Debug2:
        return "debug2";
    }
    return "?";
}

void write(KrelLogger::Level level, unsigned short code, const QString &text)
{
    if (const KrelLogger::Sink sink = currentSink()) {
        sink(level, code, text);
        return;
    }
    const QString line = QStringLiteral("%1 %2 %3 ")
                             .arg(QDateTime::currentDateTime().toString(Qt::ISODateWithMs),
                                  QLatin1String(levelName(level)), QString::number(code))
        + visible(text) + QLatin1Char('\n');
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

void write(KrelLogger::Level level, unsigned short code, const char *format, va_list arguments)
{
    va_list measured;
    va_copy(measured, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    QByteArray bytes(qMax(size, 0), '\0');
    std::vsnprintf(bytes.data(), size_t(bytes.size()) + 1, format, arguments);
    write(level, code, QString::fromLocal8Bit(bytes));
}

} // namespace

int KrelLogger::getVerbosity()
{
    return currentVerbosity();
}

void KrelLogger::setVerbosity(int verbosity)
{
    currentVerbosity() = verbosity;
}

void KrelLogger::setSink(const Sink &sink)
{
    currentSink() = sink;
}

KrelStream KrelLogger::error(unsigned short code)
{
    return KrelStream(Error, code);
}

KrelStream KrelLogger::warning(unsigned short code)
{
    return KrelStream(Warning, code);
}

KrelStream KrelLogger::debug1(unsigned short code)
{
    return KrelStream(Debug1, code);
}

KrelStream KrelLogger::debug2(unsigned short code)
{
    return KrelStream(Debug2, code);
}

void KrelLogger::error(unsigned short code, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(Error, code, format, arguments);
    va_end(arguments);
}

void KrelLogger::warning(unsigned short code, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(Warning, code, format, arguments);
    va_end(arguments);
}

void KrelLogger::debug1(unsigned short code, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(Debug1, code, format, arguments);
    va_end(arguments);
}

void KrelLogger::debug2(unsigned short code, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(Debug2, code, format, arguments);
    va_end(arguments);
}

KrelStream::KrelStream(KrelLogger::Level level, unsigned short code)
    : m_level(level),
      m_code(code)
{
    setString(&m_text, QIODevice::WriteOnly);
}

KrelStream::~KrelStream()
{
    flush();
    write(m_level, m_code, m_text);
}

} // namespace morvek
