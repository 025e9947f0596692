// SPDX-License-Identifier: Apache-2.0
#ifndef LOGCAPTURE_H
#define LOGCAPTURE_H

#include "krellogger.h"

#include <QtCore/QStringList>

/*! Collects the lines that are logged at \a verbosity while it lives, each as "level code text". */
class LogCapture
{
public:
    explicit LogCapture(int verbosity)
    {
        morvek::KrelLogger::setVerbosity(verbosity);
        morvek::KrelLogger::setSink([this](morvek::KrelLogger::Level level, unsigned short code, const QString &text) {
            m_lines.append(QStringLiteral("%1 %2 ").arg(levelText(level), QString::number(code)) + text);
        });
    }
    ~LogCapture()
    {
        morvek::KrelLogger::setSink(nullptr);
        morvek::KrelLogger::setVerbosity(2);
    }

    /*! The lines since the last call. */
    QStringList take()
    {
        const QStringList lines = m_lines;
        m_lines.clear();
        return lines;
    }

private:
    Q_DISABLE_COPY(LogCapture)

    static QString levelText(morvek::KrelLogger::Level level)
    {
        switch (level) {
        case morvek::KrelLogger::Error:
            return QStringLiteral("error");
        case morvek::KrelLogger::Warning:
            return QStringLiteral("warning");
        case morvek::KrelLogger::Debug1:
            return QStringLiteral("debug1");
        case morvek::KrelLogger::Debug2:
            return QStringLiteral("debug2");
        }
        return QString();
    }

    QStringList m_lines;
};

#endif
