// SPDX-License-Identifier: Apache-2.0
#include "visibletext.h"

namespace morvek {

namespace {

bool isVisible(uint character)
{
    const QChar::Category category = QChar::category(character);
    return QChar::isPrint(character) && category != QChar::Separator_Line && category != QChar::Separator_Paragraph;
}

QString codeOf(uint character)
{
    return character <= 0xffff ? QStringLiteral("\\u%1").arg(character, 4, 16, QLatin1Char('0'))
                               : QStringLiteral("\\U%1").arg(character, 8, 16, QLatin1Char('0'));
}

} // namespace

QString visible(const QString &text)
{
    QString line;
    line.reserve(text.size());
    for (int at = 0; at < text.size(); ++at) {
        const bool isPair = text.at(at).isHighSurrogate() && at + 1 < text.size() && text.at(at + 1).isLowSurrogate();
        const uint character = isPair ? QChar::surrogateToUcs4(text.at(at), text.at(at + 1)) : text.at(at).unicode();
        const int units = isPair ? 2 : 1;
        line += isVisible(character) ? text.mid(at, units) : codeOf(character);
        at += units - 1;
    }
    return line;
}

} // namespace morvek
