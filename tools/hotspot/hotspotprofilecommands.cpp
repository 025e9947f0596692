// SPDX-License-Identifier: Apache-2.0
#include "hotspotprofilecommands.h"

#include "hotspotcommand.h"
#include "hotspottext.h"
#include "output.h"
#include "passkey.h"
#include "passkeyprompt.h"
#include "profileoptions.h"
#include "terminationsignals.h"
#include "texts.h"

namespace morvek {

namespace {

const QString PassphraseKind = QStringLiteral("passphrase");
const QString AskOption = QStringLiteral("ask-passphrase");
const QString ShowOption = QStringLiteral("show-passphrase");

void writeProfile(const WifiHotspot &profile, bool json, bool withPassphrase = false)
{
    if (json)
        writeLine(jsonLine(toJson(profile, withPassphrase)));
    else
        writeTable(profileRows(profile, withPassphrase));
}

class ProfileCommand : public HotspotCommand
{
public:
    explicit ProfileCommand(const CommandLine &line)
        : HotspotCommand(line),
          m_withPassphrase(line.has(ShowOption))
    {
    }

protected:
    void run() override
    {
        fetch(QStringLiteral("the profile was not read"), [this](const WifiHotspot &profile) {
            writeProfile(profile, json(), m_withPassphrase);
            finish(Done);
        });
    }

private:
    const bool m_withPassphrase;
};

class SetCommand : public HotspotCommand
{
public:
    /*! Asks for the passphrase when \a ask is set. An empty \a passphrase leaves it as it is. */
    SetCommand(const CommandLine &line, const QString &passphrase, bool ask)
        : HotspotCommand(line),
          m_line(line),
          m_passphrase(passphrase),
          m_ask(ask)
    {
        connect(&m_signals, &TerminationSignals::received, this,
                [this] { fail(QStringLiteral("interrupted: ") + overdue()); });
    }

protected:
    void run() override
    {
        if (m_ask)
            askForPassphrase();
        else
            change();
    }

    void withdraw() override { m_prompt.reset(); }

private:
    void askForPassphrase()
    {
        setOverdue(notChanged(QStringLiteral("no passphrase was typed")));
        m_prompt = std::make_unique<PasskeyPrompt>(QStringLiteral("Passphrase of the hotspot: "));
        // Queued, as the answer may be the end of the prompt.
        connect(m_prompt.get(), &PasskeyPrompt::typed, this, &SetCommand::onTyped, Qt::QueuedConnection);
    }

    void onTyped(const QString &passphrase)
    {
        m_passphrase = passphrase;
        const QString fault = faultOfTyped(PassphraseKind, passphrase);
        if (fault.isEmpty())
            change();
        else
            fail(notChanged(fault));
    }

    void change()
    {
        fetch(notChanged(QStringLiteral("it was not read")), [this](const WifiHotspot &profile) { write(profile); });
    }

    void write(const WifiHotspot &present)
    {
        QString ignored; // the values were found to make sense
        m_wanted = present;
        applyProfileOptions(m_line, &m_wanted, &ignored);
        if (!m_passphrase.isEmpty())
            m_wanted.setPassphrase(m_passphrase);
        const QString gap = gapOf(m_wanted);
        if (!gap.isEmpty()) {
            fail(notChanged(QStringLiteral("the tethering daemon's has %1: give that, too").arg(gap)));
            return;
        }
        awaitAnswer(QStringLiteral("the tethering daemon has not answered; it may still take the profile"));
        m_write.reset(service()->setConfiguration(m_wanted));
        connect(m_write.get(), &AsyncHotspotConfigOperation::success, this, &SetCommand::readAgain);
        connect(m_write.get(), &AsyncHotspotConfigOperation::failure, this,
                [this] { fail(sentence(QStringLiteral("the profile was not changed"), m_write->error())); });
    }

    // What was written tells nothing of what the daemon has made of it.
    void readAgain()
    {
        fetch(QStringLiteral("the profile was changed, but not read again"),
              [this](const WifiHotspot &kept) { tell(kept); });
    }

