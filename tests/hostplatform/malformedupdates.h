// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTS_MALFORMEDUPDATES_H
#define MORVEK_TESTS_MALFORMEDUPDATES_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <random>

/*! What a peer may send that is no update. */
inline QVector<QByteArray> malformedUpdates()
{
    QVector<QByteArray> result = {
        QByteArray("GET / HTTP/1.1\r\n\r\n"), // a length beyond any bound
        QByteArray("\xff\xff\xff\xff", 4),
        QByteArray("\x7f\xff\xff\xff", 4),
        QByteArray("\x80\x00\x00\x00", 4),
        QByteArray("\x01\x00\x00\x05", 4), // just beyond the bound
        QByteArray(4, '\0'),               // an update of no bytes
        QByteArray("\0\0\0\x01\0", 5),
        QByteArray("\0\0\0\x08\xff\xff\xff\xff\0\0\0\0", 12),   // of four thousand million attributes
        QByteArray("\0\0\0\x08\0\0\0\x01\xff\xff\xff\xfe", 12), // a name of four thousand million bytes
        QByteArray("\0\0\0\x09\0\0\0\0\0\0\0\0\0", 13),         // and something behind its end
    };
    std::mt19937 random(11);
    for (int i = 0; i < 50; ++i) {
        QByteArray bytes("\0\0\0\x40", 4);
        for (int byte = 0; byte < 64; ++byte)
            bytes.append(char(random()));
        result << bytes;
    }
    return result;
}

#endif
