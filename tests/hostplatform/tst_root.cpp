// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"

#include <QtCore/QTemporaryDir>
#include <QtCore/QThread>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

using namespace morvek;

namespace {

/*! What a fresh look at \a path finds of the attribute "a"; the reason when it cannot be opened. */
QString lookAt(const QString &path)
{
    ZopObject object(path, ZopObject::Subscribe, false);
    object.setAttributeCacheEnabled(true);
    return object.isValid() ? object.attribute(QStringLiteral("a")).toString() : object.errorString();
}

QString object()
{
    return QStringLiteral("/zop/object");
}

/*! Two roots, in each of which an object tells where it is; one more is in one of them only. */
class TwoRoots
{
public:
    TwoRoots()
    {
        for (const char *name : {"first", "second"}) {
            const AnotherRoot root(path(name));
            m_made = publish(object(), QStringLiteral("a=") + QLatin1String(name)) && m_made;
        }
        const AnotherRoot second(path("second"));
        m_made = publish(onlyInSecond(), QStringLiteral("a=second")) && m_made;
    }
    bool areMade() const { return m_made; }
    QString path(const char *name) const { return m_above.filePath(QLatin1String(name)); }
    static QString onlyInSecond() { return QStringLiteral("/zop/only"); }
    bool rename(const char *name, const char *other) const { return QDir().rename(path(name), path(other)); }
    /*! Lets the link of that name lead to one of the roots. */
    bool point(const char *link, const char *root) const
    {
        QFile::remove(path(link));
        return QFile::link(path(root), path(link));
    }
    bool setMode(const char *name, mode_t mode) const
    {
        return chmod(QFile::encodeName(path(name)).constData(), mode) == 0;
    }

private:
    Q_DISABLE_COPY(TwoRoots)
    QTemporaryDir m_above;
    bool m_made = true;
};

/*! How many descriptors of this process lead to \a folder. */
int descriptorsOf(const QString &folder)
{
    int count = 0;
    const QFileInfoList descriptors =
        QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    for (const QFileInfo &descriptor : descriptors)
        count += descriptor.symLinkTarget() == folder ? 1 : 0;
    return count;
}

} // namespace

/*! The root that is held, and what becomes of its path meanwhile. */
class RootTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherRootIsSeenWithinASecond_data();
    void anotherRootIsSeenWithinASecond();
    void whatTheRootHasNotIsLookedForAtOnce_data();
    void whatTheRootHasNotIsLookedForAtOnce();
    void anUpdateGoesIntoAnotherRootWithinASecond();
    void whatIsMadeIsInTheRootOfThePath();
    void whoRemovesMakesNoRoot();
    void aWatchedObjectIsThatOfThePath();
    void aRootThatIsOpenedIsRefusedWithinASecond();
    void aRootThatIsGivenAwayIsRefusedWithinASecond();
    void anObjectWaitsWhileTheRootIsOpen();
    void anotherNameOfTheRootCountsAtOnce();
    void eachThreadHasOneDescriptor();
    void objectsBelowTheRootItself();
    void foldersAreMadeByMany();
};

void RootTest::anotherRootIsSeenWithinASecond_data()
{
    QTest::addColumn<bool>("isLink");
    QTest::newRow("renamed") << false;
    QTest::newRow("link on the way") << true;
}

void RootTest::anotherRootIsSeenWithinASecond()
{
    QFETCH(bool, isLink);
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    QVERIFY(!isLink || roots.point("link", "first"));
    const AnotherRoot root(roots.path(isLink ? "link" : "first"));
    ZopObject open(object(), ZopObject::Subscribe, false);
    QCOMPARE(lookAt(object()), QStringLiteral("first"));
    QVERIFY(isLink ? roots.point("link", "second") : roots.rename("first", "away") && roots.rename("second", "first"));
    QTRY_COMPARE(lookAt(object()), QStringLiteral("second"));
}

