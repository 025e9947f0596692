// SPDX-License-Identifier: Apache-2.0
#ifndef UPDATEWALK_H
#define UPDATEWALK_H

#include "fuzz.h"
#include "zopchangeset.h"

/*! Updates read from their bytes without the stand-in's code, as docs/mechanism.md describes them. */
namespace UpdateWalk {

/*! What an update says. */
struct Update
{
    QMap<QString, QList<QByteArray>> values; //!< the bytes and their encoding; nothing for no value
    QSet<QString> removals;

    bool operator==(const Update &other) const { return values == other.values && removals == other.removals; }
};

inline QDebug operator<<(QDebug debug, const Update &update)
{
    return debug << update.values << update.removals;
}

/*! What the product says of an update. */
inline Update of(const morvek::ZopChangeset &changes)
{
    Update update;
    for (auto it = changes.assignments.cbegin(); it != changes.assignments.cend(); ++it)
        update.values[it.key()] = it->isValid() ? QList<QByteArray> {it->bytes(), it->encoding()} : QList<QByteArray>();
    update.removals = changes.removals;
    return update;
}

/*! Walks over a payload. */
class Walk
{
public:
    explicit Walk(const QByteArray &payload)
        : m_bytes(payload)
    {
        const qint64 count = number();
        for (qint64 i = 0; m_sound && i < count; ++i)
            takeValue();
        while (m_sound && m_at < m_bytes.size())
            m_update.removals.insert(Fuzz::text(take(number())));
    }

    /*! Whether the payload is an update; otherwise update() is of no use. */
    bool isWhole() const { return m_sound; }
    const Update &update() const { return m_update; }

private:
    void takeValue()
    {
        const QString name = Fuzz::text(take(number()));
        QList<QByteArray> value;
        const qint64 size = number();
        if (size != 0xffffffff) {
            value.append(take(size));
            value.append(take(number()));
        }
        m_update.values[name] = value;
    }
    qint64 number()
    {
        const QByteArray bytes = take(4);
        qint64 value = 0;
        for (int i = bytes.size() - 1; i >= 0; --i)
            value = value * 256 + static_cast<unsigned char>(bytes.at(i));
        return value;
    }
    QByteArray take(qint64 size)
    {
        m_sound = m_sound && m_at + size <= m_bytes.size();
        const QByteArray taken = m_sound ? m_bytes.mid(int(m_at), int(size)) : QByteArray();
        m_at += taken.size();
        return taken;
    }

    QByteArray m_bytes;
    qint64 m_at = 0;
    bool m_sound = true;
    Update m_update;
};

} // namespace UpdateWalk

#endif
