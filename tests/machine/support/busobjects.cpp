// SPDX-License-Identifier: Apache-2.0
#include "busobjects.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusServiceWatcher>
#include <QtDBus/QDBusVirtualObject>

#include <numeric>

using Tree = QMap<QDBusObjectPath, BusSettings>;
Q_DECLARE_METATYPE(Tree)

namespace {

const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString ObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");

template<typename T>
bool take(QVariant *value, const QString &signature, const char *expected)
{
    if (signature != QLatin1String(expected))
        return false;
    *value = QVariant::fromValue(qdbus_cast<T>(*value));
    return true;
}

void makeNative(QVariantMap *map);

// What arrives as a message's part becomes the type that a test compares with, and that can be sent again.
QVariant native(QVariant value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return native(qvariant_cast<QDBusVariant>(value).variant());
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value;
    const QString signature = qvariant_cast<QDBusArgument>(value).currentSignature();
    if (take<QVariantMap>(&value, signature, "a{sv}")) {
        auto map = value.toMap();
        makeNative(&map);
        return map;
    }
    if (take<BusSettings>(&value, signature, "a{sa{sv}}")) {
        auto settings = qvariant_cast<BusSettings>(value);
        for (QVariantMap &group : settings)
            makeNative(&group);
        return QVariant::fromValue(settings);
    }
    if (take<QList<QVariantMap>>(&value, signature, "aa{sv}")) {
        auto maps = qvariant_cast<QList<QVariantMap>>(value);
        for (QVariantMap &map : maps)
            makeNative(&map);
        return QVariant::fromValue(maps);
    }
    // Others stay what they are: they can be sent again, too.
    take<BusPaths>(&value, signature, "ao") || take<QList<uint>>(&value, signature, "au")
        || take<QList<QList<uint>>>(&value, signature, "aau") || take<QList<QByteArray>>(&value, signature, "aay")
        || take<QMap<QString, QString>>(&value, signature, "a{ss}");
    return value;
}

void makeNative(QVariantMap *map)
{
    for (QVariant &value : *map)
        value = native(value);
}

BusAnswer unknown(const QString &what)
{
    return {{}, QStringLiteral("org.freedesktop.DBus.Error.Unknown") + what, QStringLiteral("No such ") + what};
}

} // namespace

QString BusCall::text(int argument) const
{
    return arguments.value(argument).toString();
}

class BusObjects::Server : public QDBusVirtualObject
{
public:
    explicit Server(BusObjects *objects)
        : m_objects(objects),
          m_watcher(this) // which goes along into another thread
    {
        QObject::connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString &sender) {
            if (m_objects)
                Q_EMIT m_objects->senderGone(sender);
        });
    }

    bool connect()
    {
        static QAtomicInt number;
        m_name = QStringLiteral("objects%1").arg(++number);
        QDBusConnection bus = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"), m_name);
        m_watcher.setConnection(bus);
        m_watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        return bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath)
            && bus.registerService(m_objects->m_service);
    }

    void disconnect()
    {
        if (m_name.isEmpty())
            return;
        m_watcher.setWatchedServices({});
        m_watcher.setConnection(QDBusConnection(QString()));
        m_objects = nullptr; // what is still on its way comes too late
        QDBusConnection::disconnectFromBus(m_name);
        m_name.clear();
    }

    void watch(const QString &sender)
    {
        if (!m_watcher.watchedServices().contains(sender))
            m_watcher.addWatchedService(sender);
    }

    QDBusConnection bus() const { return QDBusConnection(m_name); }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        if (m_objects) {
            watch(message.service());
            m_objects->receive(message);
        }
        return true;
    }

private:
    BusObjects *m_objects;
    QString m_name;
    QDBusServiceWatcher m_watcher;
};

BusObjects::BusObjects(const QString &service, const QString &root)
    : m_service(service),
      m_root(root)
{
    qRegisterMetaType<BusCall>();
    qDBusRegisterMetaType<BusPaths>();
    qDBusRegisterMetaType<BusSettings>();
    qDBusRegisterMetaType<Tree>();
    qDBusRegisterMetaType<QList<QVariantMap>>();
    qDBusRegisterMetaType<QList<uint>>();
    qDBusRegisterMetaType<QList<QList<uint>>>();
    qDBusRegisterMetaType<QList<QByteArray>>();
    qDBusRegisterMetaType<QMap<QString, QString>>();
    m_thread.start();
}

