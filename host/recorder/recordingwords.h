// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDINGWORDS_H
#define MORVEK_RECORDINGWORDS_H

#include <QtCore/QString>

namespace morvek {

/*! The words of a recording's lines. */
namespace RecordingWords {

inline const QString Mark = QStringLiteral("recording"); // holds the version
inline const QString Start = QStringLiteral("start");
inline const QString Redacted = QStringLiteral("redacted");

inline const QString Time = QStringLiteral("t");
inline const QString Object = QStringLiteral("object");
inline const QString Present = QStringLiteral("present");
inline const QString Created = QStringLiteral("created");
inline const QString Set = QStringLiteral("set");
inline const QString Removed = QStringLiteral("removed");
inline const QString Gone = QStringLiteral("gone");

inline const QString Text = QStringLiteral("text");
inline const QString Base64 = QStringLiteral("base64");
inline const QString Encoding = QStringLiteral("encoding");

constexpr int Version = 1;

} // namespace RecordingWords

} // namespace morvek

#endif
