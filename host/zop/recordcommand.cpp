// SPDX-License-Identifier: Apache-2.0
#include "recordcommand.h"

#include "recorder.h"
#include "recordingline.h"
#include "signalwatcher.h"
#include "zoppath.h"

#include <QtCore/QCoreApplication>

#include <sys/stat.h>

using namespace morvek;

namespace {

bool isControl(const QString &path)
{
    struct stat status;
    return ZopPath::object(path).place().status(&status) && S_ISSOCK(status.st_mode);
}

} // namespace

RecordCommand::RecordCommand(const QString &file, bool redacts, Complain complain)
    : m_file(file),
      m_redacts(redacts),
      m_complain(std::move(complain))
{
}

bool RecordCommand::run(const QStringList &directories)
{
    SignalWatcher signalWatcher;
    QObject::connect(&signalWatcher, &SignalWatcher::terminationAsked, qApp, &QCoreApplication::quit);
    Recorder recorder(directories);
    recorder.leaveOut(isControl);
    QObject::connect(&recorder, &Recorder::happened, &recorder,
                     [this](const RecordedEvent &event) { onHappened(event); });
    QObject::connect(&recorder, &Recorder::missed, &recorder, m_complain);
    if (!open())
        return false;
    write(RecordingLine::first(QDateTime::currentDateTimeUtc(), m_redacts));
    QString error;
    if (!recorder.start(&error)) {
        m_complain(m_file.fileName(), error);
        return false;
    }
    if (!m_hasFailed)
        QCoreApplication::exec();
    recorder.finish();
    return !m_hasFailed;
}

/*! For its owner's eyes, as networks' names are in it. */
bool RecordCommand::open()
{
    const mode_t mask = umask(S_IRWXG | S_IRWXO);
    const bool isOpen = m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
    umask(mask);
    if (!isOpen)
        m_complain(m_file.fileName(), m_file.errorString());
    return isOpen;
}

void RecordCommand::onHappened(RecordedEvent event)
{
    if (!m_redacts || m_redaction.apply(&event))
        write(RecordingLine::of(event));
}

/*! A line is there as a whole or not at all: what a full disk leaves of one goes again. */
void RecordCommand::write(const QByteArray &line)
{
    if (m_hasFailed)
        return;
    const qint64 size = m_file.size();
    if (m_file.write(line) == line.size())
        return;
    m_hasFailed = true;
    m_complain(m_file.fileName(), m_file.errorString());
    m_file.resize(size);
    QCoreApplication::exit();
}
