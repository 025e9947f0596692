// SPDX-License-Identifier: Apache-2.0
#include "faultreader.h"

#include "attributereader.h"
#include "hotspotreader.h"
#include "jsonnode.h"
#include "scenarioreader.h"
#include "wifireader.h"
#include "wifitext.h"
#include "wirenames.h"

#include <algorithm>
#include <limits>

namespace morvek {

namespace {

constexpr int LargestNumber = std::numeric_limits<int>::max();

const auto BackAfterKey = QLatin1String("back_after");
const auto DelayKey = QLatin1String("delay");
const auto FaultKey = QLatin1String("fault");
const auto InterfaceKey = QLatin1String("interface");
const auto MessageKey = QLatin1String("message");
const auto PerformsKey = QLatin1String("performs");
const auto SkipKey = QLatin1String("skip");
const auto TimesKey = QLatin1String("times");

// It is answered with what every success is answered with.
const auto IgnoreWord = QLatin1String("ignore");

struct FaultWord
{
    QLatin1String word;
    Fault::Kind kind;
    QStringList keys;
};

const QVector<FaultWord> &knownFaults()
{
    static const QVector<FaultWord> words {
        {QLatin1String("refuse"), Fault::Refuse, {Wire::Err, Wire::ErrMsg}},
        {QLatin1String("no-reply"), Fault::NoReply, {PerformsKey}},
        {QLatin1String("late"), Fault::Late, {DelayKey}},
        {QLatin1String("double"), Fault::Double, {}},
        {QLatin1String("die"), Fault::Die, {BackAfterKey}},
        {QLatin1String("answer"), Fault::Answer, {Wire::Res, Wire::Err, Wire::ErrMsg, Wire::Dat}},
        {IgnoreWord, Fault::Answer, {}},
    };
    return words;
}

FaultWord readKind(const JsonNode &node)
{
    const QString word = node.text();
    QStringList known;
    for (const FaultWord &one : knownFaults()) {
        if (word == one.word)
            return one;
        known += one.word;
    }
    node.fail(QStringLiteral("no fault \"%1\" (known: %2)").arg(word, known.join(QLatin1String(", "))));
    return knownFaults().first();
}

/*! Notes a message that nobody knows, and what its requests never name. */
void readSubject(const JsonNode &node, const Scenario &scenario, Fault *fault)
{
    const QStringList networking {Wire::NetConnected, Wire::NetDisconnected};
    const QStringList wifi {Wire::WifiPower, Wire::Scan, Wire::WnetNew, Wire::WnetSelect, Wire::WnetDisableAll};
    const QStringList tethering {Wire::RetrieveProfile, Wire::UpdateProfile, Wire::Start, Wire::Stop};
    if (node.has(MessageKey)) {
        const JsonNode message = node.member(MessageKey);
        fault->message = message.text();
        fault->service = wifi.contains(fault->message) ? Service::Wifi
            : tethering.contains(fault->message)       ? Service::Tethering
                                                       : Service::Networking;
        if (fault->service == Service::Wifi)
            expectWifi(message, scenario);
        else if (fault->service == Service::Tethering)
            expectHotspot(message, scenario);
        else if (!networking.contains(fault->message))
            message.fail(QStringLiteral("no message \"%1\" (known: %2)")
                             .arg(fault->message, (networking + wifi + tethering).join(QLatin1String(", "))));
    }
    if (node.has(InterfaceKey)) {
        fault->service = Service::Networking;
        fault->interface = readInterfaceName(node.member(InterfaceKey), scenario);
        if (node.has(Wire::Ssid) || (node.has(MessageKey) && !networking.contains(fault->message)))
            node.member(InterfaceKey)
                .fail(QStringLiteral("only %1 name an interface").arg(networking.join(QLatin1String(" and "))));
    }
    if (node.has(Wire::Ssid)) {
        const JsonNode ssid = node.member(Wire::Ssid);
        expectWifi(ssid, scenario);
        fault->service = Service::Wifi;
        fault->ssid = ssid.text();
        if (fault->ssid.isEmpty() || !WifiText::isSsid(fault->ssid))
            ssid.fail(QStringLiteral("must have 1 to 32 bytes"));
        if (std::none_of(scenario.wifi.accessPoints.begin(), scenario.wifi.accessPoints.end(),
                         [fault](const ScenarioAccessPoint &one) { return one.ssid == fault->ssid; }))
            ssid.fail(QStringLiteral("no access point has this name"));
        if (node.has(MessageKey) && fault->message != Wire::WnetNew)
            ssid.fail(QStringLiteral("only %1 names a network").arg(Wire::WnetNew));
    }
}

} // namespace

QStringList faultWords()
{
    QStringList words;
    for (const FaultWord &one : knownFaults())
        words += one.word;
    return words;
}

Fault readFault(const JsonNode &node, const Scenario &scenario)
{
    const FaultWord word = readKind(node.member(FaultKey));
    node.expectObject(QStringList {FaultKey, MessageKey, InterfaceKey, Wire::Ssid, SkipKey, TimesKey} + word.keys);
    Fault fault;
    fault.kind = word.kind;
    fault.word = word.word;
    readSubject(node, scenario, &fault);
    fault.skip = node.numberOr(SkipKey, 0, LargestNumber, 0);
    fault.times = node.numberOr(TimesKey, 1, LargestNumber, -1);
    if (fault.kind == Fault::Refuse) {
        // "0" would be a success to the client.
        fault.code = node.member(Wire::Err).number(1, LargestNumber);
        fault.text = node.textOr(Wire::ErrMsg, QString());
    }
    for (const QString &name : word.keys) {
        if (fault.kind == Fault::Answer && node.has(name))
            fault.reply.insert(name, readAttributeValue(node.member(name)));
    }
    if (word.word == IgnoreWord)
        fault.reply.insert(Wire::Err, Wire::NoError);
    if (fault.kind == Fault::Late)
        fault.delay = node.member(DelayKey).number(0, LongestTime);
    fault.performs = node.flagOr(PerformsKey, false);
    fault.backAfter = node.numberOr(BackAfterKey, 0, LongestTime, -1);
    return fault;
}

QVector<Fault> readFaults(const JsonNode &node, const Scenario &scenario)
{
    QVector<Fault> faults;
    const QVector<JsonNode> items = node.items();
    for (const JsonNode &item : items)
        faults += readFault(item, scenario);
    return faults;
}

} // namespace morvek
