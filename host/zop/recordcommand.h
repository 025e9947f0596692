// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_RECORDCOMMAND_H
#define MORVEK_RECORDCOMMAND_H

#include "redaction.h"

#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <functional>

/*! Writes a recording, until SIGINT or SIGTERM ends it. */
class RecordCommand
{
public:
    /*! Says what is wrong with something without an end of that. */
    using Complain = std::function<void(const QString &subject, const QString &reason)>;

    RecordCommand(const QString &file, bool redacts, Complain complain);

    /*! False when it could not begin or go on. */
    bool run(const QStringList &directories);

private:
    bool open();
    void write(const QByteArray &line);
    void onHappened(morvek::RecordedEvent event);

    QFile m_file;
    bool m_redacts;
    Complain m_complain;
    morvek::Redaction m_redaction;
    bool m_hasFailed = false;
};

#endif
