// SPDX-License-Identifier: Apache-2.0
#ifndef RECORDPROCESS_H
#define RECORDPROCESS_H

#include "childprocess.h"

#include <QtCore/QFile>
#include <QtTest/QtTest>

/*! A run of morvek-zop record below the environment's root. It is killed with its owner. */
class RecordProcess
{
public:
    RecordProcess(const QString &file, const QStringList &arguments = {})
        : m_file(file)
    {
        QFile::remove(file); // what another one has written
        m_process.start(QStringLiteral(MORVEK_ZOP), QStringList {QStringLiteral("record"), file} + arguments);
    }
    ~RecordProcess()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /*! What it has written so far, each line with its end. */
    QByteArrayList lines() const
    {
        QFile file(m_file);
        QByteArrayList lines;
        while (file.isOpen() || file.open(QIODevice::ReadOnly)) {
            const QByteArray line = file.readLine();
            if (line.isEmpty())
                break;
            lines += line;
        }
        return lines;
    }
    /*! Whether it writes a line that holds \a text. */
    bool waitFor(const QByteArray &text)
    {
        return QTest::qWaitFor([&] { return lines().join().contains(text); }, 20000);
    }
    /*! Whether it has written so many lines, and no more. */
    bool waitForLines(int number)
    {
        return QTest::qWaitFor([&] { return lines().size() >= number; }, 20000) && lines().size() == number;
    }
    /*! Its exit code after the signal \a number; -1 when it does not end so. */
    int end(int number)
    {
        ::kill(pid_t(m_process.processId()), number);
        return m_process.waitForFinished(20000) && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode()
                                                                                                  : -1;
    }
    QByteArray errors() { return m_process.readAllStandardError(); }

private:
    QString m_file;
    ChildProcess m_process;
};

#endif
