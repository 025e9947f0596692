// SPDX-License-Identifier: Apache-2.0
#include "dottedquad_p.h"

#include <QtCore/QString>

namespace morvek {

namespace {

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isWordCharacter(QChar c)
{
    return isDigit(c) || (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
        || (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) || c == QLatin1Char('_');
}

/*! Where the number at \a at ends, a fourth digit being none of it; null when there is none up to 255. */
const QChar *numberEnd(const QChar *at, const QChar *end)
{
    const QChar *const begin = at;
    int value = 0;
    for (; at != end && at - begin < 3 && isDigit(*at); ++at)
        value = value * 10 + (at->unicode() - '0');
    return at == begin || value > 255 ? nullptr : at;
}

bool isQuadAt(const QChar *at, const QChar *end)
{
    for (int number = 0; number < 4; ++number) {
        if (number > 0 && (at == end || *at++ != QLatin1Char('.')))
            return false;
        at = numberEnd(at, end);
        if (!at)
            return false;
    }
    return at == end || !isWordCharacter(*at);
}

} // namespace

bool holdsDottedQuad(const QString &text)
{
    const QChar *const begin = text.begin();
    const QChar *const end = text.end();
    for (const QChar *at = begin; at != end; ++at) {
        if (isDigit(*at) && (at == begin || !isWordCharacter(at[-1])) && isQuadAt(at, end))
            return text.isValidUtf16();
    }
    return false;
}

} // namespace morvek
