// SPDX-License-Identifier: Apache-2.0
#include "screentest.h"

#include <testunit.h>

using namespace morvek;

/*! The networks of the car, used by touch, keys and clicks; each outcome is told where it happened. */
class tst_NetworksPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void tellsHowEachNetworkIs();
    void tellsWhatANetworkHas();
    void tellsTheFaultOfEachField();
    void setsAnAddressByHandWithTheKnob();
    void setsAnAutomaticAddressByTouch();
    void asksForAnAddressAgain();
    void tellsARefusal();
    void tellsWhatMayComeOfACancelledAttempt();
    void tellsOfANetworkThatVanishes();
    void saysThatTheServiceIsAway();
    void staysOpenUntilAnInterfaceHasItsAddresses();

private:
    bool begin(const char *scenario);
    bool applyAnotherAddress();
    /*! What was asked for it last. */
    QObject *request(const char *interface) const;
    QString stateOf(const char *interface) const;

    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<Screen> m_screen;
};

void tst_NetworksPage::init()
{
    m_unit = std::make_unique<TestUnit>();
}

void tst_NetworksPage::cleanup()
{
    m_screen.reset();
    m_unit.reset();
    QCOMPARE(Screen::takeWarnings(), QStringList());
}

bool tst_NetworksPage::begin(const char *scenario)
{
    if (!m_unit->start(QLatin1String(scenario)))
        return false;
    m_screen = std::make_unique<Screen>();
    return m_screen->isThere() && m_screen->open(0);
}

/*! To eth0.5, which has one by hand. */
bool tst_NetworksPage::applyAnotherAddress()
{
    if (!m_screen->click("interface_eth0.5") || !m_screen->click("addressInput"))
        return false;
    m_screen->key(Qt::Key_A, Qt::ControlModifier);
    m_screen->type(QStringLiteral("172.16.5.9"));
    return m_screen->click("apply");
}

QObject *tst_NetworksPage::request(const char *interface) const
{
    for (const QQuickItem *item : m_screen->settings()->findChildren<QQuickItem *>()) {
        auto *found = item->property("request").value<QObject *>();
        if (found && found->property("subject") == QLatin1String(interface))
            return found;
    }
    return nullptr;
}

QString tst_NetworksPage::stateOf(const char *interface) const
{
    return m_screen->property(qPrintable(QStringLiteral("interface_") + QLatin1String(interface)), "stateText")
        .toString();
}

void tst_NetworksPage::tellsHowEachNetworkIs()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("interface_wlan0"));
    QCOMPARE(stateOf("wlan0"), QStringLiteral("Connected. Preferred."));
    QCOMPARE(stateOf("eth0"), QStringLiteral("Connected."));
    QCOMPARE(m_screen->text("interface_cell0"), QStringLiteral("Mobile network"));
    QVERIFY(m_unit->act("link-lost", {{"interface", "eth0"}}));
    QTRY_COMPARE(stateOf("eth0"), QStringLiteral("No link: it cannot be used now."));
    QCOMPARE(stateOf("cell0"), QStringLiteral("Connected."));
    QVERIFY(m_unit->act("vanish", {{"interface", "cell0"}}));
    QVERIFY(m_screen->waitForEnd("interface_cell0"));
    QVERIFY(m_unit->act("appear", {{"interface", "cell0"}}));
    QTRY_COMPARE(stateOf("cell0"), QStringLiteral("Connected."));
}

void tst_NetworksPage::tellsWhatANetworkHas()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->touch("interface_eth0.5"));
    QVERIFY(m_screen->waitFor("back"));
    QVERIFY(m_screen->item("back")->hasActiveFocus());
    QStringList texts;
    for (const QQuickItem *item : m_screen->items()) {
        if (item->inherits("QQuickText"))
            texts += item->property("text").toString();
    }
    for (const char *text :
         {"Ethernet · \u2068eth0.5\u2069", "172.16.5.2/24", "172.16.5.1", "eth0", "02:00:00:00:10:02"})
        QVERIFY2(texts.contains(QString::fromUtf8(text)), text);
    // What it has by hand is there to be changed.
    QCOMPARE(m_screen->text("addressInput"), QStringLiteral("172.16.5.2"));
    QCOMPARE(m_screen->text("netmaskInput"), QStringLiteral("255.255.255.0"));
    QCOMPARE(m_screen->text("gatewayInput"), QStringLiteral("172.16.5.1"));
    m_screen->key(Qt::Key_Escape);
    QVERIFY(m_screen->waitFor("interface_eth0.5"));
    QVERIFY(m_screen->item("interface_eth0.5")->hasActiveFocus());
}

