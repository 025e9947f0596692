// SPDX-License-Identifier: Apache-2.0
#include "commandlines.h"
#include "processusage.h"
#include "updatecheck.h"
#include "zopcontrolcommand.h"
#include "zopobject.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>
#include <QtCore/QTimer>

#include <map>
#include <random>

/*
 * A process that reads, writes, serves and asks, in the middle of a storm:
 *
 *   ping TEXT                             "pong TEXT", from the event loop
 *   read PATH...                          "reading N": follows state objects and judges every update
 *   report                                "report ..." of each object that is read
 *   write WRITER FILE PAUSE SIZE PATH...  "writing": updates to objects by turns, each of up to SIZE bytes, with up to
 *                                         PAUSE microseconds between them; what was begun and done stands in FILE
 *   hush                                  "hushed FAILED"; no more updates
 *   flood PATH NAME COUNT                 "flooded N": so many updates of one attribute at once
 *   set PATH NAME BASE64                  "set" or "not set"
 *   serve PATH                            "serving" or "not serving"
 *   ask PATH INTERVAL                     "asking": requests of both kinds, one each INTERVAL milliseconds
 *   still                                 "still": no more requests
 *   asked                                 "asked STARTED ENDED OPEN WRONG"
 *   stats                                 "stats HEAP DESCRIPTORS"
 */

using namespace morvek;

namespace {

ZopVariant textValue(const QString &text)
{
    return ZopVariant(text);
}

class Asker : public QObject
{
public:
    Asker(const QString &path, int interval)
        : m_object(path, ZopObject::ReadWrite, false)
    {
        connect(&m_object, &ZopObject::attributesChanged, this, &Asker::hear);
        connect(&m_timer, &QTimer::timeout, this, &Asker::ask);
        m_timer.start(interval);
    }

    bool isValid() const { return m_object.isValid(); }
    void hush() { m_timer.stop(); }
    QString report() const
    {
        return QStringLiteral("%1 %2 %3 %4").arg(m_started).arg(m_ended).arg(m_open.size()).arg(m_wrong);
    }

private:
    void ask()
    {
        const int number = ++m_started;
        m_open.insert(number, true);
        if (number % 2)
            command(number);
        else
            write(number);
    }

    void command(int number)
    {
        auto *made = new ZopControlCommand(&m_object, this);
        made->setMessage(QStringLiteral("echo"));
        made->setDat(ZopVariant(number));
        connect(made, &ZopControlCommand::finished, this, [this, made, number] {
            if (!made->hasError() && made->datResponse().toInt() != number)
                ++m_wrong;
            end(number);
            made->deleteLater();
        });
        made->start();
    }

    void write(int number)
    {
        ZopChangeset request;
        request.assignments = {{QStringLiteral("msg"), textValue(QStringLiteral("note"))},
                               {QStringLiteral("id"), ZopVariant(Own + number)},
                               {QStringLiteral("dat"), ZopVariant(number)}};
        if (!m_object.setAttributes(request))
            end(number);
    }

    void hear(const ZopChangeset &reply)
    {
        const auto value = [&reply](const char *name) { return reply.assignments.value(QLatin1String(name)); };
        if (value("res").toString() != QLatin1String("note"))
            return;
        const int number = value("id").toInt() - Own;
        if (value("err").toString() == QLatin1String("0") && value("dat").toInt() != number)
            ++m_wrong;
        end(number);
    }

    void end(int number)
    {
        if (m_open.remove(number) == 1)
            ++m_ended;
        else
            ++m_wrong; // once more, or never asked
    }

    static constexpr int Own = 1000000000; // beyond what commands are numbered with
    ZopObject m_object;
    QTimer m_timer;
    QHash<int, bool> m_open;
    int m_started = 0;
    int m_ended = 0;
    int m_wrong = 0;
};

class Writer : public QObject
{
public:
    Writer(int number, const QString &file, int pause, int size, const QStringList &paths)
        : m_number(number),
          m_pause(pause),
          m_size(size),
          m_random(quint32(number)),
          m_tally(file)
    {
        for (const QString &path : paths)
            m_objects.append(new ZopObject(path, ZopObject::ReadWrite, false, this));
        m_timer.setSingleShot(true);
        connect(&m_timer, &QTimer::timeout, this, &Writer::writeSome);
        m_timer.start(0);
    }

    void hush() { m_timer.stop(); }
    int failed() const { return m_failed; }

private:
    void writeSome()
    {
        for (int i = 0; i < 8; ++i) {
            const int object = int(m_random() % uint(m_objects.size()));
            const ZopChangeset update =
                UpdateCheck::make(m_number, int(m_tally.done(m_number, object)) + 1, int(m_random() % uint(m_size)));
            m_tally.begin(m_number, object);
            if (m_objects[object]->setAttributes(update))
                m_tally.end(m_number, object);
            else
                ++m_failed;
        }
        m_timer.start(m_pause ? int(m_random() % uint(m_pause)) / 1000 : 0);
    }

