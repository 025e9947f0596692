// SPDX-License-Identifier: Apache-2.0
// Bytes on a control connection, in arbitrary pieces: the first byte says how many lengths of pieces follow. The frames
// up to the first malformed one are received, whatever the pieces, and never too many at once; a malformed one ends the
// connection. An own walk over the bytes says what a frame is, and what it says.
#include "controllink.h"

#include "logcapture.h"
#include "updatewalk.h"
#include "zoppath.h"
#include "zopwire.h"

#include <QtCore/QCoreApplication>

#include <sys/socket.h>

using namespace morvek;

namespace {

// Two turns of a connection, as what is posted may be handled before and behind the notifiers.
constexpr int MostInTurns = 64;

struct Stream
{
    explicit Stream(const QByteArray &bytes)
    {
        const auto byte = [&bytes](int at) { return qint64(static_cast<unsigned char>(bytes.at(at))); };
        qint64 at = 0;
        while (!malformed && at + 4 <= bytes.size()) {
            const int from = int(at);
            const qint64 length = byte(from) << 24 | byte(from + 1) << 16 | byte(from + 2) << 8 | byte(from + 3);
            malformed = length > LargestUpdate;
            if (malformed || at + 4 + length > bytes.size())
                return;
            const UpdateWalk::Walk walk(bytes.mid(from + 4, int(length)));
            malformed = !walk.isWhole();
            if (!malformed)
                frames.append(walk.update());
            at += 4 + length;
        }
    }

    QList<UpdateWalk::Update> frames;
    bool malformed = false;
};

class Receiver
{
public:
    explicit Receiver(int socket)
        : m_link(FileDescriptor(socket), ZopPath(), nullptr)
    {
        QObject::connect(&m_link, &ControlLink::received, &m_link,
                         [this](const ZopChangeset &changes) { m_frames.append(UpdateWalk::of(changes)); });
        QObject::connect(&m_link, &ControlLink::closed, &m_link, [this] { m_closed = true; });
    }

    /*! Lets it read some, but not so much that others would have to wait. */
    void takeTurn()
    {
        const int before = m_frames.size();
        QCoreApplication::processEvents();
        Fuzz::expect(m_frames.size() - before <= MostInTurns, "others have their turns, too");
    }

    void expectAll(const Stream &expected)
    {
        const int turns = 4 + 3 * (expected.frames.size() + 1);
        for (int i = 0; i < turns; ++i)
            takeTurn();
        Fuzz::expectEqual(m_frames.size(), expected.frames.size(), "how many frames");
        Fuzz::expectEqual(m_frames, expected.frames, "the frames");
        Fuzz::expectEqual(m_closed, expected.malformed, "whether the connection is ended");
    }

private:
    ControlLink m_link;
    QList<UpdateWalk::Update> m_frames;
    bool m_closed = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::Bytes input(data, size);
    QList<int> pieces;
    for (int count = input.number() % 8; count > 0; --count)
        pieces.append(input.number());
    const QByteArray bytes = input.rest();

    int sockets[2];
    Fuzz::expect(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets) == 0, "there are sockets");
    LogCapture log(3);
    const FileDescriptor sender(sockets[0]);
    Receiver receiver(sockets[1]);
    int sent = 0;
    pieces.append(bytes.size());
    for (const int piece : qAsConst(pieces)) {
        const int length = qMin(piece, bytes.size() - sent);
        // What is sent behind a malformed frame meets nobody.
        if (length > 0 && send(sender.get(), bytes.constData() + sent, size_t(length), MSG_NOSIGNAL) != length)
            break;
        sent += length;
        receiver.takeTurn();
    }
    const Stream expected(bytes);
    receiver.expectAll(expected);
    Fuzz::expectEqual(log.take().size(), expected.malformed ? 1 : 0, "how many lines are logged");
    return 0;
}