void tst_NetworksPage::tellsTheFaultOfEachField()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->click("interface_eth0"));
    QVERIFY(m_screen->click("kind0"));
    QVERIFY(m_screen->waitFor("addressInput"));
    const struct
    {
        const char *field;
        const char *typed;
        const char *fault;
    } rows[] = {
        {"address", "10.20.0", "Not an address: four numbers from 0 to 255 with dots between them."},
        {"netmask", "255.0.255.0", "Not a netmask: one is like 255.255.255.0, or like 24."},
        {"gateway", "", "Missing."},
    };
    for (const auto &row : rows) {
        QVERIFY(m_screen->click(qPrintable(QLatin1String(row.field) + QLatin1String("Input"))));
        m_screen->key(Qt::Key_A, Qt::ControlModifier);
        m_screen->key(Qt::Key_Delete);
        m_screen->type(QLatin1String(row.typed));
        // It is not found fault with what is not finished yet.
        QVERIFY(!m_screen->item(QLatin1String(row.field) + QLatin1String("Fault")));
    }
    QVERIFY(m_screen->click("apply"));
    for (const auto &row : rows)
        QVERIFY(m_screen->waitForText(qPrintable(QLatin1String(row.field) + QLatin1String("Fault")), row.fault));
    QVERIFY(!m_screen->item("detailsOutcome"));
    QVERIFY(m_unit->requests().isEmpty() || m_unit->requests().constLast().daemon != QLatin1String("networking"));

    // From now on each fault goes when it is mended.
    QVERIFY(m_screen->click("gatewayInput"));
    m_screen->type(QStringLiteral("10.20.0.1"));
    QVERIFY(!m_screen->item("gatewayFault"));
}

void tst_NetworksPage::setsAnAddressByHandWithTheKnob()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("interface_eth0"));
    QVERIFY(m_screen->turnTo("interface_eth0"));
    m_screen->key(Qt::Key_Return);
    QVERIFY(m_screen->turnTo("kind0"));
    m_screen->key(Qt::Key_Return);
    const char *const values[][2] = {
        {"addressInput", "10.20.0.77"}, {"netmaskInput", "16"}, {"gatewayInput", "10.20.0.1"}};
    for (const auto &value : values) {
        QVERIFY(m_screen->turnTo(value[0]));
        m_screen->key(Qt::Key_A, Qt::ControlModifier);
        m_screen->type(QLatin1String(value[1]));
    }
    QVERIFY(m_screen->turnTo("apply"));
    m_screen->key(Qt::Key_Return);
    QTRY_VERIFY(!m_unit->waitForRequest("net_connected", {{"interface", "eth0"}}).answers.isEmpty());
    QTRY_COMPARE(m_screen->text("detailsState"), QStringLiteral("Connected."));
    QTRY_COMPARE(m_screen->text("apply"), QStringLiteral("Apply"));
    QVERIFY(!m_screen->item("detailsOutcome"));
    const auto path = QStringLiteral("/zop/services/networking/all/interfaces/eth0");
    QCOMPARE(m_unit->published(path, "ip_addresses"), QJsonValue(QJsonArray {"10.20.0.77/255.255.0.0"}));
}

void tst_NetworksPage::setsAnAutomaticAddressByTouch()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->touch("interface_eth0.5"));
    QVERIFY(m_screen->touch("kind1"));
    QVERIFY(m_screen->waitForEnd("addressInput"));
    QVERIFY(m_screen->touch("apply"));
    // Nobody answers there.
    QVERIFY(m_unit->waitForRequest("net_connected", {{"interface", "eth0.5"}}).isValid());
    QCOMPARE(m_screen->text("apply"), QStringLiteral("Cancel"));
    QVERIFY(request("eth0.5")->setProperty("deadline", 1000));
    QVERIFY(m_screen->waitForText("detailsOutcome", "eth0.5 has got no address: no network has answered it."));
    QVERIFY(m_screen->touch("back"));
    QVERIFY(m_screen->waitForText("outcome_eth0.5", "eth0.5 has got no address: no network has answered it."));
    QVERIFY(!m_screen->item("outcome_eth0"));
}