    int m_number;
    int m_pause;
    int m_size;
    std::mt19937 m_random;
    Tally m_tally;
    QVector<ZopObject *> m_objects;
    QTimer m_timer;
    int m_failed = 0;
};

class StormPeer
{
public:
    StormPeer()
        : m_lines([this](const QStringList &words) { run(words); })
    {
    }

private:
    void run(const QStringList &words)
    {
        const QString command = words.at(0);
        if (command == QLatin1String("ping"))
            CommandLines::say(QStringLiteral("pong ") + words.at(1));
        else if (command == QLatin1String("read"))
            read(words.mid(1));
        else if (command == QLatin1String("report"))
            report();
        else if (command == QLatin1String("write"))
            write(words);
        else if (command == QLatin1String("hush"))
            hush();
        else if (command == QLatin1String("flood"))
            flood(words.at(1), words.at(2), words.at(3).toInt());
        else if (command == QLatin1String("set"))
            set(words.at(1), words.at(2), QByteArray::fromBase64(words.at(3).toLatin1()));
        else if (command == QLatin1String("serve"))
            serve(words.at(1));
        else if (command == QLatin1String("ask"))
            ask(words.at(1), words.at(2).toInt());
        else if (command == QLatin1String("still"))
            still();
        else if (command == QLatin1String("asked"))
            CommandLines::say(QStringLiteral("asked ") + m_asker->report());
        else if (command == QLatin1String("stats"))
            CommandLines::say(QStringLiteral("stats %1 %2")
                                  .arg(heapInUse())
                                  .arg(openDescriptors(QCoreApplication::applicationPid())));
    }

    void read(const QStringList &paths)
    {
        for (const QString &path : paths) {
            auto check = std::make_unique<UpdateCheck>(path);
            if (check->isValid())
                m_checks.push_back(std::move(check));
        }
        CommandLines::say(QStringLiteral("reading %1").arg(m_checks.size()));
    }

    void report()
    {
        QStringList texts;
        for (const auto &check : m_checks)
            texts << check->report();
        CommandLines::say(QStringLiteral("report ") + texts.join(QLatin1Char('|')));
    }

    void write(const QStringList &words)
    {
        m_writer = std::make_unique<Writer>(words.at(1).toInt(), words.at(2), words.at(3).toInt(), words.at(4).toInt(),
                                            words.mid(5));
        CommandLines::say(QStringLiteral("writing"));
    }

    void hush()
    {
        m_writer->hush();
        CommandLines::say(QStringLiteral("hushed %1").arg(m_writer->failed()));
    }

    static void flood(const QString &path, const QString &name, int count)
    {
        ZopObject object(path, ZopObject::ReadWrite, false);
        int done = 0;
        for (int n = 1; n <= count; ++n) {
            ZopChangeset changes;
            changes.assignments.insert(name, ZopVariant(n));
            if (name == QLatin1String("msg"))
                changes.assignments.insert(QStringLiteral("id"), ZopVariant(n));
            done += object.setAttributes(changes) ? 1 : 0;
        }
        CommandLines::say(QStringLiteral("flooded %1").arg(done));
    }

    static void set(const QString &path, const QString &name, const QByteArray &value)
    {
        ZopObject object(path, ZopObject::ReadWrite, false);
        ZopChangeset changes;
        changes.assignments.insert(name, ZopVariant(value, value.size() % 2 ? "json" : "text"));
        CommandLines::say(object.setAttributes(changes) ? QStringLiteral("set") : QStringLiteral("not set"));
    }

    void serve(const QString &path)
    {
        m_server = std::make_unique<ZopObject>(path, ZopObject::Publish, true);
        QObject::connect(m_server.get(), &ZopObject::attributesChanged, m_server.get(),
                         [this](const ZopChangeset &request) { answer(request); });
        CommandLines::say(m_server->isValid() ? QStringLiteral("serving")
                                              : QStringLiteral("not serving ") + m_server->errorString());
    }

    void answer(const ZopChangeset &request)
    {
        ZopChangeset reply = request;
        reply.assignments.insert(QStringLiteral("res"), reply.assignments.take(QStringLiteral("msg")));
        reply.assignments.insert(QStringLiteral("err"), ZopVariant(QStringLiteral("0")));
        // Some at once, some later, so that a death always finds some open.
        QTimer::singleShot(int(m_random() % 4), m_server.get(), [this, reply] { m_server->setAttributes(reply); });
    }

    void ask(const QString &path, int interval)
    {
        m_asker = std::make_unique<Asker>(path, interval);
        CommandLines::say(m_asker->isValid() ? QStringLiteral("asking") : QStringLiteral("not asking"));
    }

    void still()
    {
        m_asker->hush();
        CommandLines::say(QStringLiteral("still"));
    }

    std::mt19937 m_random;
    std::vector<std::unique_ptr<UpdateCheck>> m_checks;
    std::unique_ptr<Writer> m_writer;
    std::unique_ptr<ZopObject> m_server;
    std::unique_ptr<Asker> m_asker;
    CommandLines m_lines;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const StormPeer peer;
    return QCoreApplication::exec();
}
