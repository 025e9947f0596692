// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_ROOTSTATE_H
#define MORVEK_ROOTSTATE_H

#include <QtCore/QString>

namespace morvek {

/*! What the platform tells of the root of all objects. A unit's own platform may know of none: then all is empty. */
struct RootState
{
    QString path;
    QString fault; //!< why nothing can be opened there, and what mends that
    QString lack;  //!< the same when only nothing is there yet: a daemon that starts makes it

    static RootState look();
};

} // namespace morvek

#endif
