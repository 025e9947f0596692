// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hotspotfixture.h"

using namespace morvek;

namespace {

const QString Fetch = QStringLiteral("retrieve_profile");
const QString Update = QStringLiteral("update_profile Mine");

} // namespace

/*! How the profile is changed, and what of it is kept, lost and told. */
class HotspotControllerApplyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m.reset(); }

    void writesAndReadsBack();
    void writesEveryField();
    void keepsWhatOthersHaveChanged();
    void writesNothingWhenNothingIsEdited();
    void writesWhatTheFormHeld();
    void isInvalid_data();
    void isInvalid();
    void isInvalidBeforeAnythingIsRead();
    void becomesInvalid();
    void isRefused();
    void settingsAreNotTold();
    void settingsAreNotToldAfterwards();
    void isOvertaken();
    void daemonKeepsSomethingElse();
    void answerOfAnotherKind();
    void endsEarly_data();
    void endsEarly();
    void isBusy();
    void isBusyForAnotherController();
    void changesAnActiveHotspot();
    void becomesOpenAndProtectedAgain();
    void writesAnOpenOneWithoutPassphrase();

private:
    QString passphrase() const { return m->daemon.profile.value(QLatin1String("passphrase")).toString(); }
    QString security() const { return m->daemon.profile.value(QLatin1String("security_type")).toString(); }

    std::unique_ptr<HotspotFixture> m;
};

void HotspotControllerApplyTest::init()
{
    m = std::make_unique<HotspotFixture>();
    QVERIFY(m->waitForProfile());
}

void HotspotControllerApplyTest::writesAndReadsBack()
{
    const StateLog log(m->controller.get());
    QSignalSpy changed(m->controller.get(), &HotspotController::profileChanged);
    m->form()->setName(QStringLiteral("Mine"));
    m->form()->setPassphrase(QStringLiteral("are we there yet?"));
    NetworkRequest *request = m->controller->apply();
    QCOMPARE(request->deadline(), 15000);
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Update, Fetch}));
    QCOMPARE(passphrase(), QStringLiteral("are we there yet?"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m->controller->name(), QStringLiteral("Mine"));
    QCOMPARE(m->controller->reveal(), QStringLiteral("are we there yet?"));
    QVERIFY(!m->form()->isEdited());
    QVERIFY(!m->form()->isPassphraseEdited());
    QCOMPARE(m->form()->name(), QStringLiteral("Mine"));
    QCOMPARE(log.states, QStringList({QStringLiteral("Off, busy"), QStringLiteral("Off")}));
}

void HotspotControllerApplyTest::writesEveryField()
{
    m->form()->setName(QStringLiteral("Mine"));
    m->form()->setPassphrase(QStringLiteral("are we there yet?"));
    m->form()->setSecurity(HotspotForm::WpaAndWpa2);
    m->form()->setBand(HotspotForm::Band2_4GHz);
    m->form()->setMaxClients(4);
    m->form()->setInactivityTime(0);
    m->form()->setPrivacy(true);
    m->form()->setBlockConnections(true);
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(
        QJsonDocument(m->daemon.profile).toJson(QJsonDocument::Compact),
        QByteArray(R"({"autoshutdown_time":0,"block_conn":true,"max_num_sta":4,"mhs_band":"2.4",)"
                   R"("passphrase":"are we there yet?","privacy":true,"security_type":"wpa_mixed","ssid":"Mine"})"));
}

void HotspotControllerApplyTest::keepsWhatOthersHaveChanged()
{
    m->form()->setName(QStringLiteral("Mine"));
    m->daemon.change("max_num_sta", 3);
    m->daemon.change("passphrase", QStringLiteral("another one"));
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(m->daemon.profile.value(QLatin1String("max_num_sta")).toInt(), 3);
    QCOMPARE(passphrase(), QStringLiteral("another one"));
    QCOMPARE(m->daemon.profile.value(QLatin1String("ssid")).toString(), QStringLiteral("Mine"));
    QCOMPARE(m->form()->maxClients(), 3);
}

void HotspotControllerApplyTest::writesNothingWhenNothingIsEdited()
{
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
    // Nor when somebody else has done it.
    m->form()->setName(QStringLiteral("Mine"));
    m->daemon.change("ssid", QStringLiteral("Mine"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Fetch}));
    QVERIFY(!m->form()->isEdited());
}

