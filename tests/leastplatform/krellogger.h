// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_KRELLOGGER_H
#define LEAST_KRELLOGGER_H

#include <QtCore/QTextStream>

namespace morvek {

class KrelStream : public QTextStream
{
};

class KrelLogger
{
public:
    static int getVerbosity();
    KrelStream error(unsigned short code);
    KrelStream debug1(unsigned short code);
    void error(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);
    void warning(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);
    void debug2(unsigned short code, const char *format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(3, 4);
};

} // namespace morvek

#endif
