// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTUNIT_H
#define MORVEK_TESTUNIT_H

#include "testrequest.h"

#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>
#include <QtCore/QVector>

#include <functional>
#include <memory>

namespace morvek {

/*!
 * A head unit for a test: morvek-hostd on a root of its own, which can be acted on and looked at.
 *
 * Make it after the QCoreApplication and before the services, controllers and processes that are to find it: it sets
 * ZOP_ROOT of this process until it is deleted. Of several units they find the last one. Everything of it ends with the
 * test, also when that crashes or is killed.
 *
 * A function that says false, and one whose answer is empty for that reason, also writes errorString() as a warning, so
 * that the report of a failed test has it.
 */
class MORVEK_TEST_KIT_EXPORT TestUnit : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString root READ root CONSTANT)
    Q_PROPERTY(bool held READ isHeld WRITE setHeld NOTIFY optionsChanged)
    Q_PROPERTY(double speed READ speed WRITE setSpeed NOTIFY optionsChanged)
    Q_PROPERTY(int seed READ seed WRITE setSeed NOTIFY optionsChanged)
    Q_PROPERTY(QStringList without READ without WRITE setWithout NOTIFY optionsChanged)
    Q_PROPERTY(int timeout READ timeout WRITE setTimeout NOTIFY optionsChanged)

public:
    explicit TestUnit(QObject *parent = nullptr);
    ~TestUnit() override;

    /*! The folder below which everything is published. */
    QString root() const;

    // From the next start on:

    /*!
     * Whether time stands still but in pass(): what is played or requested has all that follows from it done at once.
     * It does at first.
     */
    bool isHeld() const;
    void setHeld(bool held);
    /*! Lets time pass so many times as fast, from 0.01 to 10000, unless it is held. 1 at first. */
    double speed() const;
    void setSpeed(double factor);
    /*! What chance begins with, at least 0; -1, at first: the scenario's. */
    int seed() const;
    void setSeed(int seed);
    /*! The daemons that are left out: some of "networking", "wifi" and "tethering". */
    QStringList without() const;
    void setWithout(const QStringList &daemons);

    /*!
     * How many milliseconds each function here waits at most, 10000 at first; morvek-hostd itself has no less than 5000
     * to start, to answer and to end.
     */
    int timeout() const;
    void setTimeout(int milliseconds);

    /*!
     * Starts the daemons, and waits until everything is published. \a scenario is the name of a shipped one, a file
     * (what contains a "/" or ends in ".json"), or JSON, which begins with "{". What a former start has left on the
     * root is forgotten.
     */
    Q_INVOKABLE bool start(const QString &scenario = QStringLiteral("headunit"));
    /*! Starts them once more, after stop() or kill(), on what they have left; if they run, they are stopped first. */
    Q_INVOKABLE bool restart();
    /*! Ends the daemons as they end by themselves. One daemon alone dies by act("daemon-dies", …). */
    Q_INVOKABLE bool stop();
    /*! Kills them without a warning. */
    Q_INVOKABLE void kill();
    /*! Whether morvek-hostd runs. */
    Q_INVOKABLE bool isRunning() const;
    /*! Of morvek-hostd; 0 while it does not run. */
    qint64 processId() const;

    /*!
     * Plays an event or a fault of the stage, as act("link-lost", {{"interface", "eth0"}}). When it is held, all that
     * follows is done when this returns; applications hear of it in their event loops.
     */
    Q_INVOKABLE bool act(const QString &what, const QVariantMap &keys = QVariantMap());
    /*! The same as the stage takes it: {{"event", "link-lost"}, {"interface", "eth0"}} */
    bool act(const QJsonObject &request);
    /*! Lets so much time pass at once, when it is held. */
    Q_INVOKABLE bool pass(int milliseconds);

    /*!
     * What the stage shows: an array of "requests" (those with a higher number than \a since) or "faults", or an object
     * of "objects" or "daemons".
     */
    Q_INVOKABLE QJsonValue look(const QString &what, int since = 0);
    /*! The requests with a higher number than \a since, the earliest first. */
    QVector<TestRequest> requests(int since = 0);
    /*! The attribute \a name that the state object \a path has published, as look("objects") shows it. */
    Q_INVOKABLE QJsonValue published(const QString &path, const QString &name);
    /*! "alive", "dead" or "left out": how the daemon \a name is. */
    Q_INVOKABLE QString daemonState(const QString &name);

    // These let the event loop run meanwhile:

    /*!
     * Waits for a request with the message \a message that has, of what TestRequest has, \a having, and a higher number
     * than \a since.
     */
    Q_INVOKABLE morvek::TestRequest waitForRequest(const QString &message, const QVariantMap &having = QVariantMap(),
                                                   int since = 0);
    /*! Waits until \a predicate is true. \a what says in errorString() what that was. */
    bool waitUntil(const std::function<bool()> &predicate, const QString &what = QStringLiteral("a condition"));
    /*! Waits until a service of the library, or a controller of the network kit, is ready. */
    Q_INVOKABLE bool waitForReady(QObject *service);
    /*!
     * Waits until an operation of the library, or a request of the network kit, has ended, and says how: "done"; of an
     * operation, its error as "-1 Service is not ready"; of a request, its failure as "WrongPasskey". "open" when it
     * has not ended.
     */
    Q_INVOKABLE QString endOf(QObject *operation);
    /*! Notes how \a operation ends from now on, for endOf(), if something else is waited for in between. */
    Q_INVOKABLE void watch(QObject *operation);

    /*! Why the last function that failed did; empty before that. */
    Q_INVOKABLE QString errorString() const;
    /*! What morvek-hostd has written so far: a line for each request, reply and event. */
    Q_INVOKABLE QString output() const;

Q_SIGNALS:
    void optionsChanged();

private:
    Q_DISABLE_COPY(TestUnit)
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace morvek

#endif
