// SPDX-License-Identifier: Apache-2.0
#include "processes.h"
#include "terminaltool.h"

#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

using namespace morvek;

namespace {

bool write(const QString &name, const QByteArray &content)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size()
        && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QByteArray read(const QString &name)
{
    QFile file(name);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

} // namespace

/*!
 * A person at a terminal types the beginning of a word, TAB and Enter. What the shell starts then tells which words it
 * has got. The daemon has ended: its names are those that were seen last.
 */
class ShellsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void completes_data();
    void completes();

private:
    QString path(const char *name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    /*! How \a shell is started with the completion as it is shipped. */
    QStringList commandFor(const QString &shell) const;

    QTemporaryDir m_folder;
};

void ShellsTest::initTestCase()
{
    QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("here/a folder")));
    QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("programs")));
    QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("zsh")));
    for (const char *name : {"here/a file", "here/my key", "here/scene one.json"})
        QVERIFY(write(path(name), QByteArray()));
    const QPair<const char *, const char *> programs[] = {
        {"morvekctl", MORVEKCTL}, {"morvek-hostd", MORVEK_HOSTD}, {"morvek-zop", MORVEK_ZOP}};
    for (const auto &[name, file] : programs)
        QVERIFY(write(path("programs/") + QLatin1String(name),
                      QByteArray("#!/bin/sh\n[ \"$1\" != complete ] || exec '") + file
                          + "' \"$@\"\nprintf '<%s>' \"$@\" >\"$TAKEN.part\"\nmv \"$TAKEN.part\" \"$TAKEN\"\n"));
    QVERIFY(write(path("bashrc"), "PS1='ready> '\nsource '" COMPLETION "/morvek.bash'\n"));
    QVERIFY(write(path("zsh/.zshrc"),
                  "PS1='ready> '\nfpath=('" COMPLETION "' $fpath)\nautoload -Uz compinit\ncompinit -u -D\n"));
    qputenv("ZDOTDIR", path("zsh").toUtf8());
    qputenv("HOME", m_folder.path().toUtf8());
    qputenv("TAKEN", path("taken").toUtf8());
    qputenv("PATH", path("programs").toUtf8() + ':' + qgetenv("PATH"));
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("TERM", "xterm");
    qputenv("ZOP_ROOT", m_folder.path().toUtf8());
    QVERIFY(QDir::setCurrent(path("here")));

    Daemon daemon(m_folder.path());
    QVERIFY(daemon.publish(QStringLiteral(NAMES)));
    QCOMPARE(runTool(m_folder.path(), {QStringLiteral("wifi"), QStringLiteral("scan")}).code, 0);
    daemon.signal(SIGTERM);
    QCOMPARE(daemon.wait(), 0);
}

QStringList ShellsTest::commandFor(const QString &shell) const
{
    const QString file = QStandardPaths::findExecutable(shell);
    const QString interactive = QStringLiteral("-i");
    if (shell == QLatin1String("bash"))
        return {file, QStringLiteral("--noprofile"), QStringLiteral("--rcfile"), path("bashrc"), interactive};
    if (shell == QLatin1String("zsh"))
        return {file, QStringLiteral("-d"), interactive};
    return {file, QStringLiteral("--no-config"), interactive, QStringLiteral("-C"),
            QStringLiteral("source '" COMPLETION "/morvek.fish'; function fish_prompt; echo 'ready> '; end")};
}

