// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_TEST_STAGECLIENT_H
#define MORVEK_TEST_STAGECLIENT_H

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtNetwork/QLocalSocket>

/*! A client of the stage of a root. Single quotes in its lines stand for double ones. */
class StageClient
{
public:
    explicit StageClient(const QString &root) { socket.connectToServer(fileOf(root)); }

    static QString fileOf(const QString &root) { return root + QStringLiteral("/.morvek-hostd.stage"); }

    void send(const char *lines)
    {
        if (!socket.isOpen())
            return;
        socket.write(QByteArray(lines).replace('\'', '"'));
        socket.flush();
    }
    /*! The next answer; empty when there is none. */
    QByteArray answer()
    {
        while (!socket.canReadLine()) {
            if (!socket.waitForReadyRead(20000) && !socket.canReadLine())
                return {};
        }
        return socket.readLine().trimmed();
    }
    QByteArray ask(const char *line)
    {
        send((QByteArray(line) + '\n').constData());
        return answer();
    }
    /*! "done", or the reason why not. */
    QString act(const char *line)
    {
        const QByteArray answer = ask(line);
        const QJsonObject object = QJsonDocument::fromJson(answer).object();
        return answer == "{\"done\":true}" ? QStringLiteral("done") : object.value(QLatin1String("reason")).toString();
    }
    QJsonValue look(const char *what)
    {
        const QByteArray answer = ask(qPrintable(QStringLiteral("{'look':'%1'}").arg(QLatin1String(what))));
        return QJsonDocument::fromJson(answer).object().value(QLatin1String(what));
    }

    QLocalSocket socket;
};

#endif
