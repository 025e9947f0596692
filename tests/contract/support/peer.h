// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TESTS_PEER_H
#define MORVEK_TESTS_PEER_H

#include <QtCore/QProcess>
#include <QtCore/QStringList>

/*! Another process, which does what the lines say that are sent to it; contractpeer.cpp lists them. */
class Peer : public QObject
{
    Q_OBJECT

public:
    explicit Peer(const QStringList &environment = QStringList());
    ~Peer() override;

    /*! Sends \a line, without waiting for anything. */
    void send(const QString &line);
    /*! Sends \a line and turns the event loop until it was carried out and \a answer heard. */
    bool ask(const QString &line, const QString &answer);
    /*! Turns the event loop until \a line was heard; false when it is not heard for long. */
    bool wait(const QString &line);
    /*! The lines heard that begin with \a start, without it. */
    QStringList heard(const QString &start) const;
    QByteArray standardError();

    /*! Ends the process at once, as a crash would. */
    void kill();
    /*! Lets the process end in order. */
    bool quit();
    /*! Whether the process has ended within reasonable time. */
    bool waitForEnd();

private:
    void read();

    QProcess m_process;
    QStringList m_lines;
};

/*! Lets \a daemon serve the control object of the test function, as "s". */
bool serve(Peer &daemon);
/*! Lets \a client open that object, as "c". */
bool openClient(Peer &client);

#endif
