// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_ERRORCAPTURE_H
#define MORVEK_TEST_ERRORCAPTURE_H

#include <QtCore/QTemporaryFile>

#include <unistd.h>

/*! Standard error, while it lives, goes into a file. */
class ErrorCapture
{
public:
    ErrorCapture()
        : m_former(dup(STDERR_FILENO))
    {
        m_file.open();
        dup2(m_file.handle(), STDERR_FILENO);
    }
    ~ErrorCapture()
    {
        dup2(m_former, STDERR_FILENO);
        close(m_former);
    }

    QByteArray text() const
    {
        QFile file(m_file.fileName());
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

private:
    Q_DISABLE_COPY(ErrorCapture)
    QTemporaryFile m_file;
    int m_former;
};

#endif
