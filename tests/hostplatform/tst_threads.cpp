// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "krellogger.h"
#include "zopcontrolcommand.h"
#include "zopdirwatcher.h"
#include "zopobject.h"

#include <QtCore/QEventLoop>
#include <QtCore/QSet>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>

#include <sys/stat.h>

using namespace morvek;

namespace {

constexpr int Updates = 200;
constexpr int Requests = 50;

constexpr int Threads = 4;

/*! What one thread does with objects of its own, from its own event loop, and how it went. */
class Worker
{
public:
    QStringList told;  //!< "WRITER NUMBER" for each update of the common object by another thread
    QStringList names; //!< objects that came into the folder
    int written = 0;
    int answered = 0;

    void run(int number, const QString &folder, std::atomic<int> *open, const std::atomic<bool> *stopped)
    {
        m_number = number;
        m_folder = folder;
        ZopObject state(folder + QStringLiteral("state"), ZopObject::ReadWrite, false);
        ZopObject control(folder + QStringLiteral("control"), ZopObject::ReadWrite, false);
        ZopDirWatcher watcher(folder);
        QObject::connect(&state, &ZopObject::attributesChanged, [this](const ZopChangeset &changes) {
            told << changes.assignments.value(QStringLiteral("w")).toString() + QLatin1Char(' ')
                    + changes.assignments.value(QStringLiteral("n")).toString();
        });
        QObject::connect(&watcher, &ZopDirWatcher::objectAdded, [this](const QString &name) { names << name; });
        ++*open;
        QEventLoop loop;
        QTimer turns;
        QObject::connect(&turns, &QTimer::timeout, [&] {
            if (*open == Threads) // so that nobody misses an update
                turn(&state, &control);
            if (*stopped || isDone())
                loop.quit();
        });
        turns.start(0);
        loop.exec();
    }

private:
    void turn(ZopObject *state, ZopObject *control)
    {
        if (written < Updates)
            written += set(*state, QStringLiteral("w=%1 n=%2").arg(m_number).arg(written + 1)) ? 1 : 0;
        if (m_asked < Requests) {
            ++m_asked;
            auto *command = new ZopControlCommand(control, control);
            command->setMessage(QStringLiteral("echo"));
            QObject::connect(command, &ZopControlCommand::finished, control, [this](ZopControlCommand *finished) {
                answered += finished->hasError() ? 0 : 1;
                KrelLogger().error(1, "thread %d has %d replies", m_number, answered);
            });
            command->start();
        }
        if (written == Updates && answered == Requests && !m_ended)
            m_ended = publish(m_folder + QStringLiteral("end%1").arg(m_number), QString());
    }

    bool isDone() const
    {
        const auto ends = names.filter(QRegularExpression(QStringLiteral("^end")));
        return told.size() == (Threads - 1) * Updates && ends.size() == Threads;
    }

    int m_number = 0;
    QString m_folder;
    int m_asked = 0;
    bool m_ended = false;
};

/*! Another thread, which goes on removing one object. */
class Remover
{
public:
    explicit Remover(const QString &path)
        : m_thread(QThread::create([this, path] {
              while (!m_stopped) {
                  QString error;
                  if (!ZopObject::remove(path, &error))
                      m_errors.insert(error);
                  ++m_attempts;
              }
          }))
    {
        m_thread->start();
    }
    ~Remover() { end(); }

    /*! Returns when an attempt that begins now has ended. */
    void letTry() const
    {
        for (const int attempts = m_attempts; m_attempts < attempts + 2;)
            QThread::yieldCurrentThread();
    }

    /*! Why attempts have failed. */
    QSet<QString> end()
    {
        m_stopped = true;
        m_thread->wait();
        return m_errors;
    }

private:
    Q_DISABLE_COPY(Remover)
    std::atomic<bool> m_stopped {false};
    std::atomic<int> m_attempts {0};
    QSet<QString> m_errors;
    std::unique_ptr<QThread> m_thread;
};

} // namespace

/*! Threads that have objects of their own, each with its event loop, do not disturb each other. */
class ThreadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachThreadIsToldEverything();
    void whoIsTooLateToRemoveSaysSo();
    void aRemovalNeverTakesAControlObject();
};

void ThreadTest::eachThreadIsToldEverything()
{
    QVERIFY(publish(testPath("state"), QString()));
    ZopObject daemon(testPath("control"), ZopObject::Publish, true);
    QObject::connect(&daemon, &ZopObject::attributesChanged, &daemon, [&daemon](const ZopChangeset &request) {
        ZopChangeset reply = request;
        reply.assignments.insert(QStringLiteral("res"), reply.assignments.take(QStringLiteral("msg")));
        daemon.setAttributes(reply);
    });
    int lines = 0;
    std::mutex linesLock;
    KrelLogger::setSink([&](KrelLogger::Level, unsigned short, const QString &) {
        const std::lock_guard<std::mutex> guard(linesLock);
        ++lines;
    });

    Worker workers[Threads];
    std::unique_ptr<QThread> threads[Threads];
    std::atomic<int> open {0};
    std::atomic<int> running {Threads};
    std::atomic<bool> stopped {false};
    const QString folder = testFolder();
    for (int number = 0; number < Threads; ++number) {
        threads[number].reset(QThread::create([&, number] {
            workers[number].run(number, folder, &open, &stopped);
            --running;
        }));
        threads[number]->start();
    }
    const bool ended = waitUntil([&running] { return running == 0; });
    stopped = true;
    for (const auto &thread : threads)
        thread->wait();
    KrelLogger::setSink(nullptr);
    QVERIFY(ended);

    for (int number = 0; number < Threads; ++number) {
        const Worker &worker = workers[number];
        QCOMPARE(worker.written, Updates);
        QCOMPARE(worker.answered, Requests);
        for (int writer = 0; writer < Threads; ++writer) {
            QStringList expected;
            for (int n = 1; n <= Updates && writer != number; ++n)
                expected << QStringLiteral("%1 %2").arg(writer).arg(n);
            QCOMPARE(worker.told.filter(QRegularExpression(QStringLiteral("^%1 ").arg(writer))), expected);
        }
    }
    QCOMPARE(lines, Threads * Requests);
}

void ThreadTest::whoIsTooLateToRemoveSaysSo()
{
    const QString path = testPath("object");
    Remover remover(path);
    for (int i = 0; i < 5000; ++i) {
        publish(path, QString());
        ZopObject::remove(path);
    }
    const QSet<QString> errors = remover.end();
    QVERIFY(errors.contains(QStringLiteral("no such object")));
    QVERIFY(!errors.contains(QStringLiteral("a control object has this path")));
}

void ThreadTest::aRemovalNeverTakesAControlObject()
{
    const QString path = testPath("object");
    const QByteArray file = qgetenv("ZOP_ROOT") + path.toUtf8();
    Remover remover(path);
    for (int i = 0; i < 500; ++i) {
        publish(path, QString());
        ZopObject::remove(path);
        const ZopObject daemon(path, ZopObject::Publish, true);
        QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
        remover.letTry();
        struct stat status;
        QVERIFY(lstat(file.constData(), &status) == 0 && S_ISSOCK(status.st_mode));
    }
    QVERIFY(remover.end().contains(QStringLiteral("a control object has this path")));
}

CONTRACT_TEST_MAIN(ThreadTest)

#include "tst_threads.moc"
