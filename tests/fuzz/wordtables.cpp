// SPDX-License-Identifier: Apache-2.0
// Words that stand for something, and what a word that stands for nothing leaves alone. The tables are written out
// again.
#include "fuzz.h"
#include "hotspotproviderfixture.h"
#include "logcapture.h"
#include "wifiproviderzopparserutilities.h"
#include "zopinterfaceconnection_p.h"

using namespace morvek;

namespace {

int positionIn(const QString &text, std::initializer_list<const char *> words)
{
    int position = 0;
    for (const char *word : words) {
        if (text == QLatin1String(word))
            return position;
        ++position;
    }
    return -1;
}

void checkKeyManagement(const QString &text)
{
    const int protocols[] = {1, 4, 4, 8, 8};
    const int keyManagements[] = {1, 2, 4, 2, 4};
    QFlags<WifiSecurityProtocol> protocol(16);
    QFlags<WifiKeyManagementType> keyManagement(16);
    LogCapture log(3);
    WifiProviderZopParserUtilities::parseStatusKeyManagement(text, protocol, keyManagement);
    const int at = positionIn(text, {"NONE", "WPA-PSK", "WPA-EAP", "WPA2-PSK", "WPA2-EAP"});
    Fuzz::expectEqual(int(protocol), at == -1 ? 16 : protocols[at], "the protocol");
    Fuzz::expectEqual(int(keyManagement), at == -1 ? 16 : keyManagements[at], "the key management");
    const QString line = QLatin1String("warning 1300 Unrecognized Wi-Fi status key management value: \"")
        + Fuzz::printed(text) + QLatin1Char('"');
    Fuzz::expectEqual(log.take(), at == -1 ? QStringList {line} : QStringList(), "the log");
}

void checkCipher(const QString &text)
{
    const int ciphers[] = {1, 4, 2};
    QFlags<WifiCipher> cipher(16);
    LogCapture log(3);
    WifiProviderZopParserUtilities::parseStatusCipher(text, cipher);
    const int at = positionIn(text, {"NONE", "TKIP", "CCMP"});
    Fuzz::expectEqual(int(cipher), at == -1 ? 16 : ciphers[at], "the cipher");
    const QString line =
        QLatin1String("warning 1300 Unrecognized Wi-Fi status cipher: \"") + Fuzz::printed(text) + QLatin1Char('"');
    Fuzz::expectEqual(log.take(), at == -1 ? QStringList {line} : QStringList(), "the log");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = Fuzz::text(Fuzz::bytes(data, size));
    const int type = positionIn(text, {"", "wired", "wifi", "usb", "cellular", "bluetooth_dun", "vpn", "qv"});
    Fuzz::expectEqual(int(networkInterfaceStringToType(text)), qMax(type, 0), "the type of an interface");
    checkKeyManagement(text);
    checkCipher(text);

    ZopDouble::reset();
    const HotspotProviderZop provider;
    const int securities[] = {0, 1, 4, 8, 12};
    const int security = positionIn(text, {"?", "none", "wpa", "wpa2", "wpa_mixed"});
    Fuzz::expectEqual(int(provider.bandStringToEnumeration(text)), text == QLatin1String("5.0") ? 1 : 0, "the band");
    Fuzz::expectEqual(int(provider.protocolStringToEnumeration(text)), securities[qMax(security, 0)], "the security");
    return 0;
}
