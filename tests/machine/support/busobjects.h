// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_BUSOBJECTS_H
#define MORVEK_TEST_BUSOBJECTS_H

#include "buscall.h"

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QRecursiveMutex>
#include <QtCore/QThread>
#include <QtCore/QVector>

#include <functional>
#include <memory>
#include <optional>

class QDBusConnection;
class QDBusMessage;

/*!
 * Objects with properties under a name on the system bus, with an object manager above them all.
 *
 * They are served in a thread of their own: a test may wait in whatever way it likes, and what it tests may make calls
 * that block. All functions are to be called in the test's thread, but for what setAnswer() is given.
 */
class BusObjects : public QObject
{
    Q_OBJECT

public:
    using Interfaces = QMap<QString, QVariantMap>;
    using Answer = std::function<BusAnswer(const BusCall &call)>;

    /*! The object manager is at \a root. Nothing is on the bus before start(). */
    BusObjects(const QString &service, const QString &root);
    ~BusObjects() override;

    /*! Comes to the bus and takes the name; false when it cannot. */
    bool start();
    /*! Leaves the bus; calls without an answer will never have one. The objects stay. */
    void stop();

    void add(const QString &path, const Interfaces &interfaces);
    void remove(const QString &path);
    bool contains(const QString &path) const;
    /*! The property \a name of the object, of whichever of its interfaces. */
    QVariant value(const QString &path, const QString &name) const;
    template<typename T>
    T value(const QString &path, const QString &name) const
    {
        return qvariant_cast<T>(value(path, name));
    }
    QString pathValue(const QString &path, const QString &name) const
    {
        return value<QDBusObjectPath>(path, name).path();
    }
    /*! Changes properties, of whichever interfaces, and tells each, also when it is what it was. Takes on the types. */
    void change(const QString &path, const QVariantMap &properties);
    void emitSignal(const QString &path, const QString &interface, const QString &member,
                    const QVariantList &arguments = {});

    /*! What has been called, in order; all, or \a member only. Whoever only looks at properties is not recorded. */
    QVector<BusCall> calls(const QString &member = QString()) const;
    void forgetCalls();
    /*! Waits until \a member has been called \a count times since the last forgetCalls(). */
    bool waitForCalls(const QString &member, int count = 1, int milliseconds = 20000) const;

    /*! How calls of \a member are answered from now on; in another thread, with all functions at its service. */
    void setAnswer(const QString &member, const Answer &answer);
    /*! Refuses calls of \a member until allow(), or only the next \a times. */
    void refuse(const QString &member, const QString &error, const QString &text, int times = -1);
    void allow(const QString &member);
    /*! Leaves calls of \a member without an answer until release(), which answers them as if they came then. */
    void hold(const QString &member);
    void release(const QString &member);
    /*! Answers so many calls more, of whatever member, and leaves all others without an answer. */
    void holdAfter(int count);
    /*! How many calls have no answer. */
    int heldCalls() const;

Q_SIGNALS:
    void called(const BusCall &call);
    /*! In the thread of the objects: who has called once is no longer on the bus. */
    void senderGone(const QString &sender);

protected:
    QRecursiveMutex *mutex() const { return &m_mutex; }

private:
    class Server;
    struct Refusal
    {
        BusAnswer answer;
        int times;
    };

    static BusCall read(const QDBusMessage &message);
    void receive(const QDBusMessage &message);
    void respond(const QDBusMessage &message, const BusCall &call);
    BusAnswer answer(const BusCall &call);
    BusAnswer managedObjects() const;
    BusAnswer getAll(const BusCall &call) const;
    BusAnswer get(const BusCall &call) const;
    BusAnswer set(const BusCall &call);
    void send(const QDBusMessage &message) const;

    const QString m_service;
    const QString m_root;
    mutable QRecursiveMutex m_mutex;
    QThread m_thread;
    std::unique_ptr<Server> m_server;
    QMap<QString, Interfaces> m_objects;
    QVector<BusCall> m_calls;
    QHash<QString, Answer> m_answers;
    QHash<QString, Refusal> m_refusals;
    QHash<QString, QVector<QDBusMessage>> m_held;
    int m_answersLeft = -1; // or any number
};

#endif
