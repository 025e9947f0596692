// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPCONTROLMESSAGE_H
#define MORVEK_ZOPCONTROLMESSAGE_H

#include "zopvariant.h"

namespace morvek {

/*! One message of a control object, request or reply; each field is named after its attribute. */
struct ZopControlMessage
{
    QString msg;    //!< name of the request
    QString res;    //!< in a reply: name of the request that it answers
    ZopVariant dat; //!< payload
    int id = 0;     //!< chosen by the client, unique among its pending requests
    QString err;    //!< in a reply: error code; daemons leave it empty, or "0", on success
    QString errmsg; //!< in a reply: error text
};

} // namespace morvek

#endif