void HotspotControllerApplyTest::writesWhatTheFormHeld()
{
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *request = m->controller->apply();
    m->form()->setName(QStringLiteral("Mi"));
    m->form()->setPassphrase(QStringLiteral("shor"));
    QCOMPARE(endOf(request), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Update, Fetch}));
    QCOMPARE(passphrase(), QStringLiteral("drive safely 8"));
    QCOMPARE(m->controller->name(), QStringLiteral("Mine"));
    QCOMPARE(m->form()->name(), QStringLiteral("Mi")); // who types goes on
    QVERIFY(m->form()->isPassphraseEdited());
}

void HotspotControllerApplyTest::isInvalid_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("sentence");
    QTest::addRow("name") << QStringLiteral("name") << QVariant(QString()) << QStringLiteral("Enter a name.");
    QTest::addRow("clients") << QStringLiteral("maxClients") << QVariant(0)
                             << QStringLiteral("Enter how many devices may connect: 1 at least.");
    QTest::addRow("time") << QStringLiteral("inactivityTime") << QVariant(-1)
                          << QStringLiteral("Enter how long it stays on unused: 0 or more.");
    QTest::addRow("security") << QStringLiteral("security") << QVariant(int(HotspotForm::UnknownSecurity))
                              << QStringLiteral("Choose how the hotspot is protected.");
    QTest::addRow("passphrase") << QString() << QVariant(QStringLiteral("short"))
                                << QStringLiteral("The passphrase is too short: 8 characters at least.");
}

void HotspotControllerApplyTest::isInvalid()
{
    QFETCH(QString, property);
    QFETCH(QVariant, value);
    QFETCH(QString, sentence);
    if (property.isEmpty())
        m->form()->setPassphrase(value.toString());
    else
        QVERIFY(m->form()->setProperty(qPrintable(property), value));
    const NetworkRequest *request = m->controller->apply();
    QCOMPARE(endOf(request), QStringLiteral("Invalid"));
    QCOMPARE(request->sentence(), sentence);
    QVERIFY(m->daemon.requests.isEmpty());
    QVERIFY(m->form()->isEdited());
}

void HotspotControllerApplyTest::isInvalidBeforeAnythingIsRead()
{
    m = std::make_unique<HotspotFixture>();
    m->daemon.refuse("retrieve_profile");
    QTRY_COMPARE(m->controller->availability(), NetworkController::Ready);
    const NetworkRequest *request = m->controller->apply();
    QCOMPARE(endOf(request), QStringLiteral("Invalid"));
    QCOMPARE(request->sentence(), QStringLiteral("The settings of the hotspot have not been read yet."));
}

void HotspotControllerApplyTest::becomesInvalid()
{
    m->form()->setName(QStringLiteral("Mine"));
    m->daemon.change("security_type", QStringLiteral("wpa3"));
    const NetworkRequest *request = m->controller->apply();
    QCOMPARE(endOf(request), QStringLiteral("Invalid"));
    QCOMPARE(request->sentence(), QStringLiteral("Choose how the hotspot is protected."));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
    QCOMPARE(m->form()->securityFault(), HotspotForm::NotSelectable);
    m->form()->setSecurity(HotspotForm::Wpa2);
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(security(), QStringLiteral("wpa2"));
}

void HotspotControllerApplyTest::isRefused()
{
    m->daemon.refuse("update_profile");
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *request = m->controller->apply();
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->code(), -1);
    QCOMPARE(request->text(), QStringLiteral("Failed to update WifiHotspot config."));
    QCOMPARE(request->sentence(), QStringLiteral("The hotspot service refuses these settings."));
    QCOMPARE(m->form()->name(), QStringLiteral("Mine"));
    QVERIFY(m->form()->isEdited());
    m->daemon.answers.clear();
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
}

void HotspotControllerApplyTest::settingsAreNotTold()
{
    m->daemon.refuse("retrieve_profile");
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *request = m->controller->apply();
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->sentence(), QStringLiteral("No settings were changed: those of now cannot be read."));
    QCOMPARE(m->daemon.requests, QStringList({Fetch}));
}

void HotspotControllerApplyTest::settingsAreNotToldAfterwards()
{
    m->daemon.silentTo += QStringLiteral("update_profile");
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *request = m->controller->apply();
    QVERIFY(waitForRequest(m->daemon, "update_profile"));
    m->daemon.refuse("retrieve_profile");
    m->daemon.speak("update_profile");
    QCOMPARE(endOf(request), QStringLiteral("Refused"));
    QCOMPARE(request->sentence(), QStringLiteral("The settings were changed, but cannot be read again."));
}

