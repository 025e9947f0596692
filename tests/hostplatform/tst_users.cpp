// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "otheruser.h"
#include "zopcontrolcommand.h"
#include "zoppath.h"

#include <QtCore/QTemporaryDir>

#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace morvek;

namespace {

QByteArray nameOf(const QString &path)
{
    return QFile::encodeName(fileOf(path));
}

sockaddr_un addressOf(const QByteArray &file)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::copy_n(file.begin(), std::min(size_t(file.size()), sizeof(address.sun_path) - 1), address.sun_path);
    return address;
}

/*! A socket that is connected to \a file, or a negative number. */
int connectTo(const QByteArray &file)
{
    const sockaddr_un address = addressOf(file);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool done = connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    return done ? socket : -1;
}

/*! Lets another root be the present one, in a folder where everybody may write, as in that for temporary files. */
class PublicPlace
{
public:
    PublicPlace()
        : m_usual(qgetenv("ZOP_ROOT"))
    {
        chmod(file("").constData(), 01777);
        qputenv("ZOP_ROOT", file("root"));
    }
    ~PublicPlace() { qputenv("ZOP_ROOT", m_usual); }

    QByteArray file(const char *name) const { return QFile::encodeName(m_folder.filePath(QLatin1String(name))); }

private:
    Q_DISABLE_COPY(PublicPlace)
    QTemporaryDir m_folder;
    QByteArray m_usual;
};

/*! Makes what is private and yet in everybody's reach, as by a mistake of its owner. */
void openUp(const QByteArray &file)
{
    const QByteArray root = qgetenv("ZOP_ROOT");
    for (QByteArray path = file; path.size() >= root.size(); path.truncate(path.lastIndexOf('/')))
        chmod(path.constData(), 0777);
}

void closeAgain(const QByteArray &file)
{
    const QByteArray root = qgetenv("ZOP_ROOT");
    for (QByteArray path = file.left(file.lastIndexOf('/')); path.size() >= root.size();
         path.truncate(path.lastIndexOf('/')))
        chmod(path.constData(), 0700);
}

} // namespace

/*! What another user can do to an application, and what not. */
class UserTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void theRootIsOutOfReach();
    void theLibraryRefusesAForeignRoot();
    void aPlantedRootIsRefused_data();
    void aPlantedRootIsRefused();
    void aRootThatIsPlantedMeanwhileIsRefused_data();
    void aRootThatIsPlantedMeanwhileIsRefused();
    void aRootThatCouldBeExchangedIsRefused_data();
    void aRootThatCouldBeExchangedIsRefused();
    void aFolderWhereAGroupMayWriteIsRefused_data();
    void aFolderWhereAGroupMayWriteIsRefused();
    void aLinkOfTheUsersOwnIsFollowed();
    void aForeignClientIsNotHeard();
    void aForeignDaemonIsNotAsked();
};

void UserTest::initTestCase()
{
    if (geteuid() != 0) // the QSKIP macro is not pedantic enough for Clang
        return QTest::qSkip("needs the right to be another user", __FILE__, __LINE__);
    const PublicPlace place;
    OtherUser other([&place] { return access(place.file("").constData(), W_OK | X_OK); });
    if (other.result() != 0)
        QTest::qSkip("another user cannot reach the folder for temporary files", __FILE__, __LINE__);
}

void UserTest::theRootIsOutOfReach()
{
    const PublicPlace place; // so that it is the root itself that is closed
    QVERIFY(publish(testPath("state"), QStringLiteral("a=1")));
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
    const QByteArray root = place.file("root");
    const QByteArray state = nameOf(testPath("state"));
    const QByteArray folder = nameOf(testFolder());
    const QByteArray control = nameOf(testPath("control"));
    const QStringList before = allFiles();

    OtherUser other([&] {
        const int watcher = inotify_init1(IN_CLOEXEC);
        struct stat status;
        const std::vector<std::function<bool()>> attempts = {
            [&] { return opendir(root.constData()) != nullptr; },
            [&] { return opendir(folder.constData()) != nullptr; },
            [&] { return stat(state.constData(), &status) == 0; },
            [&] { return open(state.constData(), O_RDONLY) != -1; },
            [&] { return open(state.constData(), O_WRONLY) != -1; },
            [&] { return connectTo(control) != -1; },
            [&] { return inotify_add_watch(watcher, root.constData(), IN_ALL_EVENTS) != -1; },
            [&] { return inotify_add_watch(watcher, state.constData(), IN_ALL_EVENTS) != -1; },
            [&] { return open((root + "/planted").constData(), O_WRONLY | O_CREAT, 0600) != -1; },
            [&] { return mkdir((root + "/planted").constData(), 0700) == 0; },
            [&] { return symlink("/etc/passwd", (root + "/planted").constData()) == 0; },
            [&] { return symlink("/etc/passwd", (folder + "planted").constData()) == 0; },
            [&] { return link(state.constData(), (folder + "planted").constData()) == 0; },
            [&] { return rename(state.constData(), (folder + "planted").constData()) == 0; },
            [&] { return unlink(state.constData()) == 0; },
            [&] { return chmod(root.constData(), 0777) == 0; },
        };
        int done = 0;
        for (const auto &attempt : attempts) {
            errno = 0;
            if (attempt() || (errno != EACCES && errno != EPERM))
                ++done;
        }
        return watcher == -1 ? 125 : done;
    });
    QCOMPARE(other.result(), 0);
    QCOMPARE(allFiles(), before);
}

