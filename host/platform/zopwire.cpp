// SPDX-License-Identifier: Apache-2.0
#include "zopwire.h"

#include <QtCore/QtEndian>

#include <cstring>

namespace morvek {

namespace {

constexpr quint32 NoValue = 0xffffffff; // in the place of a value's length

void putNumber(QByteArray *bytes, quint32 number)
{
    const quint32 encoded = qToLittleEndian(number);
    bytes->append(reinterpret_cast<const char *>(&encoded), sizeof(encoded));
}

void putBlock(QByteArray *bytes, const QByteArray &block)
{
    putNumber(bytes, quint32(block.size()));
    bytes->append(block);
}

/*! Takes one thing after the other from bytes that are not trusted. */
class Unpacker
{
public:
    Unpacker(const char *bytes, int size)
        : m_next(bytes),
          m_end(bytes + size)
    {
    }

    bool isAtEnd() const { return m_next == m_end; }

    bool take(quint32 *number)
    {
        if (m_end - m_next < qptrdiff(sizeof(*number)))
            return false;
        *number = qFromLittleEndian<quint32>(m_next);
        m_next += sizeof(*number);
        return true;
    }

    /*! Takes \a size bytes, which stay where they are. */
    bool take(const char **bytes, quint32 size)
    {
        if (quint64(m_end - m_next) < size)
            return false;
        *bytes = m_next;
        m_next += size;
        return true;
    }

    bool take(QString *name)
    {
        quint32 size = 0;
        const char *utf8 = nullptr;
        if (!take(&size) || !take(&utf8, size))
            return false;
        *name = QString::fromUtf8(utf8, int(size));
        return true;
    }

    bool take(ZopVariant *value)
    {
        quint32 size = 0;
        quint32 encodingSize = 0;
        const char *bytes = nullptr;
        const char *encoding = nullptr;
        if (!take(&size))
            return false;
        if (size == NoValue)
            return true;
        if (!take(&bytes, size) || !take(&encodingSize) || !take(&encoding, encodingSize))
            return false;
        *value = ZopVariant(QByteArray(bytes, int(size)), encodingOf(encoding, int(encodingSize)));
        return true;
    }

private:
    /*! The usual ones are shared by all values. */
    static QByteArray encodingOf(const char *name, int size)
    {
        static const QByteArray encodings[] = {"text", "number", "json"};
        for (const QByteArray &usual : encodings) {
            if (usual.size() == size && std::memcmp(usual.constData(), name, size_t(size)) == 0)
                return usual;
        }
        return QByteArray(name, size);
    }

    const char *m_next;
    const char *m_end;
};

} // namespace

QByteArray encodeChangeset(const ZopChangeset &changes)
{
    QByteArray bytes;
    appendChangeset(changes, &bytes);
    return bytes;
}

void appendChangeset(const ZopChangeset &changes, QByteArray *bytes)
{
    putNumber(bytes, quint32(changes.assignments.size()));
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it) {
        putBlock(bytes, it.key().toUtf8());
        if (it->isValid()) {
            putBlock(bytes, it->bytes());
            putBlock(bytes, it->encoding());
        } else {
            putNumber(bytes, NoValue);
        }
    }
    for (const QString &name : changes.removals)
        putBlock(bytes, name.toUtf8());
}

qint64 encodedSize(const QString &name, const ZopVariant &value)
{
    constexpr qint64 Number = sizeof(quint32);
    const qint64 ofName = Number + name.toUtf8().size();
    return ofName + Number + (value.isValid() ? value.bytes().size() + Number + value.encoding().size() : 0);
}

bool decodeChangeset(const char *bytes, int size, ZopChangeset *changes)
{
    *changes = ZopChangeset();
    Unpacker unpacker(bytes, size);
    QString name;
    quint32 count = 0;
    if (!unpacker.take(&count))
        return false;
    for (; count > 0; --count) {
        ZopVariant value;
        if (!unpacker.take(&name) || !unpacker.take(&value))
            return false;
        changes->assignments.insert(changes->assignments.cend(), name, value); // they come in order, as a rule
    }
    while (!unpacker.isAtEnd()) {
        if (!unpacker.take(&name))
            return false;
        changes->removals.insert(name);
    }
    return true;
}

void apply(const ZopChangeset &changes, QMap<QString, ZopVariant> *values)
{
    for (auto it = changes.assignments.begin(); it != changes.assignments.end(); ++it)
        values->insert(it.key(), it.value());
    for (const QString &name : changes.removals)
        values->remove(name);
}

} // namespace morvek
