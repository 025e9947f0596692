// SPDX-License-Identifier: Apache-2.0
// Updates as bytes. Whether they can be read at all, and what they say, an own walk over the bytes tells; what was read
// is written again so that it says the same.
#include "zopwire.h"
#include "updatewalk.h"

using namespace morvek;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size);
    const UpdateWalk::Walk walk(input);
    ZopChangeset changes;
    const bool readable = decodeChangeset(input.constData(), input.size(), &changes);
    Fuzz::expectEqual(readable, walk.isWhole(), "whether the bytes are an update");
    if (!readable)
        return 0;
    Fuzz::expectEqual(UpdateWalk::of(changes), walk.update(), "what the update says");
    const QByteArray encoded = encodeChangeset(changes);
    const UpdateWalk::Walk written(encoded);
    Fuzz::expect(written.isWhole(), "an update is written");
    Fuzz::expectEqual(written.update(), walk.update(), "what is written");
    ZopChangeset again;
    Fuzz::expect(decodeChangeset(encoded.constData(), encoded.size(), &again), "what was written can be read");
    Fuzz::expect(again.assignments == changes.assignments, "the assignments come back");
    Fuzz::expect(again.removals == changes.removals, "the removals come back");
    return 0;
}