    void tell(const WifiHotspot &kept)
    {
        writeProfile(kept, json());
        const QStringList different = differentFields(kept, m_wanted);
        if (!different.isEmpty())
            complain(QStringLiteral("the tethering daemon keeps something else than what was written: %1")
                         .arg(different.join(QLatin1String(", "))));
        finish(different.isEmpty() ? Done : Failed);
    }

    static QString notChanged(const QString &why) { return QStringLiteral("the profile was not changed: ") + why; }

    TerminationSignals m_signals;
    const CommandLine m_line;
    QString m_passphrase;
    const bool m_ask;
    WifiHotspot m_wanted;
    std::unique_ptr<PasskeyPrompt> m_prompt;
    std::unique_ptr<AsyncHotspotConfigOperation> m_write;
};

bool checkOptions(const CommandLine &line, QString *error)
{
    const QString file = passkeyFileOption(PassphraseKind).name;
    WifiHotspot scratch;
    if (!hasProfileOption(line) && !line.has(AskOption) && !line.has(file))
        *error = QStringLiteral("what shall be changed? See 'morvekctl help hotspot set'");
    else if (line.has(AskOption) && line.has(file))
        *error = QStringLiteral("--%1 and --%2 say the same: give only one of them").arg(AskOption, file);
    else if (line.has(AskOption) && !PasskeyPrompt::isPossible())
        *error = QStringLiteral("--%1 needs a terminal: use --%2 FILE, \"-\" for standard input").arg(AskOption, file);
    else
        return applyProfileOptions(line, &scratch, error);
    return false;
}

// A file is read before anything is asked of the daemon.
std::unique_ptr<Command> createSet(const CommandLine &line, QString *error)
{
    QString passphrase;
    if (!checkOptions(line, error) || !readGivenPasskey(line, PassphraseKind, &passphrase, error))
        return nullptr;
    const bool given = line.has(passkeyFileOption(PassphraseKind).name);
    return std::make_unique<SetCommand>(line, passphrase, line.has(AskOption) || (given && passphrase.isEmpty()));
}

} // namespace

CommandInfo hotspotProfileCommand()
{
    return {QStringLiteral("hotspot profile"),
            {},
            0,
            withServiceOptions({{ShowOption, {}, QStringLiteral("tell the passphrase, which is hidden otherwise")}}),
            {{QString(), QStringLiteral("tell the hotspot's profile")}},
            QStringLiteral(
                "What is not set is \"-\", in JSON null. A band that the library cannot read is told as 2.4,\n"
                "a security that it cannot read as \"unknown\". When the profile is refused, the command ends with\n"
                "code 1; when it does not come within %1, or the time of --timeout, with code 4.")
                .arg(inSeconds(AnswerTime)),
            {QStringLiteral("morvekctl hotspot profile"),
             QStringLiteral("morvekctl hotspot profile --show-passphrase --json | jq -r .passphrase")},
            createFrom<ProfileCommand>};
}

CommandInfo hotspotSetCommand()
{
    std::vector<Option> options = profileOptions();
    options.push_back(passkeyFileOption(PassphraseKind));
    options.push_back(
        {AskOption, {}, QStringLiteral("ask for the passphrase on the terminal, which does not show it")});
    return {
        QStringLiteral("hotspot set"),
        {},
        0,
        withServiceOptions(options),
        {{QStringLiteral("OPTION..."), QStringLiteral("change the fields of the profile that the options name")}},
        QStringLiteral("Reads the profile, changes it, writes it, and tells what the tethering daemon keeps now. When\n"
                       "the daemon refuses, or keeps something else, the command ends with code 1; when it does not\n"
                       "answer one of the three requests within %1, or the time of --timeout is up, with code\n"
                       "4. The file is read before any time counts.")
            .arg(inSeconds(AnswerTime)),
        {QStringLiteral("morvekctl hotspot set --name \"Back seat\" --passphrase-file hotspot.key"),
         QStringLiteral("morvekctl hotspot set --security WPA2 --ask-passphrase")},
        createSet};
}

} // namespace morvek
