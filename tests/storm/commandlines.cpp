// SPDX-License-Identifier: Apache-2.0
#include "commandlines.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

#include <unistd.h>

CommandLines::CommandLines(Handler handler)
    : m_handler(std::move(handler)),
      m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    QObject::connect(&m_input, &QSocketNotifier::activated, &m_input, [this] { read(); });
}

void CommandLines::say(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void CommandLines::read()
{
    char chunk[4096];
    const ssize_t size = ::read(STDIN_FILENO, chunk, sizeof(chunk));
    if (size <= 0) {
        m_input.setEnabled(false);
        QCoreApplication::quit();
        return;
    }
    m_read.append(chunk, int(size));
    for (int end = m_read.indexOf('\n'); end != -1; end = m_read.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_read.left(end));
        m_read.remove(0, end + 1);
        m_handler(line.split(QLatin1Char(' ')));
    }
}
