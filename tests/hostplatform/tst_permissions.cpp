// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"

#include <cerrno>
#include <cstring>

#include <grp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace morvek;

namespace {

constexpr uid_t Ordinary = 65534;

/*! Makes this process one of an ordinary user, as permissions do not hinder root. */
void becomeOrdinary()
{
    const bool changed = setgroups(0, nullptr) == 0 && setgid(Ordinary) == 0 && setuid(Ordinary) == 0;
    if (changed)
        prctl(PR_SET_DUMPABLE, 1); // for sanitizers, which look at their own process
}

QByteArray nameOf(const QString &path)
{
    return QFile::encodeName(fileOf(path));
}

/*! Takes permissions away from the file or folder of \a path until it goes. */
class Withdrawal
{
public:
    explicit Withdrawal(const QString &path, mode_t left = 0)
        : m_file(nameOf(path)),
          m_mode(mode_t(modeOf(path)))
    {
        m_done = chmod(m_file.constData(), left) == 0;
    }
    ~Withdrawal() { giveBack(); }

    bool isDone() const { return m_done; }
    void giveBack() const { chmod(m_file.constData(), m_mode); }

private:
    Q_DISABLE_COPY(Withdrawal)
    QByteArray m_file;
    mode_t m_mode;
    bool m_done;
};

/*! An object beside the folders that are closed; its news come after all that has happened before. */
class Beside
{
public:
    Beside()
        : m_path(QStringLiteral("/zop/beside/") + QLatin1String(QTest::currentTestFunction())
                 + QLatin1String(QTest::currentDataTag())),
          m_published(publish(m_path, QString())),
          m_object(m_path, ZopObject::Subscribe, false),
          m_events(&m_object)
    {
    }

    /*! Turns the event loop until all that has happened by now was heard of. */
    bool hear()
    {
        const QString news = QStringLiteral("n=%1").arg(++m_news);
        return m_published && set(m_path, news) && m_events.wait(QLatin1Char('{') + news + QLatin1Char('}'));
    }

private:
    QString m_path;
    bool m_published;
    ZopObject m_object;
    Events m_events;
    int m_news = 0;
};

/*! Writes the updates \a from to \a to, which are so large that a file holds only a few. */
bool setLarge(ZopObject &object, int from, int to)
{
    for (int n = from; n <= to; ++n) {
        if (!set(object, QStringLiteral("n=%1 p=50000*p").arg(n)))
            return false;
    }
    return true;
}

/*! The numbers of large updates that were told, and what else was. */
QStringList numbersOf(const Events &events)
{
    QStringList numbers;
    const QStringList updates = events.updates();
    for (const QString &update : updates)
        numbers << (update.startsWith(QLatin1String("{n=")) ? update.section(QLatin1Char(' '), 0, 0).mid(3) : update);
    return numbers;
}

QStringList numbersTo(int last)
{
    QStringList numbers;
    for (int n = 1; n <= last; ++n)
        numbers << QString::number(n);
    return numbers;
}

QString folderItself()
{
    return testFolder().chopped(1);
}

} // namespace

/*! What an ordinary user's process may not look at for a while, and no event tells that it may again. */
class PermissionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void valuesWereToldAsRemovedFromAClosedFolder();
    void theNextFileWasNotReadWhenItWasOpenAgain();
    void anObjectInAClosedFolderWasNeverAnnounced_data();
    void anObjectInAClosedFolderWasNeverAnnounced();
    void anObjectOfAClosedFileWasNeverAnnounced();
    void aControlObjectOfAClosedSocketWasNeverAnnounced();
    void aDaemonTookAPathWhoseDaemonItCouldNotSee();
    void updatesWereLostWhoseReaderCouldNotBeSeen();
};

void PermissionTest::initTestCase()
{
    if (geteuid() == 0) // the QSKIP macro is not pedantic enough for Clang
        QTest::qSkip("needs an ordinary user, or the right to become one", __FILE__, __LINE__);
    else if (access(nameOf(QString()).constData(), R_OK | W_OK | X_OK) != 0)
        QTest::qSkip("an ordinary user has no folder for temporary files here", __FILE__, __LINE__);
}

void PermissionTest::valuesWereToldAsRemovedFromAClosedFolder()
{
    Beside beside;
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&object);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(setLarge(writer, 1, 8));
    QVERIFY(QFile::exists(fileOf(testPath(".object.old"))));
    const Withdrawal withdrawal(folderItself());
    QVERIFY(withdrawal.isDone());
    QVERIFY(beside.hear());
    const QStringList told = numbersOf(events);
    QVERIFY(told.size() < 8); // the rest is in the next file
    QCOMPARE(told, numbersTo(told.size()));
    withdrawal.giveBack();
    QVERIFY(waitUntil([&events] { return events.updates().size() >= 8; }));
    QVERIFY(beside.hear());
    QCOMPARE(numbersOf(events), numbersTo(8));
}

