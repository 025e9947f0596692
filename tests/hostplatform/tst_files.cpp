// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"

#include <QtCore/QScopeGuard>
#include <QtCore/QTemporaryDir>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace morvek;

namespace {

/*! Why nothing at all can be done on the present root; empty when something can. */
QString refusal()
{
    QString error;
    const QString path = QStringLiteral("/zop/object");
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
        const ZopObject object(path, mode, false);
        error = object.errorString();
        if (object.isValid() || error.isEmpty())
            return QString();
    }
    const ZopObject daemon(QStringLiteral("/zop/control"), ZopObject::Publish, true);
    const ZopDirWatcher watcher(QStringLiteral("/zop"));
    const bool allowed = daemon.isValid() || watcher.isValid() || watcher.errorString().isEmpty()
        || ZopObject::create(path, ZopChangeset()) || ZopObject::remove(path);
    return allowed ? QString() : error;
}

} // namespace

class FileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRootIsInTheRuntimeDirectory();
    void withoutAnyRoot();
    void onlyTheUserMayEnter_data();
    void onlyTheUserMayEnter();
    void aRootThatOthersMayEnterIsRefused_data();
    void aRootThatOthersMayEnterIsRefused();
    void aRootOfAnotherUserIsRefused();
    void aRootThatIsNoDirectoryIsRefused();
    void aMissingRootIsMade();
    void anObjectIsFollowedIntoAnotherRoot();
    void aLinkIsNotFollowed();
    void whatIsNoObjectIsRefused_data();
    void whatIsNoObjectIsRefused();
    void whatIsNoObjectIsNotAnnounced();
};

void FileTest::theRootIsInTheRuntimeDirectory()
{
    const QTemporaryDir runtime;
    const QByteArray usual = qgetenv("XDG_RUNTIME_DIR");
    const AnotherRoot none {QString()};
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    QString error;
    const bool done = ZopObject::create(QStringLiteral("/zop/object"), ZopChangeset(), &error);
    qputenv("XDG_RUNTIME_DIR", usual);
    QVERIFY2(done, qPrintable(error));
    QVERIFY(QFile::exists(runtime.filePath(QStringLiteral("morvek-zop/zop/object"))));
}

void FileTest::withoutAnyRoot()
{
    const QByteArray usual = qgetenv("XDG_RUNTIME_DIR");
    const AnotherRoot none {QString()};
    qunsetenv("XDG_RUNTIME_DIR");
    const QString reason = refusal();
    qputenv("XDG_RUNTIME_DIR", usual);
    QCOMPARE(reason, QStringLiteral("there is no root: neither ZOP_ROOT nor XDG_RUNTIME_DIR is set"));
}

void FileTest::onlyTheUserMayEnter_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("nothing masked") << 0;
    QTest::newRow("usual") << 022;
    QTest::newRow("everything masked") << 0777;
}

void FileTest::onlyTheUserMayEnter()
{
    QFETCH(int, mask);
    const QTemporaryDir above;
    const AnotherRoot root(above.path() + QStringLiteral("/root"));
    const mode_t usual = umask(mode_t(mask));
    const bool made = publish(testPath("object"), QStringLiteral("a=1"));
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    bool written = true;
    for (int n = 0; n < 20; ++n)
        written = set(writer, QStringLiteral("p=50000*p n=%1").arg(n)) && written;
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    umask(usual);

    QVERIFY(made && written);
    QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
    QCOMPARE(modeOf(QString()), 0700);
    QCOMPARE(modeOf(QStringLiteral("/zop")), 0700);
    QCOMPARE(modeOf(testFolder()), 0700);
    QCOMPARE(modeOf(testPath("control")), 0600);
    QCOMPARE(modeOf(testPath("object")), 0600);
    QVERIFY(QFile::exists(fileOf(testPath(".object.old")))); // the file has been replaced, and both are private
    for (const QString &file : allFiles()) {
        struct stat status;
        QCOMPARE(lstat(QFile::encodeName(file).constData(), &status), 0);
        QCOMPARE(int(status.st_mode & 0777), 0600);
    }
}

