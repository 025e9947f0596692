// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTREQUEST_H
#define MORVEK_TESTREQUEST_H

#include "testkitexport.h"

#include <QtCore/QMetaType>
#include <QtCore/QStringList>

namespace morvek {

/*! What somebody has requested of a daemon of a TestUnit. */
struct MORVEK_TEST_KIT_EXPORT TestRequest
{
    Q_GADGET
    Q_PROPERTY(int number MEMBER number)
    Q_PROPERTY(int at MEMBER at)
    Q_PROPERTY(QString daemon MEMBER daemon)
    Q_PROPERTY(QString message MEMBER message)
    Q_PROPERTY(QString interface MEMBER interface)
    Q_PROPERTY(QString ssid MEMBER ssid)
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(QStringList answers MEMBER answers)

public:
    bool isValid() const { return number > 0; }

    int number = 0;      //!< counts the requests to all daemons, from 1; 0: there is none
    int at = 0;          //!< milliseconds since the start
    QString daemon;      //!< "networking", "wifi" or "tethering"
    QString message;     //!< "scan" for one
    QString interface;   //!< what it names, if anything
    QString ssid;        //!< likewise
    QString text;        //!< all of it in words, but for secrets
    QStringList answers; //!< "ok", "refused (CODE): REASON" or "as the fault says"; empty as long as there is none
};

} // namespace morvek

Q_DECLARE_METATYPE(morvek::TestRequest)

#endif
