// SPDX-License-Identifier: Apache-2.0
#ifndef STORMPROCESS_H
#define STORMPROCESS_H

#include "childprocess.h"

#include <QtCore/QStringList>

/*! A process of a storm: it answers lines with lines, is killed and stopped, and must not end by itself. */
class StormProcess : public QObject
{
public:
    enum Kind { Application, Peer, Daemons };

    StormProcess(Kind kind, const QString &name, const QString &root);
    ~StormProcess() override;

    void start(const QStringList &arguments = {}, int speed = 1);
    qint64 processId() const { return m_process.processId(); }
    QString name() const { return m_name; }

    void send(const QString &line);
    /*! Sends \a line and awaits one that begins with \a answer; what follows that. Null when it does not come. */
    QString ask(const QString &line, const QString &answer);
    /*! Awaits a line that begins with \a start among those from number \a from on. */
    QString wait(const QString &start, int from = 0);
    /*! The same, without waiting. */
    QString find(const QString &start, int from) const;
    int heard() const { return m_lines.size(); }
    /*! Whether it answers from its event loop. */
    bool answers();

    /*! SIGKILL. */
    void kill();
    void signal(int number) const;
    /*! Whether it ends by itself with \a code. */
    bool endsAlone(int code);
    /*! Lets it end; false when it does not, or not as it should. */
    bool end();

    /*! What is wrong with it: an end that nobody asked for, or what a sanitizer has found. */
    QString trouble();
    QByteArray errors();

private:
    void read();
    bool waitForEnd();

    Kind m_kind;
    QString m_name;
    QString m_root;
    ChildProcess m_process;
    QStringList m_lines;
    QByteArray m_errors;
    bool m_killed = false;
    int m_pings = 0;
};

#endif
