// SPDX-License-Identifier: Apache-2.0
// Scan results. The first byte says how many scans wait. Each of them gets one access point an element, read here by
// hand; with none that waits, one line is logged.
#include "fuzz.h"
#include "logcapture.h"
#include "wifiproviderfixture.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace morvek;

namespace {

struct Flags
{
    int protocols = 0;
    int keyManagement = 0;
    int ciphers = 0;
    bool ess = false;
    int errors = 0;

    void none(int protocol)
    {
        protocols |= protocol;
        keyManagement |= 1;
        ciphers |= 1;
    }
    void add(int *set, int bits)
    {
        *set |= bits;
        errors += bits == 0;
    }
};

/*! The parts between the dashes. */
QStringList partsOf(const QString &flag)
{
    QStringList parts {QString()};
    for (const QChar c : flag) {
        if (c == QLatin1Char('-'))
            parts.append(QString());
        else
            parts.last().append(c);
    }
    return parts;
}

int oneOf(const QString &text, std::initializer_list<std::pair<const char *, int>> words)
{
    for (const auto &word : words) {
        if (text == QLatin1String(word.first))
            return word.second;
    }
    return 0;
}

Flags readFlags(const QJsonArray &words)
{
    Flags flags;
    for (const QJsonValue &word : words) {
        const QString flag = word.toString();
        if (flag == QLatin1String("ESS")) {
            flags.ess = true;
        } else if (flag == QLatin1String("WPS")) {
            flags.none(0x10);
        } else if (flag == QLatin1String("WEP")) {
            flags.none(0x2);
        } else if (flag.left(3) == QLatin1String("WPA")) {
            const QStringList parts = partsOf(flag);
            if (parts.size() != 3) {
                ++flags.errors;
                continue;
            }
            flags.add(&flags.protocols, oneOf(parts.at(0), {{"WPA", 4}, {"WPA2", 8}}));
            flags.add(&flags.keyManagement, oneOf(parts.at(1), {{"PSK", 2}, {"EAP", 4}}));
            flags.add(&flags.ciphers, oneOf(parts.at(2), {{"TKIP", 4}, {"CCMP", 2}, {"TKIP+CCMP", 6}}));
        }
    }
    if (flags.protocols == 0)
        flags.none(1);
    return flags;
}

/*! The decimal number that a text of plain digits is; false when it is another text. */
bool readDigits(const QString &text, qint64 *number)
{
    *number = 0;
    const bool negative = text.startsWith(QLatin1Char('-'));
    for (const QChar c : text.mid(negative ? 1 : 0)) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
        *number = qMin(*number * 10 + c.digitValue(), Q_INT64_C(1) << 40);
    }
    if (negative)
        *number = -*number;
    return text.size() > (negative ? 1 : 0);
}

void checkNumbers(const WifiAccessPoint &accessPoint, const QJsonObject &element)
{
    const QJsonValue level = element.value(QLatin1String("signal_level"));
    const QJsonValue frequency = element.value(QLatin1String("frequency"));
    qint64 number = 0;
    if (!level.isString())
        Fuzz::expectEqual(accessPoint.rssi(), 0, "the level that is no text");
    else if (readDigits(level.toString(), &number))
        Fuzz::expectEqual(accessPoint.rssi(), number == int(number) ? int(number) : 0, "the level");
    if (!frequency.isString())
        Fuzz::expectEqual(accessPoint.frequency(), 0u, "the frequency that is no text");
    else if (readDigits(frequency.toString(), &number))
        Fuzz::expectEqual(accessPoint.frequency(), number == uint(number) ? uint(number) : 0u, "the frequency");
}

int checkAccessPoint(const WifiAccessPoint &accessPoint, const QJsonObject &element)
{
    const Flags flags = readFlags(element.value(QLatin1String("flags")).toArray());
    Fuzz::expectEqual(accessPoint.bssid(), element.value(QLatin1String("bssid")).toString(), "the bssid");
    Fuzz::expectEqual(accessPoint.ssid(), element.value(QLatin1String("ssid")).toString(), "the ssid");
    Fuzz::expectEqual(int(accessPoint.securityProtocols()), flags.protocols, "the protocols");
    Fuzz::expectEqual(int(accessPoint.keyManagementTypes()), flags.keyManagement, "the key management");
    Fuzz::expectEqual(int(accessPoint.ciphers()), flags.ciphers, "the ciphers");
    Fuzz::expectEqual(int(accessPoint.serviceSet()), flags.ess ? 1 : 2, "the service set");
    checkNumbers(accessPoint, element);
    return flags.errors;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::Bytes input(data, size);
    const int waiting = input.number() % 3;
    const QByteArray results = input.rest();
    // What has been through a text once.
    const QJsonArray elements = QJsonDocument::fromJson(Fuzz::text(results).toUtf8()).array();

    ZopDouble::reset();
    {
        const WifiProviderFixture fixture;
        std::vector<ScanPointer> scans;
        std::vector<std::unique_ptr<ScanEnd>> ends;
        for (int i = 0; i < waiting; ++i) {
            scans.push_back(fixture.scan());
            ends.push_back(std::make_unique<ScanEnd>(scans.back().get()));
        }
        LogCapture log(2 + 1);
        WifiDaemon::change("scan_results", raw(results));
        if (waiting == 0)
            Fuzz::expectEqual(log.take(), lines({"warning 1300 Scan results attribute value is not valid"}), "the log");
        for (int i = 0; i < waiting; ++i) {
            const QList<WifiAccessPoint> found = scans[size_t(i)]->results();
            Fuzz::expectEqual(found.size(), elements.size(), "how many access points");
            int errors = 0;
            for (int at = 0; at < found.size(); ++at)
                errors += checkAccessPoint(found.at(at), elements.at(at).toObject());
            if (i == 0)
                Fuzz::expectEqual(log.take().size(), errors, "how many lines are logged");
            Fuzz::expect(ends[size_t(i)]->text().startsWith(QLatin1String("success ")), "the scan succeeds");
            Fuzz::expect(!ends[size_t(i)]->text().contains(QLatin1String(" / ")) || !elements.isEmpty(), "only once");
        }
        Fuzz::expect(fixture.events->take().isEmpty(), "no state changes");
        WifiDaemon::change("scan_results", raw(results));
        for (int i = 0; i < waiting; ++i)
            Fuzz::expectEqual(scans[size_t(i)]->results().size(), elements.size(), "the scans have ended");
    }
    return 0;
}
