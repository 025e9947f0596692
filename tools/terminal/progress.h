// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_PROGRESS_H
#define MORVEK_PROGRESS_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>

namespace morvek {

/*! While it lives, a terminal shows on standard error what is done and for how long. Nothing is shown elsewhere. */
class Progress : public QObject
{
    Q_OBJECT

public:
    explicit Progress(const QString &deed);
    ~Progress() override;

private:
    Q_DISABLE_COPY(Progress)
    void show();

    const QString m_deed;
    QElapsedTimer m_since;
    QTimer m_timer;
};

} // namespace morvek

#endif
