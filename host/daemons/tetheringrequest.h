// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_TETHERINGREQUEST_H
#define MORVEK_HOSTD_TETHERINGREQUEST_H

#include "controlrequest.h"

#include <QtCore/QJsonObject>

namespace morvek {

/*! A request on the tethering daemon's control object, as far as it can be judged without knowing the hotspot. */
struct TetheringRequest : ControlRequest
{
    using ControlRequest::ControlRequest;

    enum Kind { Unknown, RetrieveProfile, UpdateProfile, Start, Stop };

    /*! Reads the client's update of the control object. What is wrong with it stands in refusal. */
    static TetheringRequest read(const ZopChangeset &changes);

    /*! One line that describes it. Neither this nor the refusal ever shows a passphrase. */
    QString toString() const;

    Kind kind = Unknown;
    QJsonObject profile; //!< of UpdateProfile and Start
};

} // namespace morvek

#endif
