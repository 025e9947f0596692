// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_COMPLETION_H
#define MORVEK_COMPLETION_H

#include "candidates.h"

namespace morvek {

/*! What the last one of \a words, the arguments typed so far, may become; it may be empty. */
Candidates completions(const QStringList &words);

} // namespace morvek

#endif
