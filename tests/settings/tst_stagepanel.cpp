// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

/*! The panel of a developer's desk: one click for each thing that can happen to a unit. */
class tst_StagePanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void showsWhatAClickDoes();
    void playsEachAct();
    void saysWhatCannotBePlayed();
    void turnsDayIntoNightAndDrives();
    void theKnobPassesItBy();

private:
    static Screen::Options options();
};

Screen::Options tst_StagePanel::options()
{
    Screen::Options options;
    options.scenario = QStringLiteral("headunit");
    return options;
}

void tst_StagePanel::cleanup()
{
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

void tst_StagePanel::showsWhatAClickDoes()
{
    Screen screen(options());
    QVERIFY(screen.open(0));
    QVERIFY(screen.waitFor("interface_eth0"));
    QVERIFY(screen.click("stage_link-lost_link lost"));
    QCOMPARE(screen.text("stageAnswer"), QStringLiteral("Done."));
    QTRY_COMPARE(screen.property("interface_eth0", "stateText").toString(),
                 QStringLiteral("No link: it cannot be used now."));
    QVERIFY(screen.click("stage_vanish_unplugged"));
    QVERIFY(screen.waitForEnd("interface_eth0"));

    QVERIFY(screen.open(1));
    QVERIFY(screen.waitFor("network_Garage"));
    QVERIFY(screen.click("stage_wrong-key_wrong key, Garage"));
    QVERIFY(screen.click("network_Garage"));
    QVERIFY(screen.waitFor("passkeyInput"));
    screen.type(QStringLiteral("open sesame 42"));
    QVERIFY(screen.click("dialogAction"));
    QTRY_COMPARE_WITH_TIMEOUT(screen.text("dialogOutcome"), QStringLiteral("The passkey of “Garage” is wrong."), 20000);
    QVERIFY(screen.click("dialogClose"));
    QVERIFY(screen.click("stage_daemon-dies_Wi-Fi dies"));
    QVERIFY(screen.waitForText("wifiAway", "The Wi-Fi service has stopped."));

    QVERIFY(screen.open(2));
    QVERIFY(screen.click("stage_refuse_next start is refused"));
    QVERIFY(screen.click("hotspotSwitch"));
    QVERIFY(screen.waitFor("switchOutcome"));
}

void tst_StagePanel::playsEachAct()
{
    Screen screen(options());
    QVERIFY(screen.waitFor("stageNight"));
    const QQuickItem *panel = screen.item("stagePanel");
    const QVariantList acts = panel->property("acts").toList();
    QVERIFY(acts.size() > 30);
    for (const QVariant &act : acts) {
        const QVariantMap words = act.toMap();
        if (!words.contains(QStringLiteral("what")))
            continue;
        QVERIFY(screen.click(qPrintable(
            QStringLiteral("stage_%1_%2").arg(words.value("what").toString(), words.value("text").toString()))));
        QVERIFY2(screen.text("stageAnswer") == QLatin1String("Done."),
                 qPrintable(words.value("text").toString() + QStringLiteral(": ") + screen.text("stageAnswer")));
    }
}

void tst_StagePanel::saysWhatCannotBePlayed()
{
    Screen screen(options());
    QVERIFY(screen.click("stage_link-regained_link back"));
    QVERIFY2(screen.text("stageAnswer").contains(QLatin1String("\"eth0\" has a link already")),
             qPrintable(screen.text("stageAnswer")));
    QCOMPARE(Screen::takeWarnings().size(), 1); // of the unit, for a developer
}

void tst_StagePanel::turnsDayIntoNightAndDrives()
{
    Screen screen(options());
    QVERIFY(screen.click("stageNight"));
    QVERIFY(screen.settings()->property("night").toBool());
    QVERIFY(screen.click("stageMoving"));
    QVERIFY(screen.settings()->property("moving").toBool());
    QVERIFY(screen.click("stageMoving"));
    QVERIFY(!screen.settings()->property("moving").toBool());
    QCOMPARE(screen.settings()->size(), QSizeF(1280, 720));
}

void tst_StagePanel::theKnobPassesItBy()
{
    Screen screen(options());
    QVERIFY(screen.open(2));
    QVERIFY(screen.waitFor("hotspotNameInput"));
    for (int i = 0; i < 40; ++i) {
        screen.key(Qt::Key_Down);
        QVERIFY2(screen.targets().contains(screen.window()->activeFocusItem()), qPrintable(screen.focused()));
    }
}

MORVEK_SCREEN_TEST(tst_StagePanel)
#include "tst_stagepanel.moc"