void ShellsTest::completes_data()
{
    QTest::addColumn<QString>("shell");
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QByteArray>("taken"); // by the program: its words in angle brackets

    for (const char *shell : {"bash", "zsh", "fish"}) {
        const auto row = [shell](const char *name, const char *typed, const char *taken) {
            QTest::addRow("%s: %s", shell, name)
                << QString::fromLatin1(shell) << QByteArray(typed) << QByteArray(taken);
        };
        row("command", "morvekctl interf", "<interfaces>");
        row("command of a group", "morvekctl hotspot prof", "<hotspot><profile>");
        row("command behind another", "true; morvekctl interf", "<interfaces>");
        row("command behind a variable", "A='b c' morvekctl interf", "<interfaces>");
        row("option", "morvekctl hotspot set --block", "<hotspot><set><--block-connections>");
        row("band", "morvekctl hotspot set --band 2", "<hotspot><set><--band><2.4>");
        row("security", "morvekctl hotspot set --security WPA/", "<hotspot><set><--security><WPA/WPA2>");
        row("privacy, attached", "morvekctl hotspot set --privacy=of", "<hotspot><set><--privacy=off>");
        row("interface", "morvekctl show w", "<show><wlan0>");
        row("interface with a colon", "morvekctl show eth0:", "<show><eth0:1>");
        row("key file", "morvekctl wifi connect x --passkey-file my", "<wifi><connect><x><--passkey-file><my key>");

        row("network", "morvekctl wifi connect My", "<wifi><connect><My Network>");
        row("network behind a blank", "morvekctl wifi connect My\\ N", "<wifi><connect><My Network>");
        row("network in double quotes", "morvekctl wifi connect \"My N", "<wifi><connect><My Network>");
        row("network in single quotes", "morvekctl wifi connect 'My N", "<wifi><connect><My Network>");
        row("network half in quotes", "morvekctl wifi connect My\" N", "<wifi><connect><My Network>");
        row("network in three parts", "morvekctl wifi connect M\"y \"N", "<wifi><connect><My Network>");
        row("option and value in two parts", "morvekctl hotspot set --pri\"va\"cy=of", "<hotspot><set><--privacy=off>");
        row("value in two parts", "morvekctl hotspot set --privacy=\"o\"f", "<hotspot><set><--privacy=off>");
        row("network in two parts", "morvekctl wifi connect \"My \"N", "<wifi><connect><My Network>");
        row("network of backslashes", "morvekctl wifi connect C:\\\\", "<wifi><connect><C:\\\\new>");
        row("network of backslashes, quoted", "morvekctl wifi connect \"C:\\\\\\\\n", "<wifi><connect><C:\\\\new>");
        // Only in fish a backslash escapes another one there.
        const char *single =
            qstrcmp(shell, "fish") == 0 ? "morvekctl wifi connect 'C:\\\\\\\\n" : "morvekctl wifi connect 'C:\\\\n";
        row("network of backslashes, quoted once", single, "<wifi><connect><C:\\\\new>");
        row("network of a command", "morvekctl wifi connect \\$", "<wifi><connect><$(touch owned)>");
        row("network of a command, quoted", "morvekctl wifi connect '$(t", "<wifi><connect><$(touch owned)>");
        row("network of an older command", "morvekctl wifi connect \\`", "<wifi><connect><`touch owned`>");
        row("network of quotes", "morvekctl wifi connect It", "<wifi><connect><It's \"an\" \\ $HOME>");
        row("network of quotes, quoted", "morvekctl wifi connect \"It", "<wifi><connect><It's \"an\" \\ $HOME>");
        row("network of quotes, quoted once", "morvekctl wifi connect 'I", "<wifi><connect><It's \"an\" \\ $HOME>");
        row("network of steering characters", "morvekctl wifi connect Ste", "<wifi><connect><Ste>");
        row("network of two lines", "morvekctl wifi connect Tw", "<wifi><connect><Tw>");
        row("network outside ASCII", "morvekctl wifi connect Gr", "<wifi><connect><Gr\u00f6\u00dfe *>");
        row("network like a home", "morvekctl wifi connect \\~", "<wifi><connect><~root>");
        row("network of signs", "morvekctl wifi connect Wow", "<wifi><connect><Wow! <;&|>#>");

        row("scenario", "morvek-hostd --scenario headu", "<--scenario><headunit>");
        row("scenario file", "morvek-hostd --scenario ./sc", "<--scenario><./scene one.json>");
        row("service", "morvek-hostd --without teth", "<--without><tethering>");
        row("place", "morvek-hostd --interfaces sy", "<--interfaces><system>");
        const bool keepsSlash = qstrcmp(shell, "zsh") != 0;
        row("root", "morvek-hostd --root a", keepsSlash ? "<--root><a folder/>" : "<--root><a folder>");
        row("root, attached", "morvek-hostd --root=a", keepsSlash ? "<--root=a folder/>" : "<--root=a folder>");

        row("verb", "morvek-zop wat", "<watch>");
        row("object", "morvek-zop show /zop/services/wi", "<show></zop/services/wifi/status>");
        row("directory", "morvek-zop list /zop/services/wi", "<list></zop/services/wifi>");
    }
}

void ShellsTest::completes()
{
    QFETCH(QString, shell);
    QFETCH(QByteArray, typed);
    const QStringList command = commandFor(shell);
    if (command.first().isEmpty())
        return QTest::qSkip("this shell is not installed", __FILE__, __LINE__);
    const QString taken = path("taken");
    QFile::remove(taken);

    TerminalTool terminal;
    QVERIFY(terminal.startProgram(m_folder.path(), command));
    QVERIFY(terminal.waitFor(QStringLiteral("ready> ")));
    terminal.type(typed + "\t\r");
    QTRY_VERIFY2_WITH_TIMEOUT(QFile::exists(taken), qPrintable(terminal.shown()), 20000);
    QTEST(read(taken), "taken");
    QVERIFY(!QFile::exists(path("here/owned")));
}

QTEST_GUILESS_MAIN(ShellsTest)
#include "tst_shells.moc"
