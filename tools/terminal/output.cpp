// SPDX-License-Identifier: Apache-2.0
#include "output.h"

#include "texts.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cwchar>

namespace morvek {

namespace {

int firstError = 0;

bool messagesAreJson = false;
QString complaint; // when they are JSON: the last one
QJsonValue failureCode;

bool steersTerminal(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format: // writing direction and invisible characters
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

int displayWidth(const QString &text)
{
    int width = 0;
    const auto characters = text.toUcs4();
    for (const uint character : characters)
        width += std::max(0, ::wcwidth(wchar_t(character)));
    return width;
}

bool writeTo(FILE *file, const QByteArray &bytes)
{
    const bool written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), file) == size_t(bytes.size());
    return std::fflush(file) == 0 && written;
}

void writeMessage(const QString &line)
{
    writeTo(stderr, printable(line).toUtf8() + '\n');
}

void writeNote(const QString &sentence)
{
    writeMessage(messagesAreJson ? jsonLine(QJsonObject {{QStringLiteral("note"), sentence}})
                                 : QLatin1String("morvekctl: ") + sentence);
}

} // namespace

QString printable(const QString &text)
{
    QString result;
    const auto characters = text.toUcs4();
    for (const uint character : characters) {
        const QString units = QString::fromUcs4(&character, 1);
        if (!steersTerminal(character)) {
            result += units;
            continue;
        }
        for (const QChar unit : units)
            result += QStringLiteral("\\u%1").arg(unit.unicode(), 4, 16, QLatin1Char('0'));
    }
    return result;
}

QString padded(const QString &text, int width)
{
    return text + QString(std::max(0, width - displayWidth(text)), QLatin1Char(' '));
}

void writeLine(const QString &line)
{
    if (!writeTo(stdout, printable(line).toUtf8() + '\n') && firstError == 0)
        firstError = errno;
}

void writeText(const QString &text)
{
    const QStringList lines = text.trimmed().split(QLatin1Char('\n'));
    for (const QString &line : lines)
        writeLine(line);
}

void writeTable(const QVector<QStringList> &rows)
{
    QVector<QStringList> cells = rows;
    QVector<int> widths;
    for (QStringList &row : cells) {
        widths.resize(std::max(widths.size(), row.size()));
        for (int column = 0; column < row.size(); ++column) {
            row[column] = row[column].isEmpty() ? QStringLiteral("-") : printable(row[column]);
            widths[column] = std::max(widths[column], displayWidth(row[column]));
        }
    }
    for (const QStringList &row : qAsConst(cells)) {
        QString line;
        for (int column = 0; column + 1 < row.size(); ++column)
            line += padded(row[column], widths[column]) + QLatin1String("  ");
        writeLine(line + row.last());
    }
}

int outputError()
{
    return firstError;
}

void complain(const QString &sentence)
{
    if (!messagesAreJson) {
        writeNote(sentence);
        return;
    }
    if (!complaint.isEmpty()) // it was not the end
        writeNote(complaint);
    complaint = sentence;
}

void note(const QString &sentence)
{
    writeNote(sentence);
    failureCode = QJsonValue();
}

void useJsonMessages()
{
    messagesAreJson = true;
}

void setFailureCode(int code)
{
    failureCode = code;
}

void endMessages(int exitCode)
{
    if (complaint.isEmpty())
        return;
    writeMessage(jsonLine(QJsonObject {{QStringLiteral("code"), failureCode},
                                       {QStringLiteral("exitCode"), exitCode},
                                       {QStringLiteral("message"), complaint}}));
    complaint.clear();
}

void ask(const QString &question)
{
    writeTo(stderr, printable(question).toUtf8());
}

void endQuestion()
{
    writeTo(stderr, "\n");
}

void replaceNote(const QString &note)
{
    writeTo(stderr, "\r\x1b[K" + printable(note).toUtf8());
}

} // namespace morvek