BusObjects::~BusObjects()
{
    stop();
    m_thread.quit();
    m_thread.wait();
}

bool BusObjects::start()
{
    stop();
    auto server = std::make_unique<Server>(this);
    server->moveToThread(&m_thread);
    {
        const QMutexLocker locker(&m_mutex);
        m_server = std::move(server);
    }
    bool done = false;
    QMetaObject::invokeMethod(
        m_server.get(), [&] { done = m_server->connect(); }, Qt::BlockingQueuedConnection);
    return done;
}

void BusObjects::stop()
{
    if (!m_server)
        return;
    QMetaObject::invokeMethod(
        m_server.get(), [this] { m_server->disconnect(); }, Qt::BlockingQueuedConnection);
    const QMutexLocker locker(&m_mutex);
    m_server.release()->deleteLater(); // in its thread
    for (QVector<QDBusMessage> &messages : m_held)
        messages.clear();
}

void BusObjects::add(const QString &path, const Interfaces &interfaces)
{
    const QMutexLocker locker(&m_mutex);
    m_objects.insert(path, interfaces);
    emitSignal(m_root, ObjectManager, QStringLiteral("InterfacesAdded"),
               {QVariant::fromValue(QDBusObjectPath(path)), QVariant::fromValue(interfaces)});
}

void BusObjects::remove(const QString &path)
{
    const QMutexLocker locker(&m_mutex);
    const QStringList interfaces = m_objects.take(path).keys();
    emitSignal(m_root, ObjectManager, QStringLiteral("InterfacesRemoved"),
               {QVariant::fromValue(QDBusObjectPath(path)), interfaces});
}

bool BusObjects::contains(const QString &path) const
{
    const QMutexLocker locker(&m_mutex);
    return m_objects.contains(path);
}

QVariant BusObjects::value(const QString &path, const QString &name) const
{
    const QMutexLocker locker(&m_mutex);
    for (const QVariantMap &properties : m_objects.value(path)) {
        if (properties.contains(name))
            return properties.value(name);
    }
    return {};
}

void BusObjects::change(const QString &path, const QVariantMap &properties)
{
    const QMutexLocker locker(&m_mutex);
    Interfaces &interfaces = m_objects[path];
    for (auto interface = interfaces.begin(); interface != interfaces.end(); ++interface) {
        QVariantMap changed;
        for (auto property = properties.begin(); property != properties.end(); ++property) {
            if (!interface->contains(property.key()))
                continue;
            QVariant value = property.value();
            value.convert(interface->value(property.key()).userType());
            interface->insert(property.key(), value);
            changed.insert(property.key(), value);
        }
        if (!changed.isEmpty())
            emitSignal(path, Properties, QStringLiteral("PropertiesChanged"),
                       {interface.key(), changed, QStringList()});
    }
}

void BusObjects::emitSignal(const QString &path, const QString &interface, const QString &member,
                            const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createSignal(path, interface, member);
    message.setArguments(arguments);
    send(message);
}

QVector<BusCall> BusObjects::calls(const QString &member) const
{
    const QMutexLocker locker(&m_mutex);
    QVector<BusCall> found;
    for (const BusCall &call : m_calls) {
        if (member.isEmpty() || call.member == member)
            found.append(call);
    }
    return found;
}

void BusObjects::forgetCalls()
{
    const QMutexLocker locker(&m_mutex);
    m_calls.clear();
}

bool BusObjects::waitForCalls(const QString &member, int count, int milliseconds) const
{
    const auto come = [&] { return calls(member).size() >= count; };
    QEventLoop loop;
    QObject::connect(this, &BusObjects::called, &loop, [&] {
        if (come())
            loop.quit();
    });
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    if (!come())
        loop.exec();
    return come();
}

void BusObjects::setAnswer(const QString &member, const Answer &answer)
{
    const QMutexLocker locker(&m_mutex);
    m_answers.insert(member, answer);
}

void BusObjects::refuse(const QString &member, const QString &error, const QString &text, int times)
{
    const QMutexLocker locker(&m_mutex);
    m_refusals.insert(member, {{{}, error, text}, times});
}