void FileTest::aRootThatOthersMayEnterIsRefused_data()
{
    QTest::addColumn<int>("mode");
    for (const int mode : {0755, 0750, 0710, 0701, 0702, 0777, 01777})
        QTest::addRow("%o", mode) << mode;
}

void FileTest::aRootThatOthersMayEnterIsRefused()
{
    QFETCH(int, mode);
    const QTemporaryDir open;
    QCOMPARE(chmod(QFile::encodeName(open.path()).constData(), mode_t(mode)), 0);
    const AnotherRoot root(open.path());
    QVERIFY2(refusal().contains(open.path()), qPrintable(refusal()));
    QCOMPARE(QDir(open.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());
    chmod(QFile::encodeName(open.path()).constData(), 0700);
    QCOMPARE(refusal(), QString());
}

void FileTest::aRootOfAnotherUserIsRefused()
{
    if (geteuid() != 0) // the QSKIP macro is not pedantic enough for Clang
        return QTest::qSkip("needs the right to give a directory away", __FILE__, __LINE__);
    const QTemporaryDir foreign;
    QCOMPARE(chown(QFile::encodeName(foreign.path()).constData(), 65534, 65534), 0);
    const AnotherRoot root(foreign.path());
    QVERIFY2(refusal().contains(foreign.path()), qPrintable(refusal()));
}

void FileTest::aRootThatIsNoDirectoryIsRefused()
{
    QVERIFY(plant(testPath("file"), "x"));
    for (const QString &name : {fileOf(testPath("file")), QStringLiteral("relative/root")}) {
        const AnotherRoot root(name);
        QVERIFY2(refusal().contains(name), qPrintable(refusal()));
    }
}

void FileTest::aMissingRootIsMade()
{
    const QTemporaryDir above;
    const AnotherRoot root(above.path() + QStringLiteral("/root///"));
    ZopDirWatcher watcher(testFolder());
    QVERIFY(watcher.isValid());
    const Events events(&watcher);
    const ZopObject missing(testPath("object"), ZopObject::Subscribe, false);
    QVERIFY(!missing.isValid());
    QVERIFY(!QFile::exists(above.path() + QStringLiteral("/root"))); // who only looks leaves no trace
    QVERIFY(publish(testPath("object"), QString()));
    QVERIFY(events.wait(QStringLiteral("+object")));
}

void FileTest::anObjectIsFollowedIntoAnotherRoot()
{
    const QTemporaryDir above;
    const AnotherRoot root(above.path() + QStringLiteral("/root"));
    QVERIFY(publish(testPath("object"), QStringLiteral("a=1")));
    QVERIFY(publish(testPath("only here"), QString()));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    ZopDirWatcher watcher(testFolder());
    watcher.setNameCacheEnabled(true);
    const Events ofObject(&object);
    const Events ofNames(&watcher);
    for (const char *away : {"/first", "/second"}) {
        QVERIFY(QDir().rename(above.path() + QStringLiteral("/root"), above.path() + QLatin1String(away)));
        QVERIFY(publish(testPath("object"), QStringLiteral("a=") + away));
        QVERIFY(ofObject.wait(QStringLiteral("{a=%1}").arg(QLatin1String(away))));
        QVERIFY(set(testPath("object"), QStringLiteral("b=") + away));
        QVERIFY(ofObject.wait(QStringLiteral("{b=%1}").arg(QLatin1String(away))));
        QVERIFY(ofNames.wait(QStringLiteral("-only here")));
    }
}

void FileTest::aLinkIsNotFollowed()
{
    QVERIFY(publish(testPath("elsewhere/target"), QStringLiteral("a=1")));
    const QByteArray before = content(testPath("elsewhere/target"));
    ZopDirWatcher watcher(testFolder());
    const Events events(&watcher);
    QVERIFY(QFile::link(fileOf(testPath("elsewhere/target")), fileOf(testPath("link"))));
    QVERIFY(QFile::link(fileOf(testPath("nowhere")), fileOf(testPath("dangling"))));
    for (const char *name : {"link", "dangling"}) {
        for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
            for (const bool flag : {false, true}) {
                ZopObject object(testPath(name), mode, flag);
                QVERIFY(!object.isValid());
                QVERIFY(!object.errorString().isEmpty());
                QVERIFY(!set(object, QStringLiteral("a=2")));
            }
        }
        QVERIFY(!publish(testPath(name), QString()));
    }
    QVERIFY(publish(testPath("end"), QString()));
    QVERIFY(events.wait(QStringLiteral("+end")));
    QCOMPARE(events.lines, QStringList({"+end"}));
    QCOMPARE(content(testPath("elsewhere/target")), before);
    QVERIFY(!QFile::exists(fileOf(testPath("nowhere"))));

    // Nor when it takes the place of an object that is open.
    QVERIFY(publish(testPath("object"), QStringLiteral("a=5")));
    ZopObject open(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(QFile::remove(fileOf(testPath("object"))));
    QVERIFY(QFile::link(fileOf(testPath("elsewhere/target")), fileOf(testPath("object"))));
    QVERIFY(!set(open, QStringLiteral("a=6")));
    QCOMPARE(content(testPath("elsewhere/target")), before);
}

void FileTest::whatIsNoObjectIsRefused_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : {"pipe", "directory", "stale socket"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void FileTest::whatIsNoObjectIsRefused()
{
    QFETCH(QString, kind);
    const QString path = testPath(kind == QLatin1String("pipe") ? "pipe" : "other") + kind.left(1);
    QVERIFY(publish(testPath("beside"), QString()));
    QVERIFY(ZopObject::remove(testPath("beside")));
    const QByteArray file = QFile::encodeName(fileOf(path));
    if (kind == QLatin1String("pipe")) {
        QCOMPARE(mkfifo(file.constData(), 0600), 0);
    } else if (kind == QLatin1String("directory")) {
        QCOMPARE(mkdir(file.constData(), 0700), 0);
    } else {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        QVERIFY(file.size() < int(sizeof(address.sun_path)));
        std::copy(file.begin(), file.end(), address.sun_path);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QCOMPARE(bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
        close(socket);
    }
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
        ZopObject object(path, mode, false);
        QVERIFY(!object.isValid());
        QVERIFY(!object.errorString().isEmpty());
    }
    QString error;
    QVERIFY(!ZopObject::create(path, ZopChangeset(), &error));
    QVERIFY(!error.isEmpty());
    const ZopObject daemon(path, ZopObject::Publish, true);
    QCOMPARE(daemon.isValid(), kind == QLatin1String("stale socket"));
}

void FileTest::whatIsNoObjectIsNotAnnounced()
{
    QVERIFY(publish(testPath("first"), QString()));
    ZopDirWatcher early(testFolder());
    early.setNameCacheEnabled(true);
    const Events ofEarly(&early);
    const QByteArray folder = QFile::encodeName(fileOf(testFolder()));
    QCOMPARE(mkfifo((folder + "pipe").constData(), 0600), 0);
    QCOMPARE(mkdir((folder + "directory").constData(), 0700), 0);
    QVERIFY(plant(testPath(".hidden"), "x"));
    for (const char *name : {"no\xff utf-8", "line\nbreak"}) {
        QFile odd(QFile::decodeName(folder) + QStringLiteral("plain"));
        QVERIFY(odd.open(QIODevice::WriteOnly));
        odd.close();
        QCOMPARE(::rename((folder + "plain").constData(), (folder + name).constData()), 0);
    }
    const auto tidy = qScopeGuard([&folder] { ::unlink((folder + "no\xff utf-8").constData()); });
    QVERIFY(publish(testPath("last"), QString()));
    QVERIFY(ofEarly.wait(QStringLiteral("+last")));
    ZopDirWatcher late(testFolder());
    const Events ofLate(&late);
    late.setNameCacheEnabled(true);
    QCOMPARE(ofLate.lines, QStringList({"+first", "+last"}));
    QVERIFY(!ofEarly.lines.contains(QStringLiteral("+pipe")));
    for (const QString &line : ofEarly.lines)
        QVERIFY2(line.endsWith(QLatin1String("last")) || line.endsWith(QLatin1String("plain")), qPrintable(line));
}

CONTRACT_TEST_MAIN(FileTest)

#include "tst_files.moc"
