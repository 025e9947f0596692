// SPDX-License-Identifier: Apache-2.0
// Interfaces that come and go, stand on each other, get priorities and are preferred. A script: "add NAME PARENT",
// "remove NAME", "ghost NAME" (announced, but not there), "parent NAME PARENT", "default NAME", "priority JSON". A
// model of the list, the links, the signals and the warnings stands beside.
#include "fuzz.h"
#include "logcapture.h"
#include "networkingdaemon.h"
#include "networkinterfaceproviderzop_p.h"
#include "providerevents.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

using namespace morvek;

namespace {

struct Known
{
    QString parent;
    int priority = -1;
    int announced = 1; //!< how often: each leaves a reader of the object
};

class Play
{
public:
    Play()
    {
        QObject::connect(&m_provider, &NetworkInterfaceProvider::interfaceRemoved,
                         [this](const NetworkInterfaceData &removed) {
                             const QList<NetworkInterfaceData> left = m_provider.interfaces();
                             for (const NetworkInterfaceData &record : left)
                                 Fuzz::expect(record.parent != &removed, "nothing stands on what is gone");
                         });
    }

    void line(const Fuzz::Line &line)
    {
        Fuzz::Line rest = line;
        const QString name = Fuzz::text(rest.next());
        if (line.word == "add")
            add(name, Fuzz::text(rest.rest));
        else if (line.word == "remove")
            remove(name);
        else if (line.word == "ghost" && !m_known.contains(name))
            ZopDouble::announce(NetworkingDaemon::interfaces(), name);
        else if (line.word == "parent" && m_known.contains(name))
            setParent(name, Fuzz::text(rest.rest));
        else if (line.word == "default")
            prefer(Fuzz::text(line.rest));
        else if (line.word == "priority")
            rank(line.rest);
        check();
    }

private:
    void expectEvents(const QString &event, int times = 1)
    {
        for (int i = 0; i < times; ++i)
            m_expected.append(event);
    }

    void add(const QString &name, const QString &parent)
    {
        if (name.isEmpty())
            return;
        const int announced = m_known.value(name, {QString(), -1, 0}).announced;
        expectEvents(QLatin1String("changed ") + name, announced); // its object is published once more
        expectEvents(QLatin1String("added ") + name);
        m_known.insert(name, {parent, -1, announced + 1});
        ZopDouble::add(NetworkingDaemon::interfaces(), name,
                       {{QStringLiteral("parent_interface"), ZopVariant(parent)}});
    }

    void remove(const QString &name)
    {
        if (m_known.remove(name))
            expectEvents(QLatin1String("removed ") + name);
        if (m_preferred == name)
            m_preferred.clear();
        ZopDouble::remove(NetworkingDaemon::interfaces(), name);
    }

    void setParent(const QString &name, const QString &parent)
    {
        m_known[name].parent = parent;
        expectEvents(QLatin1String("changed ") + name, m_known[name].announced);
        ZopDouble::publish(NetworkingDaemon::interfacePath(name),
                           {{QStringLiteral("parent_interface"), ZopVariant(parent)}});
    }

    void prefer(const QString &name)
    {
        m_preferred = m_known.contains(name) ? name : QString();
        expectEvents(QLatin1String("preferred ") + (m_preferred.isEmpty() ? QStringLiteral("-") : name));
        if (m_preferred.isEmpty() && !name.isEmpty())
            m_lines.append(QLatin1String("warning 1300 Preferred network interface changed to \"") + Fuzz::printed(name)
                           + QLatin1String("\" which is not in the list of known interfaces."));
        NetworkingDaemon::changeStatus("default_interface", ZopVariant(name));
    }

    void rank(const QByteArray &json)
    {
        const QJsonArray names = QJsonDocument::fromJson(json).array();
        for (int i = 0; i < names.size(); ++i) {
            const QString name = names.at(i).toString();
            if (!m_known.contains(name))
                continue;
            m_known[name].priority = i + 1;
            expectEvents(QLatin1String("changed ") + name);
        }
        NetworkingDaemon::changeStatus("priority", ZopVariant(json, "json"));
    }

    void check()
    {
        Fuzz::expectEqual(m_events.take(), m_expected, "the signals");
        Fuzz::expectEqual(m_log.take(), m_lines, "the log");
        m_expected.clear();
        m_lines.clear();
        const QList<NetworkInterfaceData> records = m_provider.interfaces();
        Fuzz::expectEqual(records.size(), m_known.size(), "how many interfaces");
        auto known = m_known.cbegin();
        for (const NetworkInterfaceData &record : records) {
            const bool linked = m_known.contains(known->parent); // an interface without a parent names none
            Fuzz::expectEqual(record.name, known.key(), "the name");
            Fuzz::expectEqual(record.priority, known->priority, "the priority");
            Fuzz::expectEqual(record.isVirtual, !known->parent.isEmpty(), "whether it is virtual");
            Fuzz::expectEqual(record.parent ? record.parent->name : QString(), linked ? known->parent : QString(),
                              "the parent");
            for (const NetworkInterfaceData &other : records)
                Fuzz::expectEqual(record == other, record.name == other.name, "whether two are the same");
            ++known;
        }
        Fuzz::expectEqual(m_provider.preferredInterface().name, m_preferred, "the preferred interface");
    }

    LogCapture m_log {3};
    NetworkInterfaceProviderZop m_provider;
    ProviderEvents m_events {m_provider};
    QMap<QString, Known> m_known;
    QString m_preferred;
    QStringList m_expected;
    QStringList m_lines;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ZopDouble::reset();
    NetworkingDaemon::start();
    Play play;
    const QList<Fuzz::Line> lines = Fuzz::script(data, size, 40);
    for (const Fuzz::Line &line : lines)
        play.line(line);
    return 0;
}
