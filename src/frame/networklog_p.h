// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKLOG_P_H
#define MORVEK_NETWORKLOG_P_H

#include "krellogger.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include <type_traits>

namespace morvek {

/*!
 * The library's lines in the system log, each put together of pieces with nothing between them. A piece is whatever
 * a text stream takes, or a function that returns such a thing: it is called for a line that is written, only.
 *
 * A printed piece is what printf makes of it for "%s": text in the locale's encoding, up to its first zero.
 */
namespace NetworkLog {

constexpr unsigned short MessageCode = 1300;

template<typename Piece>
void append(QTextStream &stream, Piece &piece)
{
    if constexpr (std::is_invocable_v<Piece &>)
        stream << piece();
    else
        stream << piece;
}

template<typename... Pieces>
void write(KrelStream line, Pieces &...pieces)
{
    (append(line, pieces), ...);
}

template<typename Piece>
QByteArray printed(Piece &piece)
{
    QString text;
    QTextStream stream(&text);
    append(stream, piece);
    stream.flush();
    return text.toLocal8Bit().constData();
}

template<typename... Pieces>
QByteArray printedLine(Pieces &...pieces)
{
    return (QByteArray() + ... + printed(pieces));
}

template<typename... Pieces>
void error(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 2)
        write(KrelLogger().error(MessageCode), pieces...);
}

template<typename... Pieces>
void printError(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 2)
        KrelLogger().error(MessageCode, "%s", printedLine(pieces...).constData());
}

template<typename... Pieces>
void printWarning(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 3)
        KrelLogger().warning(MessageCode, "%s", printedLine(pieces...).constData());
}

inline bool writesDebug1()
{
    return KrelLogger::getVerbosity() >= 6;
}

template<typename... Pieces>
void debug1(Pieces &&...pieces)
{
    if (writesDebug1())
        write(KrelLogger().debug1(MessageCode), pieces...);
}

template<typename... Pieces>
void printDebug2(Pieces &&...pieces)
{
    if (KrelLogger::getVerbosity() >= 7)
        KrelLogger().debug2(MessageCode, "%s", printedLine(pieces...).constData());
}

} // namespace NetworkLog

} // namespace morvek

#endif
