// SPDX-License-Identifier: Apache-2.0
#include "livelyworld.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

const QString Cell = QStringLiteral("cell0");
const QString Wire = QStringLiteral("eth0");

class Timeline
{
public:
    QJsonArray events;

    void add(int at, const char *event, QJsonObject keys = {})
    {
        keys.insert(QStringLiteral("at"), at);
        keys.insert(QStringLiteral("event"), QLatin1String(event));
        events.append(keys);
    }

    void toggleCell(int at)
    {
        m_hasCell = !m_hasCell;
        add(at, m_hasCell ? "appear" : "vanish", {{QStringLiteral("interface"), Cell}});
    }

    void toggleLink(int at)
    {
        m_hasLink = !m_hasLink;
        add(at, m_hasLink ? "link-regained" : "link-lost", {{QStringLiteral("interface"), Wire}});
    }

    void restore(int at)
    {
        if (!m_hasCell)
            toggleCell(at);
        if (!m_hasLink)
            toggleLink(at);
        add(at, "default-follows");
    }

private:
    bool m_hasCell = true;
    bool m_hasLink = true;
};

/*! What happens at \a at. */
void addEvent(Timeline *timeline, int at, std::mt19937 *random)
{
    switch ((*random)() % 8) {
    case 0:
        timeline->toggleCell(at);
        break;
    case 1:
        timeline->toggleLink(at);
        break;
    case 2:
        timeline->add(at, "hotspot-starts");
        break;
    case 3:
        timeline->add(at, "hotspot-stops");
        break;
    case 4:
        timeline->add(at, "default", {{QStringLiteral("interface"), (*random)() % 2 ? Wire : QString()}});
        break;
    case 5:
        timeline->add(at, "default-follows");
        break;
    case 6:
        timeline->add(at, "signal",
                      {{QStringLiteral("bssid"), QStringLiteral("02:00:00:00:20:01")},
                       {QStringLiteral("signal_level"), -40 - int((*random)() % 50)}});
        break;
    default:
        timeline->add(at, "dropped");
    }
}

} // namespace

bool writeLivelyWorld(const QString &file, const QVector<int> &lengths, int pause, int step, std::mt19937 *random)
{
    QFile usual(QStringLiteral(STORM_SCENARIO));
    QFile lively(file);
    if (!usual.open(QIODevice::ReadOnly) || !lively.open(QIODevice::WriteOnly))
        return false;
    QJsonObject scenario = QJsonDocument::fromJson(usual.readAll()).object();
    Timeline timeline;
    int begin = 0;
    for (const int length : lengths) {
        begin += pause;
        for (int at = begin; at < begin + length; at += step)
            addEvent(&timeline, at, random);
        begin += length;
        timeline.restore(begin);
    }
    scenario.insert(QStringLiteral("timeline"), timeline.events);
    return lively.write(QJsonDocument(scenario).toJson()) > 0;
}
