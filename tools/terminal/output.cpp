// SPDX-License-Identifier: Apache-2.0
#include "output.h"

#include "terminal.h"
#include "texts.h"

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cwchar>

#include <unistd.h>

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

bool writeTo(FILE *file, const QByteArray &bytes)
{
    const bool written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), file) == size_t(bytes.size());
    return std::fflush(file) == 0 && written;
}

void writeMessage(const QString &line)
{
    writeTo(stderr, printable(line).toUtf8() + '\n');
}

void writeNote(const QString &sentence, Tone tone = Tone::Plain)
{
    if (messagesAreJson)
        writeMessage(jsonLine(QJsonObject {{QStringLiteral("note"), sentence}}));
    else
        writeTo(
            stderr,
            (toned(QStringLiteral("morvekctl:"), tone, STDERR_FILENO) + QLatin1Char(' ') + printable(sentence)).toUtf8()
                + '\n');
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

int displayWidth(const QString &text)
{
    int width = 0;
    const auto characters = text.toUcs4();
    for (const uint character : characters)
        width += std::max(0, ::wcwidth(wchar_t(character)));
    return width;
}

QString padded(const QString &text, int width)
{
    return text + QString(std::max(0, width - displayWidth(text)), QLatin1Char(' '));
}

void writeLine(const QString &line)
{
    writePrintable(printable(line));
}

void writePrintable(const QString &line)
{
    if (!writeTo(stdout, line.toUtf8() + '\n') && firstError == 0)
        firstError = errno;
}

void writeText(const QString &text)
{
    const QStringList lines = text.trimmed().split(QLatin1Char('\n'));
    for (const QString &line : lines)
        writeLine(line);
}

int outputError()
{
    return firstError;
}

void complain(const QString &sentence)
{
    if (!messagesAreJson) {
        writeNote(sentence, Tone::Bad);
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
