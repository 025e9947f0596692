// SPDX-License-Identifier: Apache-2.0
// Updates as bytes. What can be read is written again and read again as the same; whether it can be read at all, an own
// walk over the lengths says.
#include "zopwire.h"
#include "fuzz.h"

using namespace morvek;

namespace {

/*! Walks over a payload without keeping anything. */
class Walk
{
public:
    explicit Walk(const QByteArray &payload)
        : m_bytes(payload)
    {
    }

    bool isWhole()
    {
        const qint64 count = length();
        for (qint64 i = 0; m_sound && i < count; ++i) {
            step(length());
            const qint64 size = length();
            if (size == 0xffffffff)
                continue; // no value
            step(size);
            step(length());
        }
        while (m_sound && m_at < m_bytes.size())
            step(length());
        return m_sound;
    }

private:
    qint64 length()
    {
        qint64 value = 0;
        for (int i = 3; i >= 0; --i)
            value =
                value * 256 + (m_at + i < m_bytes.size() ? static_cast<unsigned char>(m_bytes.at(int(m_at) + i)) : 0);
        step(4);
        return value;
    }
    void step(qint64 size)
    {
        m_sound = m_sound && m_at + size <= m_bytes.size();
        m_at = m_sound ? m_at + size : m_bytes.size();
    }

    QByteArray m_bytes;
    qint64 m_at = 0;
    bool m_sound = true;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size);
    ZopChangeset changes;
    const bool readable = decodeChangeset(input, &changes);
    Fuzz::expectEqual(readable, Walk(input).isWhole(), "whether the bytes are an update");
    if (!readable)
        return 0;
    const QByteArray encoded = encodeChangeset(changes);
    ZopChangeset again;
    Fuzz::expect(decodeChangeset(encoded, &again), "what was written can be read");
    Fuzz::expect(again.assignments == changes.assignments, "the assignments come back");
    Fuzz::expect(again.removals == changes.removals, "the removals come back");
    return 0;
}
