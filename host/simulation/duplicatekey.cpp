// SPDX-License-Identifier: Apache-2.0
#include "duplicatekey.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSet>
#include <QtCore/QVector>

namespace morvek {

namespace {

/*! Behind the closing quotes of the text that begins at \a begin. */
int endOfText(const QByteArray &json, int begin)
{
    int i = begin + 1;
    while (i < json.size() && json.at(i) != '"')
        i += json.at(i) == '\\' ? 2 : 1;
    return i + 1;
}

/*! The texts before a colon are the keys. */
bool isKey(const QByteArray &json, int end)
{
    while (end < json.size() && QByteArray(" \t\r\n").contains(json.at(end)))
        ++end;
    return end < json.size() && json.at(end) == ':';
}

/*! The parser itself says what a spelling stands for; it is no text when it stands for nothing. */
QJsonValue readText(const QByteArray &quoted)
{
    return QJsonDocument::fromJson('[' + quoted + ']').array().at(0);
}

} // namespace

DuplicateKey DuplicateKey::find(const QByteArray &json)
{
    QVector<QSet<QString>> open {{}}; // the keys of the objects and arrays around the present place
    for (int i = 0; i < json.size(); ++i) {
        const char c = json.at(i);
        if (c == '{' || c == '[')
            open.append(QSet<QString>());
        else if ((c == '}' || c == ']') && open.size() > 1)
            open.removeLast();
        if (c != '"')
            continue;
        const int end = endOfText(json, i);
        if (isKey(json, end)) {
            const QJsonValue key = readText(json.mid(i, end - i));
            if (open.last().contains(key.toString()))
                return {i, key.toString()};
            if (key.isString())
                open.last().insert(key.toString());
        }
        i = end - 1;
    }
    return {};
}

} // namespace morvek
