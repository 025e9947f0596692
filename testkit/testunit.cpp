// SPDX-License-Identifier: Apache-2.0
#include "testunit.h"

#include "keeper.h"
#include "operationend.h"
#include "servicebase.h"
#include "stageconnection.h"
#include "unitprocess.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QMetaEnum>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>

#include <algorithm>
#include <utility>
#include <vector>

namespace morvek {

namespace {

constexpr int Pause = 5; // between two looks at something that is waited for, in milliseconds

constexpr int LeastPatience = 5000; // with morvek-hostd: a test that expects nothing to come does not hurry that

const char RootVariable[] = "ZOP_ROOT";

/*! ZOP_ROOT as it was before the units that there are, and the root of each. */
QVector<QByteArray> roots;

/*! Services find what the last one names. */
void nameRoot()
{
    if (roots.constLast().isEmpty())
        qunsetenv(RootVariable);
    else
        qputenv(RootVariable, roots.constLast());
}

TestRequest requestOf(const QJsonObject &object)
{
    TestRequest request;
    request.number = object.value(QLatin1String("number")).toInt();
    request.at = object.value(QLatin1String("at")).toInt();
    request.daemon = object.value(QLatin1String("daemon")).toString();
    request.message = object.value(QLatin1String("message")).toString();
    request.interface = object.value(QLatin1String("interface")).toString();
    request.ssid = object.value(QLatin1String("ssid")).toString();
    request.text = object.value(QLatin1String("text")).toString();
    request.answers = object.value(QLatin1String("answers")).toVariant().toStringList();
    return request;
}

bool isReady(const QObject *service)
{
    if (const auto *ofLibrary = qobject_cast<const ServiceBase *>(service))
        return ofLibrary->ready();
    const QMetaObject *type = service->metaObject();
    const QMetaProperty availability = type->property(type->indexOfProperty("availability"));
    const char *key = availability.enumerator().valueToKey(availability.read(service).toInt());
    return qstrcmp(key, "Ready") == 0;
}

/*! QDir says "/" for a folder of temporary files that does not exist. */
QString folderTemplate()
{
    const QDir place(qEnvironmentVariable("TMPDIR", QStringLiteral("/tmp")));
    return place.absoluteFilePath(QStringLiteral("morvek-unit-XXXXXX"));
}

bool has(const TestRequest &request, const QVariantMap &wanted)
{
    const QMetaObject &type = TestRequest::staticMetaObject;
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        const int property = type.indexOfProperty(it.key().toLatin1().constData());
        if (type.property(property).readOnGadget(&request) != it.value())
            return false;
    }
    return true;
}

QString nameOf(const QObject *object)
{
    return object ? QString::fromLatin1(object->metaObject()->className()) : QStringLiteral("null");
}

} // namespace

class TestUnit::Private
{
public:
    QString root() const { return m_folder.filePath(QStringLiteral("root")); }
    QString writtenScenario() const { return m_folder.filePath(QStringLiteral("scenario.json")); }
    QStringList arguments() const;
    QString ended() const;
    int patience() const { return qMax(m_timeout, LeastPatience); }
    QString output() const;

    void prepare();
    bool writeScenario(const QString &scenario);
    bool launch(const QStringList &arguments);
    bool ask(const QJsonObject &request, QJsonObject *answer);
    bool look(const QString &what, int since, QJsonObject *answer);
    bool wait(const std::function<bool()> &predicate, const std::function<QString()> &what);
    std::shared_ptr<OperationEnd> endOf(QObject *operation);
    bool fail(const QString &error);

    Keeper m_keeper;
    QTemporaryDir m_folder {folderTemplate()};
    bool m_isUp = false; // is meant to run
    // Never the root of the user, who may run daemons there.
    const QByteArray m_place = m_folder.isValid() ? QFile::encodeName(root()) : QByteArray("/dev/null");
    QString m_obstacle; // why it cannot start at all

    bool m_isHeld = true;
    double m_speed = 1;
    int m_seed = -1;
    QStringList m_without;
    int m_timeout = 10000;

    QString m_scenario; // as --scenario takes it; empty before the first start
    UnitProcess m_process;
    StageConnection m_stage;
    std::vector<std::shared_ptr<OperationEnd>> m_ends;
    QString m_error;
};

