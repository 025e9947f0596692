// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_H
#define FUZZ_H

#include <QtCore/QByteArray>
#include <QtCore/QDebug>
#include <QtCore/QList>
#include <QtCore/QString>

#include <cstddef>
#include <cstdint>

/*! What the fuzz targets have in common. */
namespace Fuzz {

/*! Ends the run, and leaves the input behind: the product does not do what the oracle says. */
[[noreturn]] void disagree(const QString &what);

inline void expect(bool holds, const char *what)
{
    if (!holds)
        disagree(QLatin1String(what));
}

template<typename Value>
void expectEqual(const Value &actual, const Value &expected, const char *what)
{
    if (actual == expected)
        return;
    QString text;
    QDebug(&text) << what << "\nactual:  " << actual << "\nexpected:" << expected;
    disagree(text);
}

inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), int(size));
}

/*! All of \a utf8, zeros too. */
inline QString text(const QByteArray &utf8)
{
    return QString::fromUtf8(utf8.constData(), utf8.size());
}

/*! What a printed line shows of \a text: as of a C string, nothing behind a zero. */
inline QString printed(const QString &text)
{
    return text.left(text.indexOf(QChar(0)));
}

/*! Reads a decimal number with an optional sign and blanks around it, of ASCII; false for anything else. */
bool readNumber(const QString &text, int *number);

/*! A line of a script: a word, and what follows behind one blank, where the byte 1 stands for a line break. */
struct Line
{
    QByteArray word;
    QByteArray rest;

    /*! Takes the first word off the rest. */
    QByteArray next();
};

/*! The lines of a script; past \a most they are left out. */
QList<Line> script(const uint8_t *data, size_t size, int most = 64);

/*! Takes one thing after the other from the bytes; zeros and nothing when there is no more. */
class Bytes
{
public:
    Bytes(const uint8_t *data, size_t size)
        : m_bytes(bytes(data, size))
    {
    }

    bool isAtEnd() const { return m_position == m_bytes.size(); }
    int number() { return isAtEnd() ? 0 : static_cast<unsigned char>(m_bytes.at(m_position++)); }
    QByteArray take(int size)
    {
        const QByteArray taken = m_bytes.mid(m_position, size);
        m_position += taken.size();
        return taken;
    }
    QByteArray rest() { return take(m_bytes.size()); }

private:
    QByteArray m_bytes;
    int m_position = 0;
};

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

#endif
