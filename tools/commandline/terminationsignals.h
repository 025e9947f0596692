// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TERMINATIONSIGNALS_H
#define MORVEK_TERMINATIONSIGNALS_H

#include <QtCore/QObject>

namespace morvek {

/*!
 * While it lives, SIGINT, SIGTERM, SIGHUP and SIGQUIT do not end the program but emit received() from the event loop,
 * once for signals that come almost together. One at a time lives. A SIGHUP that was ignored before stays so: somebody
 * wants the program to outlive its terminal.
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
    void read();

    qint64 m_last = -1; //!< when the last one came that was told, in milliseconds
};

} // namespace morvek

#endif