QStringList TestUnit::Private::arguments() const
{
    QStringList arguments {QStringLiteral("--root"), root(), QStringLiteral("--scenario"), m_scenario,
                           QStringLiteral("--verbose")};
    if (m_isHeld)
        arguments += QStringLiteral("--hold");
    else
        arguments += {QStringLiteral("--speed"), QString::number(m_speed)};
    if (m_seed != -1)
        arguments += {QStringLiteral("--seed"), QString::number(m_seed)};
    for (const QString &daemon : m_without)
        arguments += {QStringLiteral("--without"), daemon};
    return arguments;
}

QString TestUnit::Private::output() const
{
    QFile file(m_folder.filePath(QStringLiteral("output")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/*! How morvek-hostd has ended, and its last words. */
QString TestUnit::Private::ended() const
{
    if (m_process.error() == QProcess::FailedToStart)
        return QStringLiteral("morvek-hostd cannot be started: ") + m_process.errorString();
    const QString way = m_process.exitStatus() == QProcess::NormalExit ? QStringLiteral("has ended with code")
                                                                       : QStringLiteral("was killed by signal");
    QString words = output().trimmed().section(QLatin1Char('\n'), -1);
    words.replace(writtenScenario(), QStringLiteral("the scenario"));
    return QStringLiteral("morvek-hostd %1 %2: %3").arg(way).arg(m_process.exitCode()).arg(words);
}

bool TestUnit::Private::fail(const QString &error)
{
    m_error = error;
    qWarning("TestUnit: %s", qUtf8Printable(error));
    return false;
}

/*! What is there before the daemons are. */
void TestUnit::Private::prepare()
{
    if (roots.isEmpty())
        roots += qgetenv(RootVariable);
    roots += m_place;
    nameRoot();
    QString error;
    if (!m_folder.isValid())
        m_obstacle = QStringLiteral("no folder can be made: ") + m_folder.errorString();
    else if (!m_keeper.start(m_folder.path(), &error))
        m_obstacle = QStringLiteral("nobody can be made who would remove the folder: ") + error;
    else if (!QDir().mkdir(root())
             || !QFile::setPermissions(root(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        m_obstacle = QStringLiteral("the root cannot be made");
}

/*! What is no file yet becomes one. */
bool TestUnit::Private::writeScenario(const QString &scenario)
{
    m_scenario = scenario;
    if (!scenario.trimmed().startsWith(QLatin1Char('{')))
        return true;
    m_scenario = writtenScenario();
    QFile file(m_scenario);
    const QByteArray json = scenario.toUtf8();
    return (file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && file.flush())
        || fail(QStringLiteral("the scenario cannot be written: ") + file.errorString());
}

bool TestUnit::Private::launch(const QStringList &arguments)
{
    QString error;
    const QString program = UnitProcess::find(&error);
    if (program.isEmpty())
        return fail(error);
    const QDeadlineTimer deadline(patience());
    m_process.setLine(m_keeper.line());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // Not a pipe, which would have to be emptied all the time.
    m_process.setStandardOutputFile(m_folder.filePath(QStringLiteral("output")), QIODevice::Append);
    m_process.start(program, arguments);
    m_process.waitForStarted(patience());
    // Its stage is there when everything is published.
    while (!m_stage.connectTo(root(), deadline)) {
        if (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(Pause))
            return fail(ended());
        if (deadline.hasExpired()) {
            m_process.kill();
            m_process.waitForFinished();
            return fail(QStringLiteral("not everything is published within %1 ms").arg(patience()));
        }
    }
    m_isUp = true;
    QJsonObject answer;
    return look(QStringLiteral("daemons"), 0, &answer); // it has said that it is ready, too
}

bool TestUnit::Private::ask(const QJsonObject &request, QJsonObject *answer)
{
    const QByteArray line = QJsonDocument(request).toJson(QJsonDocument::Compact);
    const QString told = QString::fromUtf8(line) + QLatin1String(": ");
    if (!m_isUp)
        return fail(told + QStringLiteral("the daemons are not started"));
    const QDeadlineTimer deadline(patience());
    if (!m_stage.ask(root(), line, deadline, answer)) {
        if (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(int(deadline.remainingTime())))
            return fail(told + ended());
        return fail(told + QStringLiteral("morvek-hostd does not answer within %1 ms").arg(patience()));
    }
    return answer->value(QLatin1String("done")).toBool()
        || fail(told + answer->value(QLatin1String("reason")).toString());
}

bool TestUnit::Private::look(const QString &what, int since, QJsonObject *answer)
{
    return ask({{QStringLiteral("look"), what}, {QStringLiteral("since"), since}}, answer);
}

/*! Lets the event loop run until \a predicate is true; else \a what says what that would have been. */
bool TestUnit::Private::wait(const std::function<bool()> &predicate, const std::function<QString()> &what)
{
    const QDeadlineTimer deadline(m_timeout);
    QTimer pause;
    pause.start(Pause);
    while (!predicate()) {
        if (deadline.hasExpired())
            return fail(QStringLiteral("waited %1 ms for %2").arg(m_timeout).arg(what()));
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // Outside of a loop that runs by itself nothing else deletes what is to be deleted later.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

/*! The note of it, which is made unless there is one; null when it is no operation. */
std::shared_ptr<OperationEnd> TestUnit::Private::endOf(QObject *operation)
{
    if (!operation) {
        fail(QStringLiteral("there is no operation"));
        return nullptr;
    }
    const auto isOver = [](const std::shared_ptr<OperationEnd> &end) { return !end->operation(); };
    m_ends.erase(std::remove_if(m_ends.begin(), m_ends.end(), isOver), m_ends.end());
    for (const auto &end : m_ends) {
        if (end->operation() == operation)
            return end;
    }
    auto end = std::make_shared<OperationEnd>(operation);
    if (!end->isOperation()) {
        fail(nameOf(operation) + QStringLiteral(" is no operation"));
        return nullptr;
    }
    m_ends.push_back(end);
    return end;
}

TestUnit::TestUnit(QObject *parent)
    : QObject(parent),
      d(new Private)
{
    d->prepare();
}

TestUnit::~TestUnit()
{
    stop();
    roots.removeOne(d->m_place);
    nameRoot();
    if (roots.size() == 1)
        roots.clear();
}

QString TestUnit::root() const
{
    return d->root();
}

bool TestUnit::isHeld() const
{
    return d->m_isHeld;
}

void TestUnit::setHeld(bool held)
{
    d->m_isHeld = held;
    Q_EMIT optionsChanged();
}

double TestUnit::speed() const
{
    return d->m_speed;
}

void TestUnit::setSpeed(double factor)
{
    d->m_speed = factor;
    Q_EMIT optionsChanged();
}

int TestUnit::seed() const
{
    return d->m_seed;
}

void TestUnit::setSeed(int seed)
{
    d->m_seed = seed;
    Q_EMIT optionsChanged();
}

QStringList TestUnit::without() const
{
    return d->m_without;
}

void TestUnit::setWithout(const QStringList &daemons)
{
    d->m_without = daemons;
    Q_EMIT optionsChanged();
}

int TestUnit::timeout() const
{
    return d->m_timeout;
}

void TestUnit::setTimeout(int milliseconds)
{
    d->m_timeout = milliseconds;
    Q_EMIT optionsChanged();
}

bool TestUnit::start(const QString &scenario)
{
    if (isRunning())
        return d->fail(QStringLiteral("it runs already"));
    if (!d->m_obstacle.isEmpty())
        return d->fail(d->m_obstacle);
    return d->writeScenario(scenario) && d->launch(d->arguments() << QStringLiteral("--fresh"));
}

bool TestUnit::restart()
{
    if (d->m_scenario.isEmpty())
        return d->fail(QStringLiteral("it was never started"));
    return stop() && d->launch(d->arguments());
}

bool TestUnit::stop()
{
    d->m_stage.disconnect();
    if (!std::exchange(d->m_isUp, false))
        return true;
    if (isRunning()) {
        d->m_process.terminate();
        if (!d->m_process.waitForFinished(d->patience())) {
            kill();
            return d->fail(QStringLiteral("morvek-hostd does not end within %1 ms").arg(d->patience()));
        }
    }
    return (d->m_process.exitStatus() == QProcess::NormalExit && d->m_process.exitCode() == 0) || d->fail(d->ended());
}

void TestUnit::kill()
{
    d->m_isUp = false;
    d->m_stage.disconnect();
    d->m_process.kill();
    d->m_process.waitForFinished();
}

bool TestUnit::isRunning() const
{
    return d->m_process.state() != QProcess::NotRunning;
}

qint64 TestUnit::processId() const
{
    return d->m_process.processId();
}

bool TestUnit::act(const QString &what, const QVariantMap &keys)
{
    QJsonObject request = QJsonObject::fromVariantMap(keys);
    request.insert(QStringLiteral("act"), what);
    return act(request);
}

bool TestUnit::act(const QJsonObject &request)
{
    QJsonObject answer;
    return d->ask(request, &answer);
}

bool TestUnit::pass(int milliseconds)
{
    return act(QJsonObject {{QStringLiteral("pass"), milliseconds}});
}

QJsonValue TestUnit::look(const QString &what, int since)
{
    QJsonObject answer;
    d->look(what, since, &answer);
    return answer.value(what);
}

QVector<TestRequest> TestUnit::requests(int since)
{
    QVector<TestRequest> requests;
    const QJsonArray seen = look(QStringLiteral("requests"), since).toArray();
    for (const QJsonValue &request : seen)
        requests += requestOf(request.toObject());
    return requests;
}

QJsonValue TestUnit::published(const QString &path, const QString &name)
{
    return look(QStringLiteral("objects")).toObject().value(path).toObject().value(name);
}

QString TestUnit::daemonState(const QString &name)
{
    return look(QStringLiteral("daemons")).toObject().value(name).toString();
}

TestRequest TestUnit::waitForRequest(const QString &message, const QVariantMap &having, int since)
{
    QVariantMap wanted = having;
    wanted.insert(QStringLiteral("message"), message);
    TestRequest found;
    for (auto it = wanted.cbegin(); it != wanted.cend(); ++it) {
        if (TestRequest::staticMetaObject.indexOfProperty(it.key().toLatin1().constData()) == -1) {
            d->fail(QStringLiteral("a request has no \"%1\"").arg(it.key()));
            return found;
        }
    }
    QStringList others;
    const auto isThere = [&] {
        QJsonObject answer;
        if (!d->look(QStringLiteral("requests"), since, &answer))
            return true; // and never will be
        others.clear();
        const QJsonArray requests = answer.value(QLatin1String("requests")).toArray();
        for (const QJsonValue &value : requests) {
            const TestRequest request = requestOf(value.toObject());
            if (has(request, wanted)) {
                found = request;
                return true;
            }
            others += request.text;
        }
        return false;
    };
    d->wait(isThere, [&] {
        const QByteArray json = QJsonDocument(QJsonObject::fromVariantMap(wanted)).toJson(QJsonDocument::Compact);
        return QStringLiteral("a request with %1; there were: %2")
            .arg(QString::fromUtf8(json), others.isEmpty() ? QStringLiteral("none") : others.join(QLatin1String(", ")));
    });
    return found;
}

bool TestUnit::waitUntil(const std::function<bool()> &predicate, const QString &what)
{
    return d->wait(predicate, [&] { return what; });
}

bool TestUnit::waitForReady(QObject *service)
{
    if (!qobject_cast<ServiceBase *>(service) && !(service && service->property("availability").isValid()))
        return d->fail(QStringLiteral("%1 is neither a service nor a controller").arg(nameOf(service)));
    const QPointer<QObject> guarded = service;
    return waitUntil([&] { return guarded && isReady(guarded); }, nameOf(service) + QStringLiteral(" to be ready"));
}

void TestUnit::watch(QObject *operation)
{
    d->endOf(operation);
}

QString TestUnit::endOf(QObject *operation)
{
    const std::shared_ptr<OperationEnd> end = d->endOf(operation);
    const auto hasEnded = [&end] { return !end->text().isEmpty(); };
    if (!end || !waitUntil(hasEnded, QStringLiteral("the end of ") + nameOf(operation)))
        return QStringLiteral("open");
    return end->text();
}

QString TestUnit::errorString() const
{
    return d->m_error;
}

QString TestUnit::output() const
{
    return d->output();
}

} // namespace morvek
