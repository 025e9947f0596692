// SPDX-License-Identifier: Apache-2.0
#include "suggestion.h"

#include <QtCore/QVector>

#include <algorithm>

namespace morvek {

namespace {

constexpr int ShortWord = 4;
constexpr int TellingBeginning = 3;

/*! How many letters are missing, too much, wrong, or in the place of their neighbour. */
int slips(const QString &typed, const QString &word)
{
    QVector<int> before;
    QVector<int> last;
    QVector<int> line(word.size() + 1);
    std::generate(line.begin(), line.end(), [n = 0]() mutable { return n++; });
    for (int i = 1; i <= typed.size(); ++i) {
        before = last;
        last = line;
        line[0] = i;
        for (int j = 1; j <= word.size(); ++j) {
            const bool same = typed[i - 1] == word[j - 1];
            line[j] = std::min({last[j] + 1, line[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && typed[i - 1] == word[j - 2] && typed[i - 2] == word[j - 1])
                line[j] = std::min(line[j], before[j - 2] + 1);
        }
    }
    return line.last();
}

} // namespace

QString suggestion(const QString &typed, const QStringList &words)
{
    const QString lower = typed.toLower();
    QString closest;
    int nearest = typed.size() <= ShortWord ? 4 : 6; // in half slips: one is let pass, or two
    for (const QString &word : typed.isEmpty() ? QStringList() : words) {
        int distance = 2 * slips(lower, word);
        if (word.startsWith(lower)) // half a slip closer to it, or what is left out does not count
            distance = lower.size() < TellingBeginning ? distance - 1 : 1;
        if (distance >= nearest)
            continue;
        nearest = distance;
        closest = word;
    }
    return closest;
}

} // namespace morvek
