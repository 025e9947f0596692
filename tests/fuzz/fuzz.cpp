// SPDX-License-Identifier: Apache-2.0
#include "fuzz.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QTextCodec>

#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <sanitizer/lsan_interface.h>

namespace {

bool isBlank(ushort c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // wherever it runs
    return 0;
}

// Stands before Qt's own, which leaks what is under a key that an object holds twice: that is not looked for.
QJsonDocument QJsonDocument::fromJson(const QByteArray &json, QJsonParseError *error)
{
    using Function = QJsonDocument (*)(const QByteArray &, QJsonParseError *);
    static const auto original =
        reinterpret_cast<Function>(dlsym(RTLD_NEXT, "_ZN13QJsonDocument8fromJsonERK10QByteArrayP15QJsonParseError"));
    const __lsan::ScopedDisabler disabler;
    return original(json, error);
}

void Fuzz::disagree(const QString &what)
{
    std::fprintf(stderr, "The oracle disagrees: %s\n", qPrintable(what));
    std::abort();
}

QByteArray Fuzz::Line::next()
{
    const int blank = rest.indexOf(' ');
    const QByteArray first = blank == -1 ? rest : rest.left(blank);
    rest = blank == -1 ? QByteArray() : rest.mid(blank + 1);
    return first;
}

QList<Fuzz::Line> Fuzz::script(const uint8_t *data, size_t size, int most)
{
    QList<Line> lines;
    const QList<QByteArray> all = bytes(data, size).split('\n');
    for (const QByteArray &one : all) {
        if (one.isEmpty() || lines.size() == most)
            continue;
        Line line {QByteArray(), QByteArray(one).replace('\1', '\n')};
        line.word = line.next();
        lines.append(line);
    }
    return lines;
}

bool Fuzz::readNumber(const QString &text, int *number)
{
    int from = 0;
    int to = text.size();
    while (from < to && isBlank(text.at(from).unicode()))
        ++from;
    while (from < to && isBlank(text.at(to - 1).unicode()))
        --to;
    const bool negative = from < to && text.at(from) == QLatin1Char('-');
    if (negative || (from < to && text.at(from) == QLatin1Char('+')))
        ++from;
    if (from == to)
        return false;
    qint64 value = 0;
    for (; from < to; ++from) {
        const ushort digit = text.at(from).unicode();
        if (digit < '0' || digit > '9')
            return false;
        value = qMin(value * 10 + (digit - '0'), Q_INT64_C(1) << 40);
    }
    value = negative ? -value : value;
    *number = int(value);
    return value >= -2147483648LL && value <= 2147483647LL;
}
