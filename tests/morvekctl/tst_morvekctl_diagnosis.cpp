// SPDX-License-Identifier: Apache-2.0
#include "daemoncase.h"

#include <zopobject.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <csignal>

#include <sys/stat.h>
#include <unistd.h>

using namespace morvek;

/*! What is told when something is not there: of the root, of the daemons, and of the library's log. */
class TestMorvekctlDiagnosis : public WifiCase
{
    Q_OBJECT

private Q_SLOTS:
    void unusableRoot_data();
    void unusableRoot();
    void foreignRoot();
    void noRoot();
    void missingRoot();
    void rootWithoutDaemons();

    void status();
    void statusAsJson();
    void statusOfSome();
    void statusOfStuckService();
    void statusOfTheDead();
    void statusOfNothing();

    void ownWordsOnly_data();
    void ownWordsOnly();

private:
    QString place(const QString &name) const { return m_root->filePath(name); }
    /*! What the tool and the daemon say of the root \a root, below which neither can do anything. */
    static void refuses(const QString &root, const QString &sentence)
    {
        for (const char *command : {"interfaces", "wifi status", "hotspot status", "interfaces --wait"}) {
            const ToolResult result = runTool(root, QString::fromLatin1(command).split(QLatin1Char(' ')));
            QCOMPARE(result.errors, QStringLiteral("morvekctl: %1\n").arg(sentence));
            QCOMPARE(result.output, QString());
            QCOMPARE(result.code, 3);
        }
        Daemon daemon(root);
        daemon.start({});
        QCOMPARE(daemon.wait(), 4);
        QCOMPARE(daemon.errors(), QStringLiteral("morvek-hostd: %1\n").arg(sentence));
    }
};

void TestMorvekctlDiagnosis::unusableRoot_data()
{
    QTest::addColumn<QString>("root"); // %1 is a folder of this test
    QTest::addColumn<QString>("sentence");
    QTest::newRow("open")
        << "%1/open"
        << "the root \"%1/open\" is open to other users (wanted: mode 0700): close it with 'chmod 700 "
           "\"%1/open\"'";
    QTest::newRow("relative") << "open"
                              << "the root \"open\" is not a plain absolute path: set ZOP_ROOT to one that begins with "
                                 "\"/\" and goes through neither \".\" nor \"..\"";
    QTest::newRow("file") << "%1/file"
                          << "the root \"%1/file\" is not a directory: set ZOP_ROOT to a folder of your own";
    QTest::newRow("below a file") << "%1/file/root"
                                  << "the root \"%1/file/root\": Not a directory: set ZOP_ROOT to a folder of your own";
    QTest::newRow("nowhere") << "%1/absent/root"
                             << "the root \"%1/absent/root\" cannot be made: there is no folder \"%1/absent\": make "
                                "that folder, or set ZOP_ROOT to another root";
    QTest::newRow("below an open folder") << "%1/shared/root"
                                          << "the root \"%1/shared/root\" could be exchanged by another user at "
                                             "\"%1/shared\", where everybody may write: set ZOP_ROOT to a folder in a "
                                             "place of your own";
}

void TestMorvekctlDiagnosis::unusableRoot()
{
    QFETCH(QString, root);
    QFETCH(QString, sentence);
    QVERIFY(QFile(place(QStringLiteral("file"))).open(QIODevice::WriteOnly));
    QCOMPARE(::mkdir(QFile::encodeName(place(QStringLiteral("open"))).constData(), 0755), 0);
    QCOMPARE(::mkdir(QFile::encodeName(place(QStringLiteral("shared"))).constData(), 0700), 0);
    QCOMPARE(::chmod(QFile::encodeName(place(QStringLiteral("shared"))).constData(), 0777), 0);
    refuses(root.replace(QLatin1String("%1"), m_root->path()), sentence.replace(QLatin1String("%1"), m_root->path()));
}

void TestMorvekctlDiagnosis::foreignRoot()
{
    if (::geteuid() != 0)
        return QTest::qSkip("needs the right to give a folder away", __FILE__, __LINE__);
    const QString root = place(QStringLiteral("theirs"));
    QCOMPARE(::mkdir(QFile::encodeName(root).constData(), 0700), 0);
    QCOMPARE(::chown(QFile::encodeName(root).constData(), 12345, 12345), 0);
    refuses(root,
            QStringLiteral("the root \"%1\" belongs to another user: set ZOP_ROOT to a folder of your own").arg(root));
}

void TestMorvekctlDiagnosis::noRoot()
{
    const QByteArray usual = qgetenv("XDG_RUNTIME_DIR");
    qunsetenv("XDG_RUNTIME_DIR");
    refuses(QString(),
            QStringLiteral("there is no root: neither ZOP_ROOT nor XDG_RUNTIME_DIR is set: set ZOP_ROOT to a folder of "
                           "your own"));
    if (!usual.isNull())
        qputenv("XDG_RUNTIME_DIR", usual);
}

