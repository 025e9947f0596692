// SPDX-License-Identifier: Apache-2.0
#ifndef MEMORYSEARCH_H
#define MEMORYSEARCH_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

/*!
 * Looks for a text in all of this process's memory that can be written, also where it has been freed, but not on the
 * stack: there the loader leaves what registers happen to hold. Nothing here holds the text itself: each of its
 * characters is masked.
 */
class MemorySearch
{
public:
    /*! For the text of \a masked, each character of which is one more than the text's: at least twenty. */
    explicit MemorySearch(const char *masked)
        : m_text(masked),
          m_tail(m_text.right(12)) // the allocator writes over the beginning of what is freed
    {
    }

    /*! The text, with memory of its own. */
    QString text(const char *before = "") const
    {
        QString text;
        text.reserve(m_text.size() + int(std::strlen(before)));
        text += QLatin1String(before);
        for (const char masked : m_text)
            text += QLatin1Char(char(masked - 1));
        return text;
    }

    /*!
     * How often it is in memory in the form of a QString, and in UTF-8; -1 when that cannot be told. Allocates nothing
     * meanwhile, as that would overwrite what was freed.
     */
    int count() const
    {
        static char maps[1 << 20];
        if (!readMaps(maps, sizeof maps))
            return -1;
        int found = 0;
        const char *lineEnd = nullptr;
        for (const char *line = maps; *line != 0; line = lineEnd + 1) {
            lineEnd = std::strchr(line, '\n');
            char *next = nullptr;
            const quintptr begin = std::strtoul(line, &next, 16);
            const quintptr end = std::strtoul(next + 1, &next, 16);
            const char *stack = std::strstr(line, "[stack]");
            const bool isStack = stack && stack < lineEnd;
            // Larger ones are a sanitizer's own books.
            if (std::strncmp(next, " rw", 3) == 0 && !isStack && end - begin <= 1 << 28)
                found += countIn(reinterpret_cast<const char *>(begin), reinterpret_cast<const char *>(end));
        }
        return found;
    }

private:
    static bool readMaps(char *maps, size_t most)
    {
        const int file = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
        size_t size = 0;
        ssize_t count = 0;
        while (size + 1 < most && (count = ::read(file, maps + size, most - 1 - size)) > 0)
            size += size_t(count);
        maps[size] = 0;
        ::close(file);
        return count == 0 && size > 0;
    }

    // Sanitizers would have none of it read.

    __attribute__((no_sanitize("address", "thread"))) int countIn(const char *bytes, const char *end) const
    {
        const char first = char(m_tail[0] - 1);
        int found = 0;
        for (; bytes != end; ++bytes) {
            if (*bytes == first)
                found += int(matches(bytes, end, 1)) + int(matches(bytes, end, 2));
        }
        return found;
    }

    __attribute__((no_sanitize("address", "thread"))) bool matches(const char *bytes, const char *end, int step) const
    {
        if (end - bytes < m_tail.size() * step)
            return false;
        for (int i = 0; i < m_tail.size(); ++i) {
            if (bytes[i * step] != char(m_tail[i] - 1) || (step == 2 && bytes[i * step + 1] != 0))
                return false;
        }
        return true;
    }

    const QByteArray m_text;
    const QByteArray m_tail;
};

#endif
