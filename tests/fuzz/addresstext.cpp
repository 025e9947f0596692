// SPDX-License-Identifier: Apache-2.0
// Addresses as the daemons read them, beside a reading by hand.
#include "addresstext.h"

#include "profilecheck.h"

using namespace morvek;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = Fuzz::text(Fuzz::bytes(data, size));
    quint32 expected = 0;
    quint32 actual = 0;
    const bool plain = AddressSearch::readPlain(text, &expected);
    Fuzz::expectEqual(AddressText::isIpv4(text, &actual), plain, "whether it is an address");
    if (plain)
        Fuzz::expectEqual(actual, expected, "the address");
    Fuzz::expectEqual(AddressText::isHostAddress(text), ProfileCheck::isHost(text, &expected),
                      "whether it is a host's");
    Fuzz::expectEqual(AddressText::isNetmask(text), ProfileCheck::isNetmask(text, &expected),
                      "whether it is a netmask");
    if (!text.contains(QLatin1Char(':'))) {
        Fuzz::expectEqual(AddressText::isGateway(text), plain, "whether it is a gateway");
        const QString whole = AddressSearch::withNetmask(text);
        const bool pair = AddressSearch::readPlain(AddressSearch::part(whole, 0), &expected)
            && ProfileCheck::isNetmask(AddressSearch::part(whole, 1), &expected) && whole.count(QLatin1Char('/')) == 1;
        QString published;
        Fuzz::expectEqual(AddressText::isInterfaceAddress(text, &published), pair,
                          "whether it is an address with its netmask");
        if (pair)
            Fuzz::expectEqual(published, whole, "how it is published");
    }
    return 0;
}
