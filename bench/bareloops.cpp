// SPDX-License-Identifier: Apache-2.0
#include "bareloops.h"

#include "rounds.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QSocketNotifier>

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void must(bool done)
{
    if (!done)
        qFatal("a system call failed");
}

[[noreturn]] void receiveBareWakeUps(const QString &folder, Rounds *rounds)
{
    const int events = inotify_init1(0);
    must(inotify_add_watch(events, qPrintable(folder), IN_MODIFY) != -1);
    rounds->setReady();
    std::array<char, 4096> buffer;
    do {
        must(read(events, buffer.data(), buffer.size()) > 0);
    } while (rounds->arrived());
    _exit(0);
}

/*! Reads what comes behind the first record of a journal, and of each one that takes its place. */
class JournalTail
{
public:
    explicit JournalTail(const QString &path)
        : m_path(path.toLocal8Bit())
    {
        open();
    }
    ~JournalTail() { close(m_file); }

    bool readOn()
    {
        if (readPresent())
            return true;
        struct stat now = {};
        struct stat held = {};
        must(stat(m_path.constData(), &now) == 0 && fstat(m_file, &held) == 0);
        if (now.st_ino == held.st_ino)
            return false;
        close(m_file);
        open();
        return readPresent();
    }

private:
    Q_DISABLE_COPY(JournalTail)

    void open()
    {
        constexpr off_t StateEndAt = 32; // in the header
        m_file = ::open(m_path.constData(), O_RDONLY);
        must(pread(m_file, &m_offset, sizeof(m_offset), StateEndAt) == sizeof(m_offset));
    }

    bool readPresent()
    {
        const ssize_t size = pread(m_file, m_buffer.data(), m_buffer.size(), m_offset);
        m_offset += std::max<ssize_t>(size, 0);
        return size > 0;
    }

    QByteArray m_path;
    int m_file = -1;
    qint64 m_offset = 0;
    std::array<char, 4096> m_buffer;
};

} // namespace

int runBareWakeUp(const QString &folder, int receivers, Rounds *rounds)
{
    const int file = open(qPrintable(folder + QStringLiteral("/bell")), O_WRONLY | O_CREAT | O_APPEND, 0600);
    must(file != -1);
    for (int i = 0; i < receivers; ++i) {
        if (fork() == 0)
            receiveBareWakeUps(folder, rounds);
    }
    rounds->awaitReady();
    while (rounds->next()) {
        must(write(file, "x", 1) == 1);
        rounds->awaitArrival();
    }
    while (wait(nullptr) > 0) { }
    return 0;
}

int runBareSocket(Rounds *rounds)
{
    std::array<int, 2> ends;
    must(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
    std::array<char, 128> message = {};
    const pid_t daemon = fork();
    if (daemon == 0) {
        close(ends[0]);
        while (read(ends[1], message.data(), message.size()) > 0)
            must(write(ends[1], message.data(), message.size()) > 0);
        _exit(0);
    }
    close(ends[1]);
    while (rounds->next()) {
        must(write(ends[0], message.data(), message.size()) > 0);
        must(read(ends[0], message.data(), message.size()) > 0);
        rounds->arrived();
        rounds->awaitArrival();
    }
    close(ends[0]);
    waitpid(daemon, nullptr, 0);
    return 0;
}

int runJournalLoop(Rounds *rounds)
{
    const QString folder =
        QFile::decodeName(qgetenv("ZOP_ROOT")) + QStringLiteral("/zop/services/networking/all/interfaces");
    JournalTail tail(folder + QStringLiteral("/if0000"));
    const int events = inotify_init1(IN_NONBLOCK);
    must(inotify_add_watch(events, qPrintable(folder), IN_MODIFY | IN_MOVED_TO) != -1);
    QSocketNotifier notifier(events, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
        std::array<char, 4096> buffer;
        must(read(events, buffer.data(), buffer.size()) > 0);
        if (tail.readOn() && !rounds->arrived())
            QCoreApplication::quit();
    });
    rounds->setReady();
    return QCoreApplication::exec();
}
