// SPDX-License-Identifier: Apache-2.0
#ifndef JOURNALBYTES_H
#define JOURNALBYTES_H

#include <QtCore/QByteArray>

#include <array>

/*! Journals written without the stand-in's code, as docs/mechanism.md describes them. */
namespace JournalBytes {

constexpr quint64 Marker = 0x5a8d3e19c7f046b2;
constexpr int HeaderSize = 48;
constexpr int RecordHeaderSize = 24;

inline quint32 shifted(quint32 value)
{
    for (int bit = 0; bit < 8; ++bit)
        value = (value & 1) ? (value >> 1) ^ 0xedb88320 : value >> 1;
    return value;
}

inline quint32 checksum(const QByteArray &bytes)
{
    static const std::array<quint32, 256> table = [] {
        std::array<quint32, 256> values {};
        for (quint32 i = 0; i < values.size(); ++i)
            values[i] = shifted(i);
        return values;
    }();
    quint32 value = 0xffffffff;
    for (const char byte : bytes)
        value = (value >> 8) ^ table[(value ^ static_cast<unsigned char>(byte)) & 0xff];
    return ~value;
}

/*! \a value in \a size bytes, the smallest first. */
inline QByteArray number(quint64 value, int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes.append(char(value >> (8 * i)));
    return bytes;
}

inline quint64 numberAt(const QByteArray &bytes, int at, int size)
{
    quint64 value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

/*! \a header, of which the checksum is made right. */
inline QByteArray withChecksum(const QByteArray &header)
{
    const QByteArray summed = header.left(HeaderSize - 8);
    return summed + number(checksum(summed), 8);
}

inline QByteArray header(quint64 marker = Marker, quint64 stateEnd = HeaderSize)
{
    return withChecksum("ZOPJRNL1" + number(marker, 8) + number(7, 8) + number(1, 8) + number(stateEnd, 8));
}

inline QByteArray recordHeader(quint64 writer, quint32 size, quint32 sum)
{
    return number(Marker, 8) + number(writer, 8) + number(size, 4) + number(sum, 4);
}

inline QByteArray record(quint64 writer, const QByteArray &payload)
{
    return recordHeader(writer, quint32(payload.size()), checksum(number(writer, 8) + payload)) + payload;
}

inline QByteArray block(const QByteArray &bytes)
{
    return number(quint64(bytes.size()), 4) + bytes;
}

} // namespace JournalBytes

#endif
