// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_JSONTEXT_P_H
#define MORVEK_JSONTEXT_P_H

class QString;

namespace morvek {

/*! Appends \a text to \a json as a string, in quotes and with escapes as QJsonDocument writes them. */
void appendJsonString(const QString &text, QString *json);

} // namespace morvek

#endif
