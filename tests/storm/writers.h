// SPDX-License-Identifier: Apache-2.0
#ifndef WRITERS_H
#define WRITERS_H

#include "storm.h"

/*! A storm in which writers write numbered updates and readers judge them. */
class WritingStorm : public Storm
{
protected:
    static constexpr int Objects = 3;

    /*! Creates the objects that are written and read. */
    void createObjects();
    QStringList paths() const;
    void startReader();
    /*! One more writer, with a number of its own. */
    void startWriter(int pause, int largest);
    void killWriter();
    /*! Ends the writing; then every reader must have seen what every writer has done, once, in one order. */
    void expectAllSeen();

    std::vector<Process> m_readers;
    std::vector<Process> m_writers;

private:
    void endWriting();
    void compare(const QString &report, int object);

    int m_lastWriter = 0;
};

#endif
