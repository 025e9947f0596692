// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_STAGESERVER_H
#define MORVEK_HOSTD_STAGESERVER_H

#include "lineconnection.h"
#include "listeningsocket.h"

namespace morvek {

/*! Where clients find the stage. */
namespace StagePlace {

// No object's name begins with a dot.
inline const char FileName[] = ".morvek-hostd.stage";

/*! A path in the folder of the file, which is the root. */
ZopPath beside();

} // namespace StagePlace

/*! Serves the stage's socket to some clients at a time. */
class StageServer : public QObject
{
    Q_OBJECT

public:
    /*! So many clients may be there at once. */
    static constexpr int MostClients = 32;

    StageServer(LineConnection::Answer answer, LineConnection::Refuse refuse);
    ~StageServer() override;

    /*! Begins to serve, or sees to it that clients still find the socket; false when that cannot be. */
    bool keep(QString *error);

private:
    void admit(FileDescriptor socket);

    LineConnection::Answer m_answer;
    LineConnection::Refuse m_refuse;
    std::unique_ptr<ListeningSocket> m_listening; // once the root is there
    int m_clients = 0;
};

} // namespace morvek

#endif
