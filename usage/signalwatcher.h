// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_USAGE_SIGNALWATCHER_H
#define MORVEK_USAGE_SIGNALWATCHER_H

#include <QtCore/QObject>

class QSocketNotifier;

namespace morvek {

/*! Turns SIGTERM and SIGINT into a signal of the event loop. There is one in a process. */
class SignalWatcher : public QObject
{
    Q_OBJECT

public:
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

Q_SIGNALS:
    void terminationAsked();

private:
    Q_DISABLE_COPY(SignalWatcher)
    QSocketNotifier *m_notifier = nullptr;
};

} // namespace morvek

#endif
