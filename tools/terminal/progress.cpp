// SPDX-License-Identifier: Apache-2.0
#include "progress.h"

#include "output.h"

#include <unistd.h>

namespace morvek {

Progress::Progress(const QString &deed)
    : m_deed(deed)
{
    if (!::isatty(STDERR_FILENO))
        return;
    m_since.start();
    m_timer.setInterval(1000);
    connect(&m_timer, &QTimer::timeout, this, &Progress::show);
    m_timer.start();
    show();
}

Progress::~Progress()
{
    if (m_timer.isActive())
        replaceNote(QString());
}

void Progress::show()
{
    // The timer comes a little early or late: no second is shown twice, nor left out.
    replaceNote(QStringLiteral("%1 ... %2 s").arg(m_deed).arg((m_since.elapsed() + 500) / 1000));
}

} // namespace morvek
