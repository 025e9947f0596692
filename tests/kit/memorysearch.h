// SPDX-License-Identifier: Apache-2.0
#ifndef MEMORYSEARCH_H
#define MEMORYSEARCH_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

/*!
 * Looks for a text in all of this process's memory that can be written, also where it has been freed. Nothing here
 * holds the text itself: each of its characters is masked.
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
        void *own = mmap(nullptr, Maps + Chunk, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
        if (own == MAP_FAILED || memory == -1)
            return -1;
        char *maps = static_cast<char *>(own);
        const Range mine {quintptr(own), quintptr(own) + Maps + Chunk};
        int found = readMaps(maps) ? 0 : -1;
        for (const char *line = maps; found != -1 && *line != 0; line = std::strchr(line, '\n') + 1) {
            char *next = nullptr;
            const quintptr begin = std::strtoul(line, &next, 16);
            const quintptr end = std::strtoul(next + 1, &next, 16);
            // Larger ones are a sanitizer's own books.
            if (std::strncmp(next, " rw", 3) != 0 || end - begin > Largest)
                continue;
            // The kernel tells neighbours as one.
            found += countIn(memory, {begin, qBound(begin, mine.begin, end)}, maps + Maps);
            found += countIn(memory, {qBound(begin, mine.end, end), end}, maps + Maps);
        }
        ::close(memory);
        munmap(own, Maps + Chunk);
        return found;
    }

private:
    static constexpr size_t Maps = 1 << 20;
    static constexpr size_t Chunk = 1 << 20;
    static constexpr quintptr Largest = 1 << 28;

    struct Range
    {
        quintptr begin;
        quintptr end;
    };

    static bool readMaps(char *maps)
    {
        const int file = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
        size_t size = 0;
        ssize_t count = 0;
        while (size + 1 < Maps && (count = ::read(file, maps + size, Maps - 1 - size)) > 0)
            size += size_t(count);
        ::close(file);
        return count == 0 && size > 0;
    }

    int countIn(int memory, Range range, char *chunk) const
    {
        const size_t overlap = size_t(m_tail.size()) * 2 - 1;
        int found = 0;
        for (quintptr at = range.begin; at < range.end; at += Chunk - overlap) {
            const ssize_t size = ::pread64(memory, chunk, size_t(qMin<quintptr>(Chunk, range.end - at)), off64_t(at));
            const bool last = at + Chunk >= range.end;
            if (size > 0)
                found += countIn(chunk, size, last ? size : size - ssize_t(overlap));
            if (last)
                break;
        }
        return found;
    }

    /*! Those that begin before \a end, in what holds \a size bytes. */
    int countIn(const char *bytes, ssize_t size, ssize_t end) const
    {
        const char first = char(m_tail[0] - 1);
        int found = 0;
        for (ssize_t i = 0; i < end; ++i) {
            if (bytes[i] == first)
                found += int(matches(bytes + i, size - i, 1)) + int(matches(bytes + i, size - i, 2));
        }
        return found;
    }

    bool matches(const char *bytes, ssize_t size, int step) const
    {
        if (size < m_tail.size() * step)
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
