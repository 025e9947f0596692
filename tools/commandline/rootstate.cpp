// SPDX-License-Identifier: Apache-2.0
#include "rootstate.h"

// Of the platforms, only the stand-in has a root that a person sets. The one place that asks which one this is.
#if __has_include(<zoproot.h>)
#include <zoproot.h>
#define MORVEK_HAS_ROOT
#endif

namespace morvek {

RootState RootState::look()
{
    RootState state;
#ifdef MORVEK_HAS_ROOT
    const ZopRoot root = ZopRoot::look();
    const QString sentence = root.reason + QLatin1String(": ") + root.mend;
    state.path = root.path;
    if (root.state == ZopRoot::Unusable)
        state.fault = sentence;
    else if (root.state == ZopRoot::Missing)
        state.lack = sentence;
#endif
    return state;
}

} // namespace morvek
