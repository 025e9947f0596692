// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ZOPROOT_H
#define MORVEK_ZOPROOT_H

#include "platformexport.h"

#include <QtCore/QString>

namespace morvek {

/*!
 * The root of all objects, as the environment names it: the stand-in keeps them below a folder. A unit's own platform
 * has neither that nor this header.
 */
struct MORVEK_PLATFORM_EXPORT ZopRoot
{
    enum State {
        Ready,
        Missing,  //!< the first daemon makes it
        Unusable, //!< by clients and daemons alike
    };

    /*! Looks at it as it is now, and opens nothing. */
    static ZopRoot look();

    State state;
    QString path;   //!< empty when the environment names none
    QString reason; //!< why it is not ready
    QString mend;   //!< what to do about that
};

} // namespace morvek

#endif