void UserTest::theLibraryRefusesAForeignRoot()
{
    const PublicPlace place;
    QVERIFY(publish(testPath("state"), QStringLiteral("a=1")));
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY(daemon.isValid());
    OtherUser other([] {
        const QString reason = QStringLiteral("belongs to another user");
        int done = 0;
        for (const char *name : {"state", "control", "absent"}) {
            for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
                for (const bool flag : {false, true}) {
                    ZopObject object(testPath(name), mode, flag);
                    done += object.isValid() || !object.errorString().contains(reason) || set(object, "a=2");
                }
            }
            QString error;
            done += ZopObject::create(testPath(name), ZopChangeset(), &error) || !error.contains(reason);
            done += ZopObject::remove(testPath(name), &error) || !error.contains(reason);
        }
        const ZopDirWatcher watcher(testFolder());
        done += watcher.isValid() || !watcher.errorString().contains(reason);
        return done;
    });
    QCOMPARE(other.result(), 0);
}

void UserTest::aPlantedRootIsRefused_data()
{
    QTest::addColumn<QString>("planted");
    for (const char *planted : {"folder", "open folder", "file", "link to a private folder", "link to nothing"})
        QTest::newRow(planted) << QString::fromLatin1(planted);
}

/*! Puts what \a planted says into the place of the root, and makes a private folder that it may lead to. */
static bool plantRoot(const PublicPlace &place, const QString &planted)
{
    const QByteArray root = place.file("root");
    const QByteArray victim = place.file("private");
    if (mkdir(victim.constData(), 0700) != 0)
        return false;
    OtherUser other([&] {
        bool done = false;
        umask(0);
        if (planted == QLatin1String("file"))
            done = open(root.constData(), O_WRONLY | O_CREAT, 0600) != -1;
        else if (planted.startsWith(QLatin1String("link")))
            done = symlink(planted.endsWith(QLatin1String("nothing")) ? "absent" : victim.constData(), root.constData())
                == 0;
        else
            done = mkdir(root.constData(), planted.startsWith(QLatin1String("open")) ? 0777 : 0700) == 0;
        return done ? 0 : 1;
    });
    return other.result() == 0;
}

