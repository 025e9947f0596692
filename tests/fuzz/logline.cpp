// SPDX-License-Identifier: Apache-2.0
// Texts of log lines, on the way to standard error: one line each, without anything that a terminal would act upon. The
// first byte picks the level and the way to write.
#include "fuzz.h"
#include "krellogger.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QVector>

#include <algorithm>
#include <iterator>

#include <sys/mman.h>
#include <unistd.h>

using namespace morvek;

namespace {

void write(int way, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    switch (way % 4) {
    case 0:
        KrelLogger().error(1300) << text;
        break;
    case 1:
        KrelLogger().warning(1300) << text;
        break;
    case 2:
        KrelLogger().debug1(1300, "%s", bytes.constData());
        break;
    default:
        KrelLogger().debug2(1300) << text;
        break;
    }
}

/*! What is written to standard error meanwhile. */
QByteArray written(int way, const QString &text)
{
    static const int file = memfd_create("log", MFD_CLOEXEC);
    static const int standardError = dup(STDERR_FILENO);
    Fuzz::expect(ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0, "there is a file");
    dup2(file, STDERR_FILENO);
    write(way, text);
    dup2(standardError, STDERR_FILENO);
    QByteArray bytes(int(lseek(file, 0, SEEK_END)), Qt::Uninitialized);
    Fuzz::expect(pread(file, bytes.data(), size_t(bytes.size()), 0) == bytes.size(), "the file can be read");
    return bytes;
}

/*! What a terminal does not act upon and people can see, as far as it does not depend on a version of Unicode. */
bool isHarmless(uint c)
{
    static const struct
    {
        uint first;
        uint last;
    } harmful[] = {
        {0, 0x1f},                         // controls
        {0x7f, 0x9f},        {0xad, 0xad}, // marks without a shape, and those that turn the direction
        {0x61c, 0x61c},      {0x180e, 0x180e}, {0x200b, 0x200f},   {0x2028, 0x202e},
        {0x2060, 0x206f},    {0xd800, 0xf8ff}, // surrogates by themselves, and for private use
        {0xfeff, 0xfeff},    {0xfff9, 0xfffb}, {0x1d173, 0x1d17a}, {0xe0000, 0xe00ff}, // tags
        {0xf0000, 0x10ffff},
    };
    return std::none_of(std::begin(harmful), std::end(harmful),
                        [c](const auto &range) { return c >= range.first && c <= range.last; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::Bytes input(data, size);
    const int way = input.number();
    const QString text = Fuzz::text(input.rest());
    const QByteArray line = written(way, text);
    Fuzz::expect(line.endsWith('\n') && line.count('\n') == 1, "one line");
    const QString shown = Fuzz::text(line.chopped(1));
    bool plain = true;
    for (const uint c : shown.toUcs4())
        Fuzz::expect(isHarmless(c), "nothing that a terminal acts upon");
    for (const QChar c : text)
        plain = plain && c.unicode() >= 0x20 && c.unicode() < 0x7f;
    static const QRegularExpression head(
        QStringLiteral("\\A\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} (error|warning|debug1|debug2) 1300 "));
    const QRegularExpressionMatch match = head.match(shown);
    Fuzz::expect(match.hasMatch(), "it begins with time, level and code");
    if (plain)
        Fuzz::expectEqual(shown.mid(match.capturedLength()), text, "a plain text is shown as it is");
    return 0;
}
