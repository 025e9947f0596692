// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_SCANDAEMON_H
#define MORVEK_SCANDAEMON_H

#include "zopobject.h"

#include <memory>

class Rounds;

/*! What a scan that finds \a count access points publishes. */
QByteArray scanResults(int count);

/*! The least Wi-Fi daemon: it accepts every request; each scan finds the same. */
class ScanDaemon : public QObject
{
    Q_OBJECT

public:
    /*! With \a rounds, it publishes when the client is at rest, and waits there until the results have arrived. */
    ScanDaemon(int count, Rounds *rounds);

private:
    void reply(const morvek::ZopChangeset &request);
    void publish();

    morvek::ZopVariant m_results;
    Rounds *m_rounds;
    bool m_isScanning = false;
    std::unique_ptr<morvek::ZopObject> m_control;
    std::unique_ptr<morvek::ZopObject> m_status;
};

#endif
