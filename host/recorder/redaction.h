// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_REDACTION_H
#define MORVEK_REDACTION_H

#include "addressredaction.h"
#include "recordedevent.h"

#include <QtCore/QJsonValue>

namespace morvek {

/*!
 * Makes of what happened something that can be given away. Names of networks, hardware addresses and IP addresses are
 * replaced, the same ones always by the same ones, and so are interfaces' names that are no usual ones. Of all else
 * only what is known to be no name stays: texts that are not understood become "?", objects and attributes that are
 * none of the three services' are left out.
 */
class Redaction
{
public:
    /*! False when nothing of \a event is left. */
    bool apply(RecordedEvent *event);

private:
    QString object(const QString &path);
    QByteArray value(const QString &attribute, const QString &text);
    QByteArray list(const QString &text, QString (Redaction::*replace)(const QString &));
    QByteArray scanResults(const QString &text);
    QByteArray wifiStatus(const QString &text);
    QJsonValue accessPoint(const QJsonValue &value);
    QString event(const QString &text);
    QString eventWord(const QString &word, bool isValue);
    QString address(const QString &text);
    QString interface(const QString &name);
    QString macAddress(const QString &text);
    QString network(const QString &ssid);

    AddressRedaction m_addresses;
    QMap<QString, int> m_interfaces; // and so on: the number that each one has got
    QMap<QString, int> m_macAddresses;
    QMap<QString, int> m_networks;
};

} // namespace morvek

#endif
