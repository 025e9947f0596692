// SPDX-License-Identifier: Apache-2.0
#include "candidates.h"

#include <QtCore/QVector>

#include <algorithm>

namespace morvek {

namespace {

bool canBeTyped(const QString &word)
{
    const QVector<uint> characters = word.toUcs4();
    return std::all_of(characters.begin(), characters.end(), [](uint character) {
        switch (QChar::category(character)) {
        case QChar::Other_Control:
        case QChar::Other_Format: // writing direction and invisible characters
        case QChar::Other_Surrogate:
        case QChar::Other_PrivateUse:
        case QChar::Other_NotAssigned:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return false;
        default:
            return character != QChar::ReplacementCharacter; // it stood for bytes that are no text
        }
    });
}

} // namespace

Candidates candidatesOfValue(const QString &name)
{
    Candidates candidates;
    const QStringList parts = name.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        if (part == QLatin1String("FILE"))
            candidates.files = Candidates::AllFiles;
        else if (part == QLatin1String("DIR"))
            candidates.files = Candidates::Directories;
        else if (part != QLatin1String("NAME") && (parts.size() > 1 || part == part.toLower()))
            candidates.words += part;
    }
    return candidates;
}

Candidates attachedTo(const QString &typed, Candidates candidates)
{
    const QString name = typed.left(typed.indexOf(QLatin1Char('=')) + 1);
    for (QString &word : candidates.words)
        word.prepend(name);
    return candidates;
}

QStringList completionLines(const Candidates &candidates, const QStringList &words)
{
    const QString typed = words.isEmpty() ? QString() : words.last();
    const char *const kinds[] = {"words", "files", "directories"};
    QStringList lines {QLatin1String(kinds[candidates.files])};
    for (const QString &word : candidates.words) {
        if (!word.isEmpty() && word.startsWith(typed) && canBeTyped(word))
            lines += word;
    }
    return lines;
}

} // namespace morvek
