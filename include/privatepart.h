// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PRIVATEPART_H
#define MORVEK_PRIVATEPART_H

#include <memory>

namespace morvek {

/*!
 * The private part of a public value, which the value owns alone: a copy of it is deep.
 *
 * A move takes the part away and allocates none in its place. What was moved from reads as a new value, and gets a part
 * of its own again when it is written to.
 */
template<typename Private>
class PrivatePart
{
public:
    PrivatePart()
        : m_part(new Private)
    {
    }
    PrivatePart(const PrivatePart &other)
        : m_part(new Private(*other.operator->()))
    {
    }
    PrivatePart(PrivatePart &&other) noexcept = default;
    ~PrivatePart() = default;
    PrivatePart &operator=(const PrivatePart &other)
    {
        *operator->() = *other.operator->();
        return *this;
    }
    PrivatePart &operator=(PrivatePart &&other) noexcept = default;

    void swap(PrivatePart &other) noexcept { m_part.swap(other.m_part); }

    const Private *operator->() const
    {
        static const Private New;
        return m_part ? m_part.get() : &New;
    }
    Private *operator->()
    {
        if (!m_part)
            m_part.reset(new Private);
        return m_part.get();
    }

private:
    std::unique_ptr<Private> m_part;
};

} // namespace morvek

#endif
