// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_RECORDING_H
#define MORVEK_HOSTD_RECORDING_H

#include "recordedevent.h"

#include <QtCore/QByteArray>
#include <QtCore/QVector>

namespace morvek {

/*! What a recording tells, in its order. */
struct Recording
{
    QVector<RecordedEvent> events;

    /*! False when \a fileName cannot be read or is no recording; \a error then names it, and the line. */
    static bool load(const QString &fileName, Recording *recording, QString *error);
    /*! The same of \a lines; \a error names the line. */
    static bool read(const QByteArray &lines, Recording *recording, QString *error);
};

} // namespace morvek

#endif