void RootTest::whatTheRootHasNotIsLookedForAtOnce_data()
{
    QTest::addColumn<bool>("hasFile");
    QTest::newRow("it has the folder") << false;
    QTest::newRow("it has a file in the folder's place") << true;
}

void RootTest::whatTheRootHasNotIsLookedForAtOnce()
{
    QFETCH(bool, hasFile);
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    QVERIFY(roots.point("link", "first"));
    const AnotherRoot root(roots.path("link"));
    const ZopObject open(object(), ZopObject::Subscribe, false);
    QCOMPARE(lookAt(TwoRoots::onlyInSecond()), QStringLiteral("no such object"));
    QVERIFY(!hasFile || (roots.rename("first/zop", "first/away") && plant(QStringLiteral("/zop"), "x")));
    QVERIFY(roots.point("link", "second"));
    QCOMPARE(lookAt(TwoRoots::onlyInSecond()), QStringLiteral("second"));
    QCOMPARE(lookAt(object()), QStringLiteral("second"));
    // Nor is what is missing in the new one an end.
    QCOMPARE(lookAt(QStringLiteral("/zop/nowhere")), QStringLiteral("no such object"));
    QVERIFY(QFile::remove(roots.path("link")));
    QCOMPARE(lookAt(QStringLiteral("/zop/nowhere")), QStringLiteral("no such object"));
    QCOMPARE(lookAt(object()), QStringLiteral("no such object"));
    QVERIFY(roots.point("link", "second"));
    QCOMPARE(lookAt(object()), QStringLiteral("second"));
}

void RootTest::anUpdateGoesIntoAnotherRootWithinASecond()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    QVERIFY(roots.point("link", "first"));
    const AnotherRoot root(roots.path("link"));
    ZopObject writer(object(), ZopObject::ReadWrite, false);
    QVERIFY(set(writer, QStringLiteral("b=1")));
    QVERIFY(roots.point("link", "second"));
    const auto hasArrived = [&] {
        const AnotherRoot second(roots.path("second"));
        ZopObject reader(object(), ZopObject::Subscribe, false);
        reader.setAttributeCacheEnabled(true);
        return reader.attribute(QStringLiteral("b")).toInt() == 2;
    };
    QTRY_VERIFY(set(writer, QStringLiteral("b=2")) && hasArrived());
}

void RootTest::whatIsMadeIsInTheRootOfThePath()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    QVERIFY(roots.point("link", "first"));
    const AnotherRoot root(roots.path("link"));
    const ZopObject open(object(), ZopObject::Subscribe, false);
    QVERIFY(roots.point("link", "second"));
    QVERIFY(publish(QStringLiteral("/zop/made"), QString()));
    QVERIFY(QFile::exists(roots.path("second/zop/made")));
    // It is made anew when it is gone.
    QVERIFY(QDir(roots.path("second")).removeRecursively());
    QVERIFY(QFile::remove(roots.path("link")));
    QVERIFY(publish(object(), QStringLiteral("a=third")));
    QCOMPARE(lookAt(object()), QStringLiteral("third"));
    QVERIFY(QFileInfo(roots.path("link")).isDir());
}

void RootTest::whoRemovesMakesNoRoot()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    const AnotherRoot root(roots.path("first"));
    auto daemon = std::make_unique<ZopObject>(QStringLiteral("/zop/control"), ZopObject::Publish, true);
    QVERIFY(daemon->isValid());
    QVERIFY(roots.rename("first", "away"));
    QString error;
    QVERIFY(!ZopObject::remove(object(), &error));
    QCOMPARE(error, QStringLiteral("no such object"));
    QVERIFY(QFile::exists(roots.path("away/zop/object")));
    QVERIFY(!QFile::exists(roots.path("first")));
    QVERIFY(roots.rename("away", "first"));
    QCOMPARE(lookAt(object()), QStringLiteral("first"));
    QVERIFY(roots.rename("first", "away"));
    daemon.reset();
    QVERIFY(!QFile::exists(roots.path("first")));
}