void tst_NetworksPage::asksForAnAddressAgain()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("interface_eth0"));
    QVERIFY(m_unit->act(
        "set",
        {{"interface", "eth0"},
         {"attributes",
          QVariantMap {{"connected", false}, {"ip_addresses", QVariantList()}, {"ip_gateway", QVariantList()}}}}));
    QTRY_COMPARE(stateOf("eth0"), QStringLiteral("Waiting for an address."));
    QVERIFY(!m_screen->item("repair_eth0"));
    auto *controller = m_screen->property("networksPage", "controller").value<QObject *>();
    QVERIFY(controller->property("interfaces").value<QObject *>()->setProperty("leaseTime", 1));
    QVERIFY(m_screen->waitForText("repair_eth0", "Ask for an address"));
    QVERIFY(m_screen->turnTo("repair_eth0"));
    m_screen->key(Qt::Key_Return);
    QTRY_COMPARE(stateOf("eth0"), QStringLiteral("Connected."));
    QVERIFY(m_screen->waitForEnd("repair_eth0"));
    QVERIFY(m_screen->waitForEnd("cancel_eth0"));
    QVERIFY(!m_screen->item("outcome_eth0"));
    // The focus is not lost with the button.
    QVERIFY2(m_screen->item("interface_eth0")->hasActiveFocus(), qPrintable(m_screen->focused()));
}

void tst_NetworksPage::tellsARefusal()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("refuse",
                        {{"message", "net_connected"}, {"interface", "eth0.5"}, {"err", 16}, {"errmsg", "busy"}}));
    QVERIFY(applyAnotherAddress());
    QVERIFY(m_screen->waitForText("detailsOutcome", "eth0.5 was refused its new settings. It has no address now."));
}

void tst_NetworksPage::tellsWhatMayComeOfACancelledAttempt()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("no-reply", {{"message", "net_connected"}, {"interface", "eth0.5"}}));
    QVERIFY(applyAnotherAddress());
    QVERIFY(m_screen->waitForText("apply", "Cancel"));
    QVERIFY(m_unit->waitForRequest("net_connected", {{"interface", "eth0.5"}}).isValid());
    QVERIFY(m_screen->click("back"));
    QVERIFY(m_screen->click("cancel_eth0.5"));
    QVERIFY(m_screen->waitForText("outcome_eth0.5", "Cancelled. eth0.5 may still get the new settings."));
}

void tst_NetworksPage::tellsOfANetworkThatVanishes()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("no-reply", {{"message", "net_connected"}, {"interface", "eth0.5"}}));
    QVERIFY(applyAnotherAddress());
    QVERIFY(m_unit->waitForRequest("net_connected", {{"interface", "eth0.5"}}).isValid());
    QVERIFY(m_unit->act("vanish", {{"interface", "eth0.5"}}));
    QVERIFY(m_screen->waitForText("detailsGone", "This network is not there any more."));
    QVERIFY(!m_screen->item("apply"));
    QVERIFY(m_screen->click("back"));
    QVERIFY(m_screen->waitFor("interface_eth0"));
    QVERIFY(m_screen->waitForText("orphanOutcome", "eth0.5 is not there any more."));
}

void tst_NetworksPage::saysThatTheServiceIsAway()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitFor("interface_eth0"));
    QVERIFY(m_unit->act("daemon-dies"));
    QVERIFY(m_screen->waitForText("networksAway", "The network service has stopped."));
    QVERIFY(m_screen->item("interface_eth0")); // what was told last
    QVERIFY(m_unit->act("daemon-back"));
    QVERIFY(m_screen->waitForEnd("networksAway"));

    m_screen.reset();
    QVERIFY(m_unit->stop());
    m_unit->setWithout({QStringLiteral("networking")});
    QVERIFY(begin("headunit"));
    QVERIFY(m_screen->waitForText("networksAway", "The network service has not started yet."));
}

void tst_NetworksPage::staysOpenUntilAnInterfaceHasItsAddresses()
{
    QVERIFY(begin("headunit"));
    QVERIFY(m_unit->act("late", {{"message", "net_disconnected"}, {"interface", "eth0.5"}, {"delay", 3000}}));
    QVERIFY(applyAnotherAddress());
    QVERIFY(m_unit->waitForRequest("net_disconnected").isValid());
    QTRY_VERIFY(!m_screen->settings()->property("idle").toBool());
    m_screen->window()->close();
    QVERIFY(m_screen->window()->isVisible());
    QVERIFY(m_unit->pass(3000));
    QTRY_VERIFY(!m_screen->window()->isVisible());
    QVERIFY(m_unit->waitForRequest("net_connected").isValid());
}

MORVEK_SCREEN_TEST(tst_NetworksPage)
#include "tst_networkspage.moc"
