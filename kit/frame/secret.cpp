// SPDX-License-Identifier: Apache-2.0
#include "secret_p.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace morvek {

namespace {

// An ordinary fill of memory that nobody reads any more is taken out by compilers.
void wipeCharacters(QChar *characters, int size)
{
    explicit_bzero(characters, size_t(size) * sizeof(QChar));
}

} // namespace

Secret::Secret(const QString &text)
    : Secret(text.constData(), text.size())
{
}

Secret::Secret(const QChar *characters, int size)
    : m_characters(std::make_unique<QChar[]>(size_t(size))),
      m_size(size)
{
    std::copy_n(characters, size, m_characters.get());
}

Secret::Secret(Secret &&other) noexcept
    : m_characters(std::move(other.m_characters)),
      m_size(std::exchange(other.m_size, 0))
{
}

Secret &Secret::operator=(Secret &&other) noexcept
{
    Secret taken(std::move(other));
    clear();
    m_characters = std::move(taken.m_characters);
    m_size = std::exchange(taken.m_size, 0);
    return *this;
}

Secret::~Secret()
{
    clear();
}

Secret Secret::copy() const
{
    return {m_characters.get(), m_size};
}

bool Secret::operator==(const Secret &other) const
{
    return std::equal(m_characters.get(), m_characters.get() + m_size, other.m_characters.get(),
                      other.m_characters.get() + other.m_size);
}

void Secret::clear()
{
    if (m_characters)
        wipeCharacters(m_characters.get(), m_size);
    m_characters.reset();
    m_size = 0;
}

QString Secret::text() const
{
    return QString(m_characters.get(), m_size);
}

void Secret::wipe(QString *text)
{
    // A text without a capacity is empty, or its memory was never its own. Otherwise data() copies nothing here.
    if (text->isDetached() && text->capacity() > 0)
        wipeCharacters(text->data(), text->capacity());
    *text = QString();
}

} // namespace morvek