void RootTest::aWatchedObjectIsThatOfThePath()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    QVERIFY(roots.point("link", "first"));
    const AnotherRoot root(roots.path("link"));
    const ZopObject daemon(QStringLiteral("/control"), ZopObject::Publish, true); // holds the root, and watches nothing
    QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
    QVERIFY(roots.point("link", "second"));
    // Its folder is watched where the path leads: so must the object be.
    ZopObject open(object(), ZopObject::Subscribe, false);
    open.setAttributeCacheEnabled(true);
    QCOMPARE(open.attribute(QStringLiteral("a")).toString(), QStringLiteral("second"));
}

void RootTest::aRootThatIsOpenedIsRefusedWithinASecond()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    const AnotherRoot root(roots.path("first"));
    const ZopObject open(object(), ZopObject::Subscribe, false);
    QVERIFY(open.isValid());
    const QString reason =
        QStringLiteral("the root \"%1\" is open to other users (wanted: mode 0700)").arg(roots.path("first"));
    QVERIFY(roots.setMode("first", 0750));
    QTRY_COMPARE(lookAt(object()), reason);
    QString error;
    QVERIFY(!ZopObject::create(QStringLiteral("/zop/more"), ZopChangeset(), &error));
    QCOMPARE(error, reason);
    QVERIFY(roots.setMode("first", 0700));
    QCOMPARE(lookAt(object()), QStringLiteral("first"));
    // Where something is made, it shows at once.
    QVERIFY(roots.setMode("first", 0701));
    QVERIFY(!ZopObject::create(QStringLiteral("/zop/more"), ZopChangeset(), &error));
    QCOMPARE(error, reason);
}

void RootTest::aRootThatIsGivenAwayIsRefusedWithinASecond()
{
    if (geteuid() != 0) // the QSKIP macro is not pedantic enough for Clang
        return QTest::qSkip("needs the right to give a directory away", __FILE__, __LINE__);
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    const AnotherRoot root(roots.path("first"));
    const ZopObject open(object(), ZopObject::Subscribe, false);
    QCOMPARE(chown(QFile::encodeName(roots.path("first")).constData(), 65534, 65534), 0);
    QTRY_COMPARE(lookAt(object()), QStringLiteral("the root \"%1\" belongs to another user").arg(roots.path("first")));
}

void RootTest::anObjectWaitsWhileTheRootIsOpen()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    const AnotherRoot root(roots.path("first"));
    ZopObject open(object(), ZopObject::ReadWrite, false);
    open.setAttributeCacheEnabled(true);
    const Events events(&open);
    QVERIFY(roots.setMode("first", 0755));
    QTRY_VERIFY(!set(open, QStringLiteral("b=1")));
    QCOMPARE(open.errorString(), QString::fromLocal8Bit(strerror(EACCES)));
    open.setAttributeCacheEnabled(true); // nothing is gone
    QCOMPARE(open.attribute(QStringLiteral("a")).toString(), QStringLiteral("first"));
    QVERIFY(roots.setMode("first", 0700));
    QVERIFY(set(open, QStringLiteral("b=2")));
    QVERIFY(set(object(), QStringLiteral("end=1")));
    QVERIFY(events.wait(QStringLiteral("{end=1}")));
    QVERIFY(!events.lines.contains(QStringLiteral("-a")));
}

void RootTest::anotherNameOfTheRootCountsAtOnce()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    const AnotherRoot first(roots.path("first"));
    ZopObject open(object(), ZopObject::Subscribe, false);
    QCOMPARE(lookAt(object()), QStringLiteral("first"));
    {
        const AnotherRoot second(roots.path("second"));
        QCOMPARE(lookAt(object()), QStringLiteral("second"));
    }
    QCOMPARE(lookAt(object()), QStringLiteral("first"));
    open.setAttributeCacheEnabled(true);
    QCOMPARE(open.attribute(QStringLiteral("a")).toString(), QStringLiteral("first"));
}

