// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TERMINATIONSIGNALS_H
#define MORVEK_TERMINATIONSIGNALS_H

#include <QtCore/QObject>

namespace morvek {

/*! While it lives, SIGINT and SIGTERM do not end the program but emit received() from the event loop. One at a time. */
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    Q_DISABLE_COPY(TerminationSignals)
};

} // namespace morvek

#endif