void HotspotControllerApplyTest::isOvertaken()
{
    m->daemon.silentTo += QStringLiteral("update_profile");
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *request = m->controller->apply();
    QVERIFY(waitForRequest(m->daemon, "update_profile"));
    m->daemon.speak("update_profile");
    m->daemon.change("ssid", QStringLiteral("Theirs"));
    QCOMPARE(endOf(request), QStringLiteral("Overtaken"));
    QCOMPARE(request->sentence(),
             QStringLiteral("The settings are not what was asked for: another application may have changed them."));
    QCOMPARE(m->controller->name(), QStringLiteral("Theirs"));
    QCOMPARE(m->form()->name(), QStringLiteral("Mine"));
    QVERIFY(m->form()->isEdited());
}

void HotspotControllerApplyTest::daemonKeepsSomethingElse()
{
    m->daemon.answers.insert(QStringLiteral("update_profile"), {}); // taken, but not kept
    m->form()->setPassphrase(QStringLiteral("are we there yet?"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("Overtaken"));
    QVERIFY(m->form()->isPassphraseEdited());
    QCOMPARE(m->controller->reveal(), QStringLiteral("drive safely 8"));
}

void HotspotControllerApplyTest::answerOfAnotherKind()
{
    m->daemon.answers.insert(QStringLiteral("update_profile"), {{QStringLiteral("res"), QStringLiteral("stop")}});
    m->form()->setName(QStringLiteral("Mine"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("Overtaken")); // what is read tells
    m->daemon.answers.clear();
    m->daemon.answers.insert(Fetch, {{QStringLiteral("res"), QStringLiteral("stop")}});
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("Refused"));
}

void HotspotControllerApplyTest::endsEarly_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("beginning");
    QTest::newRow("Cancelled") << QStringLiteral("Cancelled") << QStringLiteral("Cancelled. ");
    QTest::newRow("TimedOut") << QStringLiteral("TimedOut") << QStringLiteral("The hotspot service does not answer. ");
    QTest::newRow("Lost") << QStringLiteral("Lost") << QStringLiteral("The hotspot service has stopped. ");
}

void HotspotControllerApplyTest::endsEarly()
{
    QFETCH(QString, how);
    QFETCH(QString, beginning);
    const auto end = [&](NetworkRequest *request) {
        if (how == QLatin1String("Cancelled"))
            request->cancel();
        else if (how == QLatin1String("TimedOut"))
            request->setDeadline(1);
        else
            m->daemon.die();
    };
    const struct
    {
        const char *silentTo;
        int nth;
        QString outlook;
    } stages[] = {
        {"retrieve_profile", 1, QStringLiteral("No settings were changed.")},
        {"update_profile", 1, QStringLiteral("The settings may still be changed.")},
        {"retrieve_profile", 2, QStringLiteral("The settings were changed, but not read again.")},
    };
    for (const auto &stage : stages) {
        m = std::make_unique<HotspotFixture>();
        QVERIFY(m->waitForProfile());
        m->form()->setName(QStringLiteral("Mine"));
        m->daemon.silentTo += QString::fromLatin1(stage.nth == 2 ? "update_profile" : stage.silentTo);
        NetworkRequest *request = m->controller->apply();
        if (stage.nth == 2) {
            QVERIFY(waitForRequest(m->daemon, "update_profile"));
            m->daemon.silentTo += Fetch;
            m->daemon.speak("update_profile");
        }
        QVERIFY(waitForRequest(m->daemon, stage.silentTo, stage.nth));
        end(request);
        QCOMPARE(endOf(request), how);
        QCOMPARE(request->sentence(), beginning + stage.outlook);
        QVERIFY(m->form()->isEdited());
    }
}