void RootTest::eachThreadHasOneDescriptor()
{
    const TwoRoots roots;
    QVERIFY(roots.areMade());
    const QString folder = QFileInfo(roots.path("first")).canonicalFilePath();
    const AnotherRoot root(roots.path("first"));
    QCOMPARE(descriptorsOf(folder), 0);
    auto open = std::make_unique<ZopObject>(object(), ZopObject::Subscribe, false);
    auto watcher = std::make_unique<ZopDirWatcher>(QStringLiteral("/zop"));
    auto daemon = std::make_unique<ZopObject>(QStringLiteral("/zop/control"), ZopObject::Publish, true);
    QVERIFY(open->isValid() && watcher->isValid() && daemon->isValid());
    QCOMPARE(descriptorsOf(folder), 1);
    int inThread = 0;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        const ZopObject first(object(), ZopObject::Subscribe, false);
        const ZopObject second(object(), ZopObject::ReadWrite, false);
        inThread = first.isValid() && second.isValid() ? descriptorsOf(folder) : 0;
    }));
    thread->start();
    QVERIFY(thread->wait());
    QCOMPARE(inThread, 2);
    QCOMPARE(descriptorsOf(folder), 1);
    daemon.reset();
    open.reset();
    QCOMPARE(descriptorsOf(folder), 1);
    watcher.reset();
    QCOMPARE(descriptorsOf(folder), 0);
}

void RootTest::objectsBelowTheRootItself()
{
    const QTemporaryDir above;
    const AnotherRoot root(above.filePath(QStringLiteral("root")));
    const QString path = QStringLiteral("/top");
    QVERIFY(publish(path, QStringLiteral("a=1")));
    QCOMPARE(lookAt(path), QStringLiteral("1"));
    {
        ZopObject writer(path, ZopObject::ReadWrite, false);
        for (int n = 2; n <= 20; ++n)
            QVERIFY(set(writer, QStringLiteral("a=%1 p=50000*p").arg(n)));
        const ZopObject daemon(QStringLiteral("/control"), ZopObject::Publish, true);
        const ZopObject client(QStringLiteral("/control"), ZopObject::ReadWrite, false);
        QVERIFY2(client.isValid(), qPrintable(client.errorString()));
    }
    QCOMPARE(lookAt(path), QStringLiteral("20"));
    QDir folder(above.filePath(QStringLiteral("root")));
    const auto entries = [&folder] { return folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot); };
    QCOMPARE(entries(), QStringList({".top.old", "top"}));
    QVERIFY(ZopObject::remove(path));
    folder.refresh();
    QCOMPARE(entries(), QStringList());
}

void RootTest::foldersAreMadeByMany()
{
    constexpr int Makers = 4;
    for (int round = 0; round < 20; ++round) {
        const QTemporaryDir above;
        const AnotherRoot root(above.filePath(QStringLiteral("root")));
        std::array<QString, Makers> errors;
        std::array<std::unique_ptr<QThread>, Makers> makers;
        for (int n = 0; n < Makers; ++n) {
            makers[size_t(n)].reset(QThread::create([&errors, n] {
                const QString path = QStringLiteral("/a/b/c/object%1").arg(n);
                QString &error = errors[size_t(n)];
                // On a busy machine another one may have the folder locked for longer than is waited.
                while (!ZopObject::create(path, ZopChangeset(), &error) && error.contains(QStringLiteral("locked"))) { }
            }));
            makers[size_t(n)]->start();
        }
        for (const auto &maker : makers)
            QVERIFY(maker->wait());
        for (const QString &error : errors)
            QCOMPARE(error, QString());
        QCOMPARE(QDir(above.filePath(QStringLiteral("root/a/b/c"))).entryList(QDir::Files).size(), Makers);
    }
}

CONTRACT_TEST_MAIN(RootTest)

#include "tst_root.moc"
