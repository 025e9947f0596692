// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_ATTRIBUTEREADER_H
#define MORVEK_HOSTD_ATTRIBUTEREADER_H

#include "zopvariant.h"

namespace morvek {

class JsonNode;

/*! The attribute's value that \a node stands for. */
ZopVariant readAttributeValue(const JsonNode &node);

} // namespace morvek

#endif