void TestMorvekctlDiagnosis::missingRoot()
{
    const QString root = place(QStringLiteral("later"));
    const ToolResult before = runTool(root, {QStringLiteral("interfaces")});
    QCOMPARE(before.errors,
             QStringLiteral("morvekctl: the networking daemon is not there: the root \"%1\" does not exist: start "
                            "morvek-hostd, which makes it, or set ZOP_ROOT to the root of one that runs, or add "
                            "--wait\n")
                 .arg(root));
    QCOMPARE(before.code, 3);
    QVERIFY(!QFile::exists(root));

    Daemon daemon(root);
    QVERIFY(daemon.publish(QStringLiteral("never-leased")));
    QCOMPARE(runTool(root, {QStringLiteral("interfaces")}).code, 0);
}

void TestMorvekctlDiagnosis::rootWithoutDaemons()
{
    const ToolResult result = run(QStringLiteral("interfaces"));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: the networking daemon is not there: start morvek-hostd, or set ZOP_ROOT to its "
                            "root (it is \"%1\"), or add --wait\n")
                 .arg(m_root->path()));
    QCOMPARE(result.code, 3);
}

void TestMorvekctlDiagnosis::status()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    const ToolResult result = run(QStringLiteral("status"));
    QCOMPARE(result.output,
             QStringLiteral("Root        %1\n"
                            "Daemons     networking, Wi-Fi, tethering\n"
                            "Interfaces  4 of 4 connected, wlan0 preferred\n"
                            "Wi-Fi       connected to \"Home\"\n"
                            "Hotspot     off\n")
                 .arg(m_root->path()));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.code, 0);
}

void TestMorvekctlDiagnosis::statusAsJson()
{
    QVERIFY(m_daemon->publish(QStringLiteral("radio-off")));
    const ToolResult result = run(QStringLiteral("status --json"));
    QCOMPARE(result.output,
             QStringLiteral(R"({"daemons":{"networking":true,"tethering":false,"wifi":true},)"
                            R"("root":{"fault":null,"path":"%1"},)"
                            R"("services":{"hotspot":null,"interfaces":{"connected":0,"number":1,"preferred":null},)"
                            R"("wifi":{"accessPoint":null,"connected":false,"powered":false}}})"
                            "\n")
                 .arg(m_root->path()));
    QCOMPARE(result.errors,
             QStringLiteral(R"({"code":null,"exitCode":3,"message":"not there: tethering daemon; its scenario or )"
                            R"(machine may lack that, or --without may leave it out"})"
                            "\n"));
    QCOMPARE(result.code, 3);
}

void TestMorvekctlDiagnosis::statusOfSome()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"),
                              {QStringLiteral("--without"), QStringLiteral("networking"), QStringLiteral("--without"),
                               QStringLiteral("tethering")}));
    const ToolResult result = run(QStringLiteral("status"));
    QCOMPARE(result.output,
             QStringLiteral("Root        %1\n"
                            "Daemons     Wi-Fi\n"
                            "Interfaces  -\n"
                            "Wi-Fi       connected to \"Home\"\n"
                            "Hotspot     -\n")
                 .arg(m_root->path()));
    QCOMPARE(
        result.errors,
        QStringLiteral("morvekctl: not there: networking daemon, tethering daemon; its scenario or machine may lack "
                       "that, or --without may leave it out\n"));
    QCOMPARE(result.code, 3);
}

/*! A daemon that serves its control object and has not published its status. */
void TestMorvekctlDiagnosis::statusOfStuckService()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit"), {QStringLiteral("--without"), QStringLiteral("wifi")}));
    const ZopObject control(QStringLiteral("/zop/services/wifi/control"), ZopObject::Publish, true);
    QVERIFY(control.isValid());
    QElapsedTimer timer;
    timer.start();
    const ToolResult result = run(QStringLiteral("status"));
    QVERIFY2(timer.elapsed() >= 900, "a daemon that is starting gets a second");
    QVERIFY2(result.output.contains(QLatin1String("\nDaemons     networking, Wi-Fi, tethering\n")),
             qPrintable(result.output));
    QVERIFY2(result.output.contains(QLatin1String("\nWi-Fi       -\nHotspot     off\n")), qPrintable(result.output));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: there, but of no use to an application: Wi-Fi daemon; it may be starting\n"));
    QCOMPARE(result.code, 3);
}

