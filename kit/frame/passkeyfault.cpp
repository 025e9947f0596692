// SPDX-License-Identifier: Apache-2.0
#include "passkeyfault_p.h"

#include "secret_p.h"

namespace morvek {

namespace {

constexpr int Shortest = 8;
constexpr int Longest = 63;
constexpr int KeySize = 64;

bool isPrintable(QChar character)
{
    return character >= QLatin1Char(' ') && character <= QLatin1Char('~');
}

bool isHexDigit(QChar character)
{
    const QChar lower = character.toLower();
    return (character >= QLatin1Char('0') && character <= QLatin1Char('9'))
        || (lower >= QLatin1Char('a') && lower <= QLatin1Char('f'));
}

template<typename Kind>
bool isAll(const Secret &passkey, Kind isOfKind)
{
    int i = 0;
    while (i < passkey.size() && isOfKind(passkey.at(i)))
        ++i;
    return i == passkey.size();
}

} // namespace

PasskeyFault faultOf(const Secret &passkey)
{
    if (passkey.isEmpty())
        return PasskeyFault::Missing;
    if (!isAll(passkey, isPrintable))
        return PasskeyFault::NotPrintable;
    if (passkey.size() < Shortest)
        return PasskeyFault::TooShort;
    if (passkey.size() > Longest && !(passkey.size() == KeySize && isAll(passkey, isHexDigit)))
        return PasskeyFault::TooLong;
    return PasskeyFault::None;
}

} // namespace morvek
