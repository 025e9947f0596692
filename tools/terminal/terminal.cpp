// SPDX-License-Identifier: Apache-2.0
#include "terminal.h"

#include <QtCore/QtGlobal>

#include <sys/ioctl.h>
#include <unistd.h>

namespace morvek {

namespace {

bool hasColours(int stream)
{
    const QByteArray kind = qgetenv("TERM");
    return !qEnvironmentVariableIsSet("NO_COLOR") && !kind.isEmpty() && kind != "dumb" && ::isatty(stream);
}

int codeOf(Tone tone)
{
    switch (tone) {
    case Tone::Good:
        return 32; // green
    case Tone::Middling:
        return 33; // yellow
    case Tone::Bad:
        return 31; // red
    case Tone::Plain:
        break;
    }
    return 0;
}

} // namespace

int terminalWidth()
{
    winsize size = {};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

QString toned(const QString &text, Tone tone, int stream)
{
    if (tone == Tone::Plain || !hasColours(stream))
        return text;
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(QString::number(codeOf(tone)), text);
}

} // namespace morvek