void BusObjects::allow(const QString &member)
{
    const QMutexLocker locker(&m_mutex);
    m_refusals.remove(member);
}

void BusObjects::hold(const QString &member)
{
    const QMutexLocker locker(&m_mutex);
    m_held[member];
}

void BusObjects::release(const QString &member)
{
    const QMutexLocker locker(&m_mutex);
    const QVector<QDBusMessage> messages = m_held.take(member);
    for (const QDBusMessage &message : messages)
        respond(message, read(message));
}

void BusObjects::holdAfter(int count)
{
    const QMutexLocker locker(&m_mutex);
    m_answersLeft = count;
}

int BusObjects::heldCalls() const
{
    const QMutexLocker locker(&m_mutex);
    return std::accumulate(m_held.begin(), m_held.end(), 0,
                           [](int sum, const QVector<QDBusMessage> &messages) { return sum + messages.size(); });
}

BusCall BusObjects::read(const QDBusMessage &message)
{
    BusCall call {message.service(), message.path(), message.interface(), message.member(), {}};
    for (const QVariant &argument : message.arguments())
        call.arguments.append(native(argument));
    return call;
}

void BusObjects::receive(const QDBusMessage &message)
{
    const QMutexLocker locker(&m_mutex);
    const BusCall call = read(message);
    const bool looks =
        call.interface == ObjectManager || (call.interface == Properties && call.member != QLatin1String("Set"));
    if (!looks)
        m_calls.append(call);
    if (!looks && m_answersLeft == 0)
        m_held[call.member];
    else if (!looks && m_answersLeft > 0)
        --m_answersLeft;
    const auto held = m_held.find(call.member);
    if (held != m_held.end())
        held->append(message);
    else
        respond(message, call);
    if (!looks)
        QMetaObject::invokeMethod(
            this, [this, call] { Q_EMIT called(call); }, Qt::QueuedConnection);
}

void BusObjects::respond(const QDBusMessage &message, const BusCall &call)
{
    const BusAnswer given = answer(call);
    send(given.error.isEmpty() ? message.createReply(given.values) : message.createErrorReply(given.error, given.text));
}

BusAnswer BusObjects::answer(const BusCall &call)
{
    const auto refusal = m_refusals.find(call.member);
    if (refusal != m_refusals.end()) {
        BusAnswer given = refusal->answer;
        if (refusal->times > 0 && --refusal->times == 0)
            m_refusals.erase(refusal);
        return given;
    }
    if (m_answers.contains(call.member))
        return m_answers.value(call.member)(call);
    if (call.member == QLatin1String("GetManagedObjects") && call.path == m_root)
        return managedObjects();
    if (!m_objects.contains(call.path))
        return unknown(QStringLiteral("Object"));
    if (call.interface != Properties)
        return unknown(QStringLiteral("Method"));
    if (!m_objects.value(call.path).contains(call.text(0)))
        return unknown(QStringLiteral("Interface"));
    return call.member == QLatin1String("GetAll") ? getAll(call)
        : call.member == QLatin1String("Get")     ? get(call)
                                                  : set(call);
}

BusAnswer BusObjects::managedObjects() const
{
    Tree tree;
    for (auto object = m_objects.begin(); object != m_objects.end(); ++object)
        tree.insert(QDBusObjectPath(object.key()), object.value());
    return {{QVariant::fromValue(tree)}, {}, {}};
}

BusAnswer BusObjects::getAll(const BusCall &call) const
{
    return {{m_objects.value(call.path).value(call.text(0))}, {}, {}};
}

BusAnswer BusObjects::get(const BusCall &call) const
{
    const QVariant value = m_objects.value(call.path).value(call.text(0)).value(call.text(1));
    if (!value.isValid())
        return unknown(QStringLiteral("Property"));
    return {{QVariant::fromValue(QDBusVariant(value))}, {}, {}};
}

BusAnswer BusObjects::set(const BusCall &call)
{
    change(call.path, {{call.text(1), call.arguments.value(2)}});
    return {};
}

void BusObjects::send(const QDBusMessage &message) const
{
    const QMutexLocker locker(&m_mutex);
    if (m_server)
        m_server->bus().send(message);
}
