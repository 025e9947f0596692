// SPDX-License-Identifier: Apache-2.0
// Attributes in the kernel's messages, beside an own walk over them.
#include "fuzz.h"
#include "netlinkdump.h"

using namespace morvek;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size);
    const auto number = [&input](int at) {
        return static_cast<unsigned char>(input.at(at)) + 256 * static_cast<unsigned char>(input.at(at + 1));
    };
    QMap<int, QByteArray> expected;
    for (int at = 0; at + 4 <= input.size(); at += (number(at) + 3) / 4 * 4) {
        if (number(at) < 4 || at + number(at) > input.size())
            break;
        expected.insert(number(at + 2) & 0x3fff, input.mid(at + 4, number(at) - 4));
    }
    Fuzz::expectEqual(NetlinkDump::attributes(input), expected, "the attributes");
    return 0;
}
