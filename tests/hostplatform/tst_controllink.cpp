// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "controllink.h"
#include "zoppath.h"

#include <sys/socket.h>

using namespace morvek;

class ControlLinkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsNoMoreWhileItHasNotBeenHeard_data();
    void readsNoMoreWhileItHasNotBeenHeard();
};

void ControlLinkTest::readsNoMoreWhileItHasNotBeenHeard_data()
{
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("at once") << true;
    QTest::newRow("in turn") << false;
}

void ControlLinkTest::readsNoMoreWhileItHasNotBeenHeard()
{
    QFETCH(bool, atOnce);
    constexpr int Frames = 20000;
    constexpr int MostHeld = 64 * 1024 + 8; // what is read at once, and a frame that is not whole
    int sockets[2];
    QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets), 0);
    const FileDescriptor sender(sockets[0]);
    ControlLink link(FileDescriptor(sockets[1]), ZopPath(), nullptr);
    if (atOnce)
        link.hearAtOnce();
    int heard = 0;
    connect(&link, &ControlLink::received, this, [&heard] { ++heard; });
    const QByteArray updates = QByteArray("\0\0\0\4\0\0\0\0", 8).repeated(Frames); // each without an attribute
    QCOMPARE(send(sender.get(), updates.constData(), size_t(updates.size()), MSG_DONTWAIT), ssize_t(updates.size()));
    qint64 mostHeld = 0;
    for (int turn = 0; turn < Frames && heard < Frames; ++turn) {
        QCoreApplication::processEvents();
        mostHeld = qMax(mostHeld, link.held());
    }
    QCOMPARE(heard, Frames);
    QVERIFY2(mostHeld > 0 && mostHeld <= MostHeld, qPrintable(QString::number(mostHeld)));
}

CONTRACT_TEST_MAIN(ControlLinkTest)

#include "tst_controllink.moc"