void UserTest::aPlantedRootIsRefused()
{
    QFETCH(QString, planted);
    const PublicPlace place;
    QVERIFY(plantRoot(place, planted));
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
        for (const bool flag : {false, true}) {
            const ZopObject object(testPath("object"), mode, flag);
            QVERIFY(!object.isValid());
            QVERIFY2(object.errorString().contains(QFile::decodeName(place.file("root"))),
                     qPrintable(object.errorString()));
        }
    }
    QString error;
    QVERIFY(!ZopObject::create(testPath("object"), ZopChangeset(), &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!ZopDirWatcher(testFolder()).isValid());
    for (const char *folder : {"root", "private"}) {
        QCOMPARE(QDir(QFile::decodeName(place.file(folder))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());
    }
    QVERIFY(!QFile::exists(QFile::decodeName(place.file("absent"))));
}

void UserTest::aRootThatIsPlantedMeanwhileIsRefused_data()
{
    QTest::addColumn<QString>("planted");
    for (const char *planted : {"folder", "open folder", "file", "link to a private folder", "link to nothing"})
        QTest::newRow(planted) << QString::fromLatin1(planted);
}

void UserTest::aRootThatIsPlantedMeanwhileIsRefused()
{
    QFETCH(QString, planted);
    const PublicPlace place;
    const ZopPath path = ZopPath::object(QStringLiteral("/zop/object"));
    QVERIFY2(path.isValid(), qPrintable(path.error())); // there is no root yet
    QVERIFY(plantRoot(place, planted));
    QString error;
    QVERIFY(!path.makeFolder(&error));
    QVERIFY2(error.contains(QFile::decodeName(place.file("root"))), qPrintable(error));
    QCOMPARE(QDir(QFile::decodeName(place.file("private"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());
}

void UserTest::aRootThatCouldBeExchangedIsRefused_data()
{
    QTest::addColumn<QString>("root");
    QTest::newRow("below another user's folder") << "folder/root";
    QTest::newRow("below another user's folder, still to be made") << "folder/absent";
    QTest::newRow("below another user's link") << "link/root";
    QTest::newRow("below another user's link, still to be made") << "link/absent";
    QTest::newRow("below an own link to another user's folder") << "own/root";
    QTest::newRow("below a folder where everybody may rename") << "open/root";
    QTest::newRow("another user's link, as the folder itself") << "link/root/.";
    QTest::newRow("another user's link, and back") << "link/../private/root";
}

void UserTest::aRootThatCouldBeExchangedIsRefused()
{
    QFETCH(QString, root);
    const PublicPlace place;
    OtherUser other([&place] {
        umask(0);
        const bool made = mkdir(place.file("folder").constData(), 0777) == 0;
        return made && symlink("private", place.file("link").constData()) == 0 ? 0 : 1;
    });
    QCOMPARE(other.result(), 0);
    for (const char *name : {"private", "open", "folder/root", "private/root", "open/root"})
        QCOMPARE(mkdir(place.file(name).constData(), 0700), 0);
    QCOMPARE(chmod(place.file("open").constData(), 0777), 0);
    QCOMPARE(symlink("folder", place.file("own").constData()), 0);
    qputenv("ZOP_ROOT", place.file(qPrintable(root)));
    QString error;
    QVERIFY(!ZopObject::create(testPath("object"), ZopChangeset(), &error));
    QVERIFY2(error.contains(root), qPrintable(error));
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY(!daemon.isValid());
    QVERIFY(!ZopDirWatcher(testFolder()).isValid());
    for (const char *folder : {"folder", "private", "open", "private/root"}) {
        const QStringList there =
            QDir(QFile::decodeName(place.file(folder))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        QCOMPARE(there, folder == QByteArray("private/root") ? QStringList() : QStringList(QStringLiteral("root")));
    }
}

void UserTest::aFolderWhereAGroupMayWriteIsRefused_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("group");
    QTest::addColumn<QByteArray>("list"); // an access list as the system keeps it
    QTest::addColumn<QString>("reason");
    QTest::newRow("another's group")
        << 0770 << int(OtherUser::Id) << QByteArray()
        << "where the group \"nogroup\" may write, which is not the primary one of \"root\"";
    QTest::newRow("a group that nobody knows")
        << 0720 << 47114711 << QByteArray()
        << "where the group 47114711 may write, which cannot be looked up: there is no such group";
    QTest::newRow("another's group, which may read") << 0750 << int(OtherUser::Id) << QByteArray() << "";
    QTest::newRow("another's group, where names are their owners'")
        << 01770 << int(OtherUser::Id) << QByteArray() << "";
    QTest::newRow("the user's own group") << 0770 << 0 << QByteArray() << "";
    // Everything for the owner and for the user 65534, nothing for the group and others.
    const QByteArray entries("\2\0\0\0"
                             "\1\0\7\0\xff\xff\xff\xff"
                             "\2\0\7\0\xfe\xff\0\0"
                             "\4\0\0\0\xff\xff\xff\xff"
                             "\x10\0\7\0\xff\xff\xff\xff"
                             "\x20\0\0\0\xff\xff\xff\xff",
                             44);
    QTest::newRow("another on an access list") << 0700 << 0 << entries << "whose access list may let others write";
}

void UserTest::aFolderWhereAGroupMayWriteIsRefused()
{
    QFETCH(int, mode);
    QFETCH(int, group);
    QFETCH(QByteArray, list);
    QFETCH(QString, reason);
    const PublicPlace place;
    const QByteArray folder = place.file("folder");
    QCOMPARE(mkdir(folder.constData(), 0700), 0);
    QCOMPARE(mkdir(place.file("folder/between").constData(), 0700), 0);
    QCOMPARE(chown(folder.constData(), 0, gid_t(group)), 0);
    QCOMPARE(chmod(folder.constData(), mode_t(mode)), 0);
    if (!list.isEmpty()
        && setxattr(folder.constData(), "system.posix_acl_access", list.constData(), size_t(list.size()), 0) != 0)
        return QTest::qSkip("the folder for temporary files has no access lists", __FILE__, __LINE__);
    for (const char *root : {"folder/root", "folder/between/root"}) {
        qputenv("ZOP_ROOT", place.file(root));
        QString error;
        QCOMPARE(ZopObject::create(testPath("object"), ZopChangeset(), &error), reason.isEmpty());
        const QString refusal = QStringLiteral("the root \"%1\" could be exchanged by another user at \"%2\", %3")
                                    .arg(QFile::decodeName(place.file(root)), QFile::decodeName(folder), reason);
        QCOMPARE(error, reason.isEmpty() ? QString() : refusal);
        QCOMPARE(QFile::exists(QFile::decodeName(place.file(root))), reason.isEmpty());
    }
}

void UserTest::aLinkOfTheUsersOwnIsFollowed()
{
    const PublicPlace place;
    const auto publishBelowLink = [&place] {
        const bool made = mkdir(place.file("private").constData(), 0700) == 0
            && symlink("private", place.file("root").constData()) == 0
            && publish(testPath("object"), QStringLiteral("a=1"));
        return made && QFile::exists(QFile::decodeName(place.file("private/zop"))) ? 0 : 1;
    };
    // Of an ordinary user, too; and of root, who is trusted by all, for another user's folder, which is not.
    OtherUser other(publishBelowLink);
    QCOMPARE(other.result(), 0);
    QCOMPARE(unlink(place.file("root").constData()), 0);
    QCOMPARE(symlink("private", place.file("root").constData()), 0);
    OtherUser again([] { return publish(testPath("more"), QString()) ? 0 : 1; });
    QCOMPARE(again.result(), 0);
    QVERIFY(!publish(testPath("most"), QString()));
}

void UserTest::aForeignClientIsNotHeard()
{
    const PublicPlace place;
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    const Events requests(&daemon);
    const QByteArray file = nameOf(testPath("control"));
    openUp(file);
    // An update of no attributes, which a client of the user's own would be heard with.
    const QByteArray request("\0\0\0\x04\0\0\0\0", 8);
    OtherUser other([&] {
        const int socket = connectTo(file);
        if (socket == -1)
            return 1;
        char byte = 0;
        send(socket, request.constData(), size_t(request.size()), MSG_NOSIGNAL);
        return recv(socket, &byte, 1, 0) == 0 || errno == ECONNRESET ? 0 : 2;
    });
    QCOMPARE(other.result(), 0);
    QCOMPARE(requests.updates(), QStringList());
    const int own = connectTo(file);
    QVERIFY(own != -1);
    QCOMPARE(write(own, request.constData(), size_t(request.size())), ssize_t(request.size()));
    QVERIFY(requests.wait(QLatin1String("{peer=1}")));
    closeAgain(file);
    close(own);
}

void UserTest::aForeignDaemonIsNotAsked()
{
    const PublicPlace place;
    QVERIFY(publish(testPath("beside"), QString()));
    const QByteArray file = nameOf(testPath("control"));
    openUp(file);
    OtherUser other([&file] {
        const sockaddr_un address = addressOf(file);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        umask(0);
        if (bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 || listen(socket, 5) != 0)
            return 1;
        for (;;)
            pause();
    });
    QVERIFY(waitUntil([&file] {
        const int socket = connectTo(file);
        close(socket);
        return socket != -1;
    }));
    closeAgain(file);
    ZopDirWatcher watcher(testFolder());
    const Events names(&watcher);
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite}) {
        ZopObject client(testPath("control"), mode, false);
        QVERIFY(!client.isValid());
        QCOMPARE(client.errorString(), QStringLiteral("another user serves it"));
        QVERIFY(!set(client, QStringLiteral("msg=x id=1")));
        ZopControlCommand command(&client);
        QSignalSpy finished(&command, &ZopControlCommand::finished);
        command.start();
        QVERIFY(finished.wait());
        QCOMPARE(command.errorCode(), -1);
    }
    QVERIFY(names.wait(QStringLiteral("+beside")));
    QCOMPARE(names.lines, QStringList(QStringLiteral("+beside")));
    // Its place can be taken by the user's own.
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
}

CONTRACT_TEST_MAIN(UserTest)

#include "tst_users.moc"
