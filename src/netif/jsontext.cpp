// SPDX-License-Identifier: Apache-2.0
#include "jsontext_p.h"

#include <QtCore/QString>

#include <algorithm>

namespace morvek {

namespace {

constexpr QLatin1Char Quote('"');
constexpr QLatin1Char Backslash('\\');

/*! Whether \a c never stands for itself, or not without its neighbour. */
bool isSpecial(QChar c)
{
    return c < QLatin1Char(' ') || c == Quote || c == Backslash || c.isSurrogate();
}

/*! The letter behind the backslash for \a c; 0 when its number stands there. */
char shortEscape(QChar c)
{
    switch (c.unicode()) {
    case '"':
    case '\\':
        return char(c.unicode());
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

void appendEscaped(QChar c, QString *json)
{
    *json += Backslash;
    if (const char letter = shortEscape(c))
        *json += QLatin1Char(letter);
    else
        *json += QStringLiteral("u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
}

void appendEscaped(const QString &text, QString *json)
{
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            *json += text.midRef(i++, 2);
        else if (isSpecial(c))
            appendEscaped(c, json);
        else
            *json += c;
    }
}

} // namespace

void appendJsonString(const QString &text, QString *json)
{
    *json += Quote;
    if (std::any_of(text.begin(), text.end(), isSpecial))
        appendEscaped(text, json);
    else
        *json += text;
    *json += Quote;
}

} // namespace morvek