void PermissionTest::theNextFileWasNotReadWhenItWasOpenAgain()
{
    Beside beside;
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject object(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&object);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(setLarge(writer, 1, 8));
    QVERIFY(QFile::exists(fileOf(testPath(".object.old"))));
    const Withdrawal withdrawal(testPath("object"));
    QVERIFY(withdrawal.isDone());
    QVERIFY(beside.hear());
    QVERIFY(events.updates().size() < 8);
    withdrawal.giveBack();
    QVERIFY(waitUntil([&events] { return events.updates().size() >= 8; }));
    QVERIFY(beside.hear());
    QCOMPARE(numbersOf(events), numbersTo(8));
}

void PermissionTest::anObjectInAClosedFolderWasNeverAnnounced_data()
{
    QTest::addColumn<int>("left");
    QTest::newRow("no permissions") << 0;
    QTest::newRow("names can be listed") << 0400;
}

void PermissionTest::anObjectInAClosedFolderWasNeverAnnounced()
{
    QFETCH(int, left);
    const QString folder = testFolder() + QString::number(left) + QLatin1Char('/');
    Beside beside;
    QVERIFY(publish(folder + QStringLiteral("known"), QString()));
    ZopDirWatcher watcher(folder);
    const Events names(&watcher);
    watcher.setNameCacheEnabled(true);
    QVERIFY(publish(folder + QStringLiteral("fresh"), QString()));
    const ZopObject daemon(folder + QStringLiteral("control"), ZopObject::Publish, true);
    QVERIFY(daemon.isValid());
    const Withdrawal withdrawal(folder.chopped(1), mode_t(left));
    QVERIFY(withdrawal.isDone());
    QVERIFY(beside.hear());
    if (left != 0)
        watcher.setNameCacheEnabled(true); // lists the folder
    QCOMPARE(names.lines, QStringList("+known"));
    withdrawal.giveBack();
    QVERIFY(names.wait(QStringLiteral("+fresh")));
    QVERIFY(names.wait(QStringLiteral("+control")));
    QVERIFY(beside.hear());
    QCOMPARE(names.lines.size(), 3);
}

void PermissionTest::anObjectOfAClosedFileWasNeverAnnounced()
{
    Beside beside;
    QVERIFY(publish(testPath("known"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events names(&watcher);
    watcher.setNameCacheEnabled(true);
    QVERIFY(publish(testPath("fresh"), QString()));
    const Withdrawal withdrawal(testPath("fresh"));
    QVERIFY(withdrawal.isDone());
    QVERIFY(beside.hear());
    QCOMPARE(names.lines, QStringList("+known"));
    withdrawal.giveBack();
    QVERIFY(names.wait(QStringLiteral("+fresh")));
    QVERIFY(beside.hear());
    QCOMPARE(names.lines, QStringList({"+known", "+fresh"}));
}

void PermissionTest::aControlObjectOfAClosedSocketWasNeverAnnounced()
{
    Beside beside;
    QVERIFY(publish(testPath("known"), QString()));
    ZopDirWatcher watcher(testFolder());
    const Events names(&watcher);
    watcher.setNameCacheEnabled(true);
    const ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY(daemon.isValid());
    const Withdrawal withdrawal(testPath("control"));
    QVERIFY(withdrawal.isDone());
    QVERIFY(beside.hear());
    QCOMPARE(names.lines, QStringList("+known"));
    withdrawal.giveBack();
    QVERIFY(names.wait(QStringLiteral("+control")));
    QVERIFY(beside.hear());
    QCOMPARE(names.lines, QStringList({"+known", "+control"}));
}

void PermissionTest::aDaemonTookAPathWhoseDaemonItCouldNotSee()
{
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QVERIFY(daemon.isValid());
    const Events requests(&daemon);
    const Withdrawal withdrawal(testPath("control"));
    QVERIFY(withdrawal.isDone());
    const ZopObject second(testPath("control"), ZopObject::Publish, true);
    QVERIFY(!second.isValid());
    QCOMPARE(second.errorString(), QString::fromLocal8Bit(strerror(EACCES)));
    withdrawal.giveBack();
    ZopObject client(testPath("control"), ZopObject::ReadWrite, false);
    QVERIFY2(client.isValid(), qPrintable(client.errorString()));
    QVERIFY(set(client, QStringLiteral("msg=x")));
    QVERIFY(waitUntil([&requests] { return !requests.updates().isEmpty(); }));
    QCOMPARE(requests.updates(), QStringList("{msg=x peer=1}"));
}

void PermissionTest::updatesWereLostWhoseReaderCouldNotBeSeen()
{
    QVERIFY(publish(testPath("object"), QString()));
    ZopObject reader(testPath("object"), ZopObject::Subscribe, false);
    const Events events(&reader);
    ZopObject writer(testPath("object"), ZopObject::ReadWrite, false);
    QVERIFY(setLarge(writer, 1, 8)); // which the reader does not read, as the event loop does not turn
    const Withdrawal withdrawal(testPath(".object.old"));
    QVERIFY(withdrawal.isDone());
    QVERIFY(setLarge(writer, 9, 30));
    QVERIFY(waitUntil([&events] { return events.updates().size() >= 30; }));
    QCOMPARE(numbersOf(events), numbersTo(30));
}

int main(int argc, char **argv)
{
    // Before there is a root, which shall be this user's.
    if (geteuid() == 0)
        becomeOrdinary();
    PermissionTest test;
    return runContractTest(&test, argc, argv);
}

#include "tst_permissions.moc"
