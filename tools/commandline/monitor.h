// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_MONITOR_H
#define MORVEK_MONITOR_H

#include "output.h"
#include "servicecommand.h"
#include "terminationsignals.h"
#include "texts.h"

#include <QtCore/QDateTime>

#include <utility>

namespace morvek {

/*! --count, and what every command with a service takes. */
std::vector<Option> monitorOptions();
/*! What --count holds, 0 when it is not given. False, with a sentence in \a error, when that is no such number. */
bool readCount(const CommandLine &line, int *count, QString *error);

/*! A command of the kind \a Base that tells changes: until a signal, --count or --timeout ends it. */
template<typename Base>
class Monitor : public Base
{
public:
    /*! Ends after \a count changes; never when that is 0. The names of events take \a eventWidth columns. */
    Monitor(const CommandLine &line, int count, int eventWidth)
        : Base(line),
          m_eventWidth(eventWidth),
          m_count(count)
    {
        QObject::connect(&m_signals, &TerminationSignals::received, this, [this] { this->finish(Done); });
    }

protected:
    /*! Tells the present state, and connects to the changes. */
    virtual void follow() = 0;
    /*! Tells what differs from what was told last. Called also when the daemon is there again. */
    virtual void compare() = 0;

    /*! \a name of an event as the lines begin with it. */
    QString eventColumn(const QString &name) const { return padded(name, m_eventWidth) + QLatin1String("  "); }

    /*! What a line shows of \a state, which is \a text for people. */
    QString shown(const QJsonObject &state, const QString &text) const { return this->json() ? jsonLine(state) : text; }

    /*! Calls compare() when everything of this turn of the event loop has been told. */
    void compareLater()
    {
        if (!std::exchange(m_comparesLater, true))
            QTimer::singleShot(0, this, [this] {
                m_comparesLater = false;
                compare();
            });
    }

    /*! Writes a line with the time: \a object with --json, else \a text. */
    void tell(QJsonObject object, const QString &text)
    {
        const QDateTime now = QDateTime::currentDateTime();
        object.insert(QStringLiteral("time"), now.toUTC().toString(Qt::ISODateWithMs));
        writeLine(this->json() ? jsonLine(object) : now.toString(QStringLiteral("HH:mm:ss.zzz  ")) + text);
        if (outputError() != 0)
            this->finish(Failed);
    }

    void tellChange(const QJsonObject &object, const QString &text)
    {
        if (this->isFinished())
            return;
        tell(object, text);
        if (m_count > 0 && --m_count == 0)
            this->finish(Done);
    }

    void onDaemonDied() override { tellOfDaemon(QStringLiteral("gone"), this->deathSentence()); }

    void onDaemonReturned() override
    {
        tellOfDaemon(QStringLiteral("back"), this->returnSentence());
        compare();
    }

private:
    // No change that --count counts: the state is as it was, as far as anybody knows.
    void tellOfDaemon(const QString &event, const QString &sentence)
    {
        if (!this->isFinished())
            tell({{QStringLiteral("event"), event}}, eventColumn(event) + sentence);
    }

    void run() override
    {
        if (m_count > 0)
            this->setOverdue(QStringLiteral("fewer changes than --count came"));
        else
            this->setOverdue(QString(), Done);
        follow();
    }

    TerminationSignals m_signals;
    const int m_eventWidth;
    int m_count;
    bool m_comparesLater = false;
};

template<typename Made>
std::unique_ptr<Command> createMonitor(const CommandLine &line, QString *error)
{
    int count = 0;
    if (!readCount(line, &count, error))
        return nullptr;
    return std::make_unique<Made>(line, count);
}

} // namespace morvek

#endif
