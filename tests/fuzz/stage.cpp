// SPDX-License-Identifier: Apache-2.0
// Lines for the stage. Each is answered by one line: done, or a reason. What is done changes a world whose time is
// held: what only changes to and fro cannot be done twice, and a fault that is done is seen until the faults end.
#include "stage.h"
#include "eventlog.h"
#include "eventplayer.h"
#include "faultplan.h"
#include "fuzz.h"
#include "requestbook.h"
#include "scenariofiles.h"
#include "simulatedhotspot.h"
#include "simulatednetwork.h"
#include "simulatedradio.h"
#include "world.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>

using namespace morvek;
using Fuzz::expect;

namespace {

const Scenario &headunit()
{
    static const Scenario scenario = [] {
        Scenario loaded;
        QString error;
        expect(ScenarioFiles::load(QStringLiteral("headunit"), &loaded, &error), "the scenario is there");
        return loaded;
    }();
    return scenario;
}

/*! A world without daemons: they only publish it. */
struct Played
{
    Played()
        : network(headunit(), &world, &pace),
          radio(headunit(), &world, &network, &pace),
          hotspot(headunit(), &world, &pace),
          player({&world, &network, &radio, &hotspot, &faults, {}}, &log),
          stage(headunit(), {&player, &faults, &pace, &requests, &log, {}, {}})
    {
        pace.hold();
    }

    QJsonObject answer(const QByteArray &line)
    {
        const QByteArray answer = stage.answer(line);
        expect(!answer.contains('\n'), "an answer is one line");
        const QJsonObject object = QJsonDocument::fromJson(answer).object();
        expect(object.value(QLatin1String("done")).isBool(), "an answer says whether it is done");
        const bool isDone = object.value(QLatin1String("done")).toBool();
        expect(isDone == object.value(QLatin1String("reason")).toString().isEmpty(), "what is not done has a reason");
        expect(isDone || object.size() == 2, "and nothing else");
        return object;
    }

    EventLog log {false};
    Pace pace {1, 1};
    World world;
    FaultPlan faults;
    RequestBook requests;
    SimulatedNetwork network;
    SimulatedRadio radio;
    SimulatedHotspot hotspot;
    EventPlayer player;
    Stage stage;
};

bool isDone(const QJsonObject &answer)
{
    return answer.value(QLatin1String("done")).toBool();
}

bool changesToAndFro(const QString &event)
{
    static const QStringList events {
        QStringLiteral("vanish"),    QStringLiteral("appear"),         QStringLiteral("link-lost"),
        QStringLiteral("in-range"),  QStringLiteral("link-regained"),  QStringLiteral("out-of-range"),
        QStringLiteral("wrong-key"), QStringLiteral("hotspot-starts"), QStringLiteral("hotspot-stops"),
        QStringLiteral("radio-on"),  QStringLiteral("radio-off")};
    return events.contains(event);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int none = 0;
    static QCoreApplication application(none, nullptr);
    Played played;
    const QList<QByteArray> lines = Fuzz::bytes(data, size).split('\n');
    for (int i = 0; i < lines.size() && i < 64; ++i) {
        const QJsonObject request = QJsonDocument::fromJson(lines.at(i)).object();
        const bool isFault = request.contains(QLatin1String("fault"));
        if (!isDone(played.answer(lines.at(i))) || request.contains(QLatin1String("look")))
            continue;
        if (!isFault && changesToAndFro(request.value(QLatin1String("event")).toString()))
            expect(!isDone(played.answer(lines.at(i))), "what has happened cannot happen again");
        const int faults = played.answer(R"({"look":"faults"})").value(QLatin1String("faults")).toArray().size();
        expect(!isFault || faults > 0, "a fault waits for its requests");
        expect(request.value(QLatin1String("event")) != QLatin1String("faults-end") || isFault || faults == 0,
               "no fault is left");
    }
    return 0;
}
