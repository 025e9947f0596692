// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <testunit.h>

using namespace morvek;

/*! The hotspot, used by touch, keys and clicks; each outcome is told where it happened. */
class tst_HotspotPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void switchesByTouchAndByKeys();
    void tellsThatTheSwitchIsRefused();
    void cancelsByTheSwitch();
    void appliesWhatWasChanged();
    void revertsWhatWasChanged();
    void showsThePassphraseOnlyWhenAsked();
    void changesThePassphrase();
    void tellsTheFaultOfEachField();
    void tellsThatAChangeIsRefused();
    void saysThatTheServiceIsAway();

private:
    bool begin();
    QString state() const { return m_screen->property("hotspotSwitch", "stateText").toString(); }
    void fill(const char *field, const char *text);
    /*! What a new form shows once the settings of the unit are read. */
    bool readAgain();

    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<Screen> m_screen;
};

void tst_HotspotPage::init()
{
    m_unit = std::make_unique<TestUnit>();
}

void tst_HotspotPage::cleanup()
{
    m_screen.reset();
    m_unit.reset();
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

bool tst_HotspotPage::begin()
{
    return m_unit->start() && readAgain();
}

bool tst_HotspotPage::readAgain()
{
    m_screen = std::make_unique<Screen>();
    return m_screen->isThere() && m_screen->open(2) && m_screen->waitFor("hotspotNameInput");
}

void tst_HotspotPage::fill(const char *field, const char *text)
{
    QVERIFY(m_screen->click(field));
    m_screen->key(Qt::Key_A, Qt::ControlModifier);
    m_screen->key(Qt::Key_Delete);
    m_screen->type(QLatin1String(text));
}

void tst_HotspotPage::switchesByTouchAndByKeys()
{
    QVERIFY(begin());
    QCOMPARE(state(), QStringLiteral("The hotspot is off."));
    QVERIFY(m_screen->touch("hotspotSwitch"));
    QTRY_COMPARE(state(), QStringLiteral("The hotspot is on."));
    QVERIFY(m_screen->property("hotspotSwitch", "on").toBool());
    QCOMPARE(m_unit->published("/zop/services/tethering/status", "state").toString(), QStringLiteral("ACTIVE"));
    QVERIFY(m_screen->turnTo("hotspotSwitch"));
    m_screen->key(Qt::Key_Return);
    QTRY_COMPARE(state(), QStringLiteral("The hotspot is off."));
    QVERIFY(!m_screen->item("switchOutcome"));
    QVERIFY(m_unit->act("hotspot-starts")); // somebody else
    QTRY_COMPARE(state(), QStringLiteral("The hotspot is on."));
}

void tst_HotspotPage::tellsThatTheSwitchIsRefused()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act("refuse", {{"message", "stop"}, {"err", 5}, {"errmsg", "no"}}));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QTRY_COMPARE(state(), QStringLiteral("The hotspot is on."));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QVERIFY(m_screen->waitForText("switchOutcome", "The hotspot service refuses to switch off."));
    QVERIFY(m_screen->property("hotspotSwitch", "on").toBool());
}

void tst_HotspotPage::cancelsByTheSwitch()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act("no-reply", {{"message", "start"}, {"times", 1}}));
    QVERIFY(m_screen->click("hotspotSwitch"));
    QTRY_VERIFY(m_screen->property("hotspotSwitch", "busy").toBool());
    QVERIFY(m_unit->waitForRequest("start").isValid());
    QVERIFY(m_screen->click("hotspotSwitch"));
    QTRY_COMPARE(state(), QStringLiteral("The hotspot is off."));
    QVERIFY(!m_screen->property("hotspotSwitch", "on").toBool());
}

void tst_HotspotPage::appliesWhatWasChanged()
{
    QVERIFY(begin());
    QVERIFY(!m_screen->item("hotspotApply"));
    fill("hotspotNameInput", "Bus");
    QVERIFY(m_screen->touch("security3")); // WPA and WPA2
    QVERIFY(m_screen->touch("band0"));
    QVERIFY(m_screen->touch("clientsLess"));
    QCOMPARE(m_screen->text("clientsValue"), QStringLiteral("9"));
    QVERIFY(m_screen->touch("blocked"));
    QVERIFY(m_screen->touch("hotspotApply"));
    QVERIFY(m_screen->waitForEnd("hotspotApply"));
    QVERIFY(!m_screen->item("applyOutcome"));
    QCOMPARE(m_unit->waitForRequest("update_profile").answers, QStringList("ok"));

    QVERIFY(readAgain());
    QCOMPARE(m_screen->text("hotspotNameInput"), QStringLiteral("Bus"));
    QVERIFY(m_screen->property("security3", "selected").toBool());
    QVERIFY(!m_screen->property("security2", "selected").toBool());
    QVERIFY(m_screen->property("band0", "selected").toBool());
    QCOMPARE(m_screen->text("clientsValue"), QStringLiteral("9"));
    QVERIFY(m_screen->property("blocked", "on").toBool());
}

