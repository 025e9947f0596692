// SPDX-License-Identifier: Apache-2.0
#ifndef LEAST_ZOPCONTROLMESSAGE_H
#define LEAST_ZOPCONTROLMESSAGE_H

#include "zopvariant.h"

namespace morvek {

struct ZopControlMessage
{
    QString msg;
    QString res;
    ZopVariant dat;
    int id = 0;
    QString err;
    QString errmsg;
};

} // namespace morvek

#endif
