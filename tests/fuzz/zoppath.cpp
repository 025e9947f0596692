// SPDX-License-Identifier: Apache-2.0
// Names and paths of objects. An own reading of the rules, with UTF-8 checked byte by byte, says which are taken; what
// is taken stays below the root.
#include "zoppath.h"
#include "fuzz.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

using namespace morvek;

namespace {

/*! The length of the character at \a at, or 0 when there is none. */
int characterLength(const QByteArray &bytes, int at)
{
    const auto byte = [&bytes](int i) { return i < bytes.size() ? static_cast<unsigned char>(bytes.at(i)) : 0u; };
    const unsigned int first = byte(at);
    const int length = first < 0x80 ? 1 : first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
    for (int i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xc0) != 0x80)
            return 0;
    }
    const unsigned int second = byte(at + 1);
    const bool overlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool outside = (first == 0xed && second > 0x9f) || (first == 0xf4 && second > 0x8f);
    return overlong || outside ? 0 : length;
}

bool isName(const QByteArray &name)
{
    if (name.isEmpty() || name.size() > 200 || name.at(0) == '.' || name.startsWith("\xef\xbb\xbf"))
        return false;
    for (int at = 0; at < name.size();) {
        const auto byte = static_cast<unsigned char>(name.at(at));
        const int length = characterLength(name, at);
        if (byte < 0x20 || byte == 0x7f || byte == '/' || length == 0)
            return false;
        at += length;
    }
    return true;
}

bool isPath(const QByteArray &path)
{
    if (!path.startsWith('/') || path.size() > 2000)
        return false;
    for (int from = 1; from <= path.size();) {
        const int slash = path.indexOf('/', from);
        const int end = slash == -1 ? path.size() : slash;
        if (!isName(path.mid(from, end - from)))
            return false;
        from = end + 1;
    }
    return path.size() > 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir root;
    const QByteArray input = Fuzz::bytes(data, size);
    const QByteArray folder = QFile::encodeName(root.path());
    qputenv("ZOP_ROOT", folder);
    Fuzz::expectEqual(ZopPath::isObjectName(input), isName(input), "whether it is a name");

    const QString text = Fuzz::text(input);
    const QByteArray bytes = text.toUtf8();
    const bool closed = bytes.endsWith('/');
    const ZopPath object = ZopPath::object(text);
    const ZopPath directory = ZopPath::directory(text);
    Fuzz::expectEqual(object.isValid(), isPath(bytes) && !closed, "whether it is an object's path");
    Fuzz::expectEqual(directory.isValid(), isPath(closed ? bytes.chopped(1) : bytes),
                      "whether it is a directory's path");
    if (object.isValid())
        Fuzz::expectEqual(object.file(), folder + bytes, "where the object stands");
    if (directory.isValid())
        Fuzz::expectEqual(directory.folder(), folder + (closed ? bytes.chopped(1) : bytes),
                          "where the directory stands");
    return 0;
}