void HotspotControllerApplyTest::isBusyForAnotherController()
{
    HotspotController other(m->services.get());
    QTRY_VERIFY(other.isProfileKnown());
    other.form()->setMaxClients(3);
    m->form()->setName(QStringLiteral("Mine"));
    m->daemon.silentTo += QStringLiteral("update_profile");
    const NetworkRequest *apply = m->controller->apply();
    QVERIFY(waitForRequest(m->daemon, "update_profile"));
    const NetworkRequest *second = other.apply();
    QCOMPARE(endOf(second), QStringLiteral("Busy"));
    QCOMPARE(second->sentence(), QStringLiteral("The settings of the hotspot are being changed already."));
    QCOMPARE(endOf(other.setOn(true)), QStringLiteral("Busy"));
    m->daemon.speak("update_profile");
    QCOMPARE(endOf(apply), QStringLiteral("done"));
    QCOMPARE(endOf(other.apply()), QStringLiteral("done"));

    // Nor is it for ever when its controller is gone.
    m->daemon.silentTo += QStringLiteral("update_profile");
    m->form()->setName(QStringLiteral("Ours"));
    m->controller->apply();
    QVERIFY(waitForRequest(m->daemon, "update_profile", 3));
    m->controller.reset();
    QCOMPARE(endOf(other.setOn(true)), QStringLiteral("done"));
}

void HotspotControllerApplyTest::isBusy()
{
    m->daemon.performs = false;
    m->form()->setName(QStringLiteral("Mine"));
    const NetworkRequest *on = m->controller->setOn(true);
    const NetworkRequest *apply = m->controller->apply();
    QCOMPARE(endOf(apply), QStringLiteral("Busy"));
    QCOMPARE(apply->sentence(), QStringLiteral("The hotspot is being switched on."));
    QVERIFY(waitForRequest(m->daemon, "start"));
    m->daemon.setActive(true);
    QCOMPARE(endOf(on), QStringLiteral("done"));

    m->daemon.silentTo += QStringLiteral("stop"); // which needs no profile
    const NetworkRequest *off = m->controller->setOn(false);
    m->daemon.silentTo += QStringLiteral("update_profile");
    apply = m->controller->apply();
    const NetworkRequest *second = m->controller->apply();
    QCOMPARE(endOf(second), QStringLiteral("Busy"));
    QCOMPARE(second->sentence(), QStringLiteral("The settings of the hotspot are being changed already."));
    QVERIFY(waitForRequest(m->daemon, "update_profile"));
    m->daemon.speak("update_profile");
    QCOMPARE(endOf(apply), QStringLiteral("done"));
    m->daemon.speak("stop");
    m->daemon.setActive(false);
    QCOMPARE(endOf(off), QStringLiteral("done"));
    m->form()->setName(QStringLiteral("Mine again"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
}

void HotspotControllerApplyTest::changesAnActiveHotspot()
{
    m->daemon.setActive(true);
    QTRY_VERIFY(m->controller->isOn());
    m->form()->setName(QStringLiteral("Mine"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(m->daemon.requests, QStringList({Fetch, Update, Fetch}));
    QCOMPARE(stateOf(*m->controller), QStringLiteral("On, on"));
}

void HotspotControllerApplyTest::becomesOpenAndProtectedAgain()
{
    m->form()->setSecurity(HotspotForm::Open);
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(security(), QStringLiteral("none"));
    QCOMPARE(passphrase(), QStringLiteral("drive safely 8")); // for when it is protected again
    m->form()->setSecurity(HotspotForm::Wpa2);
    QVERIFY(m->form()->isValid());
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(passphrase(), QStringLiteral("drive safely 8"));
}

void HotspotControllerApplyTest::writesAnOpenOneWithoutPassphrase()
{
    m->daemon.change("passphrase", QString());
    QCOMPARE(endOf(m->controller->fetch()), QStringLiteral("done"));
    QCOMPARE(m->form()->passphraseFault(), HotspotForm::Missing);
    m->form()->setSecurity(HotspotForm::Open);
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(security(), QStringLiteral("none"));
    QCOMPARE(passphrase(), QStringLiteral("none"));
    QVERIFY(m->controller->reveal().isEmpty());
    m->form()->setSecurity(HotspotForm::Wpa2);
    QCOMPARE(m->form()->passphraseFault(), HotspotForm::Missing);
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("Invalid"));
    m->form()->setPassphrase(QStringLiteral("are we there yet?"));
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(passphrase(), QStringLiteral("are we there yet?"));
    // One that is open without any passphrase is written so that the library takes it.
    m->daemon.change("security_type", QStringLiteral("none"));
    m->daemon.change("passphrase", QString());
    QCOMPARE(endOf(m->controller->apply()), QStringLiteral("done"));
    QCOMPARE(passphrase(), QStringLiteral("none"));
}

CONTRACT_TEST_MAIN(HotspotControllerApplyTest)
#include "tst_hotspotcontrollerapply.moc"
