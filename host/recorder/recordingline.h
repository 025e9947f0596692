// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDINGLINE_H
#define MORVEK_RECORDINGLINE_H

#include "recordedevent.h"

#include <QtCore/QDateTime>

namespace morvek {

/*! The lines of a recording, each with its end. */
namespace RecordingLine {

QByteArray first(const QDateTime &start, bool isRedacted);
QByteArray of(const RecordedEvent &event);

} // namespace RecordingLine

} // namespace morvek

#endif
