// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TERMINATIONSIGNALS_H
#define MORVEK_TERMINATIONSIGNALS_H

#include <QtCore/QObject>

namespace morvek {

/*!
 * While it lives, SIGINT, SIGTERM, SIGHUP and SIGQUIT do not end the program but emit received() from the event loop.
 * One at a time. A SIGHUP that was ignored before stays so: somebody wants the program to outlive its terminal.
 */
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