void tst_HotspotPage::revertsWhatWasChanged()
{
    QVERIFY(begin());
    fill("hotspotNameInput", "Bus");
    QVERIFY(m_screen->click("clientsMore"));
    QCOMPARE(m_screen->text("clientsValue"), QStringLiteral("11"));
    QVERIFY(m_screen->click("hotspotRevert"));
    QCOMPARE(m_screen->text("hotspotNameInput"), QStringLiteral("Morvek Car"));
    QCOMPARE(m_screen->text("clientsValue"), QStringLiteral("10"));
    QVERIFY(m_screen->waitForEnd("hotspotApply"));
    // The focus is not lost with the button.
    QVERIFY2(m_screen->targets().contains(m_screen->window()->activeFocusItem()), qPrintable(m_screen->focused()));
}

void tst_HotspotPage::showsThePassphraseOnlyWhenAsked()
{
    QVERIFY(begin());
    const auto shown = [&] {
        const QVector<QQuickItem *> items = m_screen->items();
        return std::any_of(items.cbegin(), items.cend(), [](const QQuickItem *item) {
            return item->property("text").toString().contains(QLatin1String("drive safely 8"));
        });
    };
    QVERIFY(!shown());
    QVERIFY(m_screen->click("reveal"));
    QCOMPARE(m_screen->text("revealed"), QStringLiteral("drive safely 8"));
    QVERIFY(m_screen->click("reveal"));
    QVERIFY(!shown());
    QVERIFY(m_screen->click("reveal"));
    QVERIFY(shown());
    QVERIFY(m_screen->open(1)); // who comes back does not find it
    QVERIFY(m_screen->open(2));
    QVERIFY(m_screen->waitFor("reveal"));
    QVERIFY(!shown());
}

void tst_HotspotPage::changesThePassphrase()
{
    QVERIFY(begin());
    QVERIFY(m_screen->click("passphraseInput"));
    m_screen->type(QStringLiteral("new pass phrase"));
    QCOMPARE(m_screen->property("passphraseInput", "displayText").toString(), QString(15, QChar(0x25cf)));
    QVERIFY(m_screen->click("hotspotApply"));
    QVERIFY(m_screen->waitForEnd("hotspotApply"));
    QCOMPARE(m_screen->text("passphraseInput"), QString());
    QVERIFY(m_screen->click("reveal"));
    QCOMPARE(m_screen->text("revealed"), QStringLiteral("new pass phrase"));
}

void tst_HotspotPage::tellsTheFaultOfEachField()
{
    QVERIFY(begin());
    fill("hotspotNameInput", "");
    QVERIFY(m_screen->waitForText("hotspotNameFault", "Enter a name."));
    fill("passphraseInput", "short");
    QVERIFY(m_screen->waitForText("passphraseFault", "The passphrase is too short: 8 characters at least."));
    QVERIFY(m_screen->click("hotspotApply"));
    QVERIFY(m_screen->item("hotspotApply"));
    fill("hotspotNameInput", "Bus");
    QVERIFY(!m_screen->item("hotspotNameFault"));
    fill("passphraseInput", "long enough");
    QVERIFY(!m_screen->item("passphraseFault"));
    QVERIFY(m_screen->click("hotspotApply"));
    QVERIFY(m_screen->waitForEnd("hotspotApply"));
}

void tst_HotspotPage::tellsThatAChangeIsRefused()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act("refuse", {{"message", "update_profile"}, {"err", 8}, {"errmsg", "disk full"}}));
    fill("hotspotNameInput", "Bus");
    QVERIFY(m_screen->click("hotspotApply"));
    QVERIFY(m_screen->waitForText("applyOutcome", "The hotspot service refuses these settings."));
    QCOMPARE(m_screen->text("hotspotNameInput"), QStringLiteral("Bus")); // to be tried again
    QVERIFY(m_screen->item("hotspotRevert"));
}

void tst_HotspotPage::saysThatTheServiceIsAway()
{
    QVERIFY(begin());
    QVERIFY(m_unit->act("daemon-dies", {{"daemon", "tethering"}}));
    QVERIFY(m_screen->waitForText("hotspotAway", "The hotspot service has stopped."));
    QVERIFY(m_unit->act("daemon-back", {{"daemon", "tethering"}}));
    QVERIFY(m_screen->waitForEnd("hotspotAway"));

    m_screen.reset();
    QVERIFY(m_unit->stop());
    m_unit->setWithout({QStringLiteral("tethering")});
    QVERIFY(m_unit->start());
    m_screen = std::make_unique<Screen>();
    QVERIFY(m_screen->open(2));
    QVERIFY(m_screen->waitForText("hotspotAway", "The hotspot service has not started yet."));
    QVERIFY(!m_screen->item("hotspotNameInput"));
}

MORVEK_SCREEN_TEST(tst_HotspotPage)
#include "tst_hotspotpage.moc"