/*! What they have published is still there. */
void TestMorvekctlDiagnosis::statusOfTheDead()
{
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);
    const ToolResult result = run(QStringLiteral("status"));
    QCOMPARE(result.output,
             QStringLiteral("Root        %1\nDaemons     -\nInterfaces  -\nWi-Fi       -\nHotspot     -\n")
                 .arg(m_root->path()));
    QCOMPARE(result.errors,
             QStringLiteral("morvekctl: not there: networking daemon, Wi-Fi daemon, tethering daemon; start "
                            "morvek-hostd, or set ZOP_ROOT to its root\n"));
    QCOMPARE(result.code, 3);
}

void TestMorvekctlDiagnosis::statusOfNothing()
{
    const QString root = place(QStringLiteral("open"));
    QCOMPARE(::mkdir(QFile::encodeName(root).constData(), 0755), 0);
    const ToolResult closed = runTool(root, {QStringLiteral("status")});
    QCOMPARE(closed.output,
             QStringLiteral("Root        %1\nDaemons     -\nInterfaces  -\nWi-Fi       -\nHotspot     -\n").arg(root));
    QCOMPARE(closed.errors,
             QStringLiteral("morvekctl: the root \"%1\" is open to other users (wanted: mode 0700): close it with "
                            "'chmod 700 \"%1\"'\n")
                 .arg(root));
    QCOMPARE(closed.code, 3);

    const QString absent = place(QStringLiteral("absent"));
    const ToolResult missing = runTool(absent, {QStringLiteral("status"), QStringLiteral("--json")});
    QCOMPARE(missing.output,
             QStringLiteral(R"({"daemons":{"networking":false,"tethering":false,"wifi":false},"root":{"fault":"the )"
                            "root \\\"%1\\\" does not exist: start morvek-hostd, which makes it, or set ZOP_ROOT "
                            R"(to the root of one that runs","path":"%1"},)"
                            R"("services":{"hotspot":null,"interfaces":null,"wifi":null}})"
                            "\n")
                 .arg(absent));
    QCOMPARE(missing.errors,
             QStringLiteral(R"({"code":null,"exitCode":3,"message":"the root \"%1\" does not exist: start )"
                            R"(morvek-hostd, which makes it, or set ZOP_ROOT to the root of one that runs"})"
                            "\n")
                 .arg(absent));
    QCOMPARE(missing.code, 3);
    QVERIFY(!QFile::exists(absent));
}

void TestMorvekctlDiagnosis::ownWordsOnly_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QStringList>("variables");
    QTest::addColumn<bool>("showsErrors");
    QTest::addColumn<bool>("showsWarnings");
    const QStringList none;
    QTest::newRow("usual") << "" << none << false << false;
    QTest::newRow("verbose") << " --verbose" << none << true << true;
    QTest::newRow("errors") << "" << QStringList {QStringLiteral("KREL_VERBOSITY=2")} << true << false;
    QTest::newRow("nothing") << "" << QStringList {QStringLiteral("KREL_VERBOSITY=0")} << false << false;
    QTest::newRow("both") << " --verbose" << QStringList {QStringLiteral("KREL_VERBOSITY=2")} << true << true;
}

/*! The daemons are dead, and what they have published is still there. */
void TestMorvekctlDiagnosis::ownWordsOnly()
{
    QFETCH(QString, option);
    QFETCH(QStringList, variables);
    QFETCH(bool, showsErrors);
    QFETCH(bool, showsWarnings);
    QVERIFY(m_daemon->publish(QStringLiteral("headunit")));
    m_daemon->signal(SIGKILL);
    QCOMPARE(m_daemon->wait(), -1);

    const QString place = QStringLiteral("start morvek-hostd, or set ZOP_ROOT to its root (it is \"%1\"), or add "
                                         "--wait\n")
                              .arg(m_root->path());
    const QRegularExpression error(QStringLiteral("(^|\n)[-0-9T:.]+ error 1300 "));
    const QRegularExpression warning(QStringLiteral("(^|\n)[-0-9T:.]+ warning 1300 "));
    QStringList told;
    for (const char *command : {"interfaces", "wifi status"}) {
        const ToolResult result = run(QLatin1String(command) + option, variables);
        told += result.errors;
        QCOMPARE(result.code, 3);
    }
    QVERIFY(told.first().endsWith(QStringLiteral("morvekctl: the networking daemon is not there: ") + place));
    QVERIFY(told.last().endsWith(QStringLiteral("morvekctl: the Wi-Fi daemon is not there: ") + place));
    QCOMPARE(told.first().contains(warning), showsWarnings);
    QCOMPARE(told.last().contains(error), showsErrors);
    QCOMPARE(told.join(QString()).count(QLatin1Char('\n')) == 2, !showsErrors);
}

QTEST_GUILESS_MAIN(TestMorvekctlDiagnosis)
#include "tst_morvekctl_diagnosis.moc"
