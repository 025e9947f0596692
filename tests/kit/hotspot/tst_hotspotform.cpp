// SPDX-License-Identifier: Apache-2.0
#include "hotspotform.h"
#include "memorysearch.h"

#include <wifihotspot.h>

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const MemorySearch Typed("uzqfe.cz.uif.esjwfs.upebz"); // "typed-by-the-driver-today"

WifiHotspot car()
{
    WifiHotspot car;
    car.setName(QStringLiteral("Morvek Car"));
    car.setPassphrase(QStringLiteral("drive safely 8"));
    car.setSecurityType(WifiSecurityProtocolWpa2);
    car.setBand(WifiBand5GHz);
    car.setMaxClients(10);
    car.setInactivityTime(600);
    car.setPrivacy(true);
    return car;
}

/*! Differs from car() in every field. */
WifiHotspot other()
{
    WifiHotspot other;
    other.setName(QStringLiteral("Passengers"));
    other.setPassphrase(QStringLiteral("are we there yet?"));
    other.setSecurityType(WifiSecurityProtocolWpa | WifiSecurityProtocolWpa2);
    other.setBand(WifiBand2_4GHz);
    other.setMaxClients(4);
    other.setInactivityTime(0);
    other.setBlockConn(true);
    return other;
}

/*! The fields that can be seen, on one line. */
QString fieldsOf(const HotspotForm &form)
{
    return QStringLiteral("%1, %2, %3, %4, %5, %6, %7")
        .arg(form.name())
        .arg(form.security())
        .arg(form.band())
        .arg(form.maxClients())
        .arg(form.inactivityTime())
        .arg(form.privacy() ? QStringLiteral("private") : QStringLiteral("public"),
             form.blockConnections() ? QStringLiteral("blocked") : QStringLiteral("free"));
}

void editAll(HotspotForm *form)
{
    form->setName(QStringLiteral("Passengers"));
    form->setPassphrase(QStringLiteral("are we there yet?"));
    form->setSecurity(HotspotForm::WpaAndWpa2);
    form->setBand(HotspotForm::Band2_4GHz);
    form->setMaxClients(4);
    form->setInactivityTime(0);
    form->setPrivacy(false);
    form->setBlockConnections(true);
}

} // namespace

class HotspotFormTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beforeAnythingIsRead();
    void editedBeforeAnythingIsRead();
    void tellsWhatIsRead();
    void readsEachSecurity_data();
    void readsEachSecurity();
    void followsUnlessEdited();
    void eachFieldAlone_data();
    void eachFieldAlone();
    void editedBackIsNotEdited();
    void readAsItWasEdited();
    void revertForgets();
    void appliesWhatWasEditedOnly();
    void appliesToAnotherProfile();
    void names_data();
    void names();
    void passphrases_data();
    void passphrases();
    void numbers_data();
    void numbers();
    void unknownSecurityStays();
    void unknownSecurityCanBeReplaced();
    void emptyPassphraseLeavesIt();
    void openNeedsNoPassphrase();
    void openKeepsThePassphrase();
    void openWritesNoImpossiblePassphrase();
    void openIsWrittenWithoutPassphrase();
    void protectedAgainNeedsAPassphrase();
    void tellsChangesOnly();
    void stateComesBeforeItsSignal();
    void textsFitAScreen();
    void passphraseIsInNoProperty();
    void passphraseIsWiped();
};

void HotspotFormTest::beforeAnythingIsRead()
{
    HotspotForm form;
    QCOMPARE(fieldsOf(form), QStringLiteral(", 2, 0, -1, -1, public, free"));
    QVERIFY(!form.isEdited());
    QVERIFY(!form.isValid());
    QCOMPARE(form.nameFault(), HotspotForm::Missing);
    QCOMPARE(form.passphraseFault(), HotspotForm::Missing);
    QCOMPARE(form.securityFault(), HotspotForm::NoFault);
    QCOMPARE(form.maxClientsFault(), HotspotForm::Missing);
    QCOMPARE(form.inactivityTimeFault(), HotspotForm::Missing);
}

void HotspotFormTest::editedBeforeAnythingIsRead()
{
    HotspotForm form;
    form.setPrivacy(false); // which is what it shows, but not what will be read
    form.setSecurity(HotspotForm::Wpa2);
    QVERIFY(form.isEdited());
    WifiHotspot profile = other();
    profile.setPrivacy(true);
    form.read(profile);
    QCOMPARE(fieldsOf(form), QStringLiteral("Passengers, 2, 0, 4, 0, public, blocked"));
    QVERIFY(form.isEdited());
}

void HotspotFormTest::tellsWhatIsRead()
{
    HotspotForm form;
    form.read(car());
    QCOMPARE(fieldsOf(form), QStringLiteral("Morvek Car, 2, 1, 10, 600, private, free"));
    QVERIFY(form.isValid());
    QVERIFY(!form.isEdited());
    QVERIFY(!form.isPassphraseEdited());
    form.read(other());
    QCOMPARE(fieldsOf(form), QStringLiteral("Passengers, 3, 0, 4, 0, public, blocked"));
    QVERIFY(form.isValid());
    QVERIFY(!form.isEdited());
}

void HotspotFormTest::readsEachSecurity_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("security");
    QTest::addRow("none") << 0x1 << int(HotspotForm::Open);
    QTest::addRow("WPA") << 0x4 << int(HotspotForm::Wpa);
    QTest::addRow("WPA2") << 0x8 << int(HotspotForm::Wpa2);
    QTest::addRow("both") << 0xc << int(HotspotForm::WpaAndWpa2);
    QTest::addRow("nothing that is known") << 0x0 << int(HotspotForm::UnknownSecurity);
    QTest::addRow("WEP") << 0x2 << int(HotspotForm::UnknownSecurity);
    QTest::addRow("none and WPA2") << 0x9 << int(HotspotForm::UnknownSecurity);
}

void HotspotFormTest::readsEachSecurity()
{
    QFETCH(int, flags);
    QFETCH(int, security);
    HotspotForm form;
    WifiHotspot profile = car();
    profile.setSecurityType(QFlags<WifiSecurityProtocol>(flags));
    form.read(profile);
    QCOMPARE(int(form.security()), security);
    QCOMPARE(form.securityFault(),
             security == HotspotForm::UnknownSecurity ? HotspotForm::NotSelectable : HotspotForm::NoFault);
    if (security == HotspotForm::UnknownSecurity)
        return;
    HotspotForm chosen;
    profile.setSecurityType(QFlags<WifiSecurityProtocol>());
    chosen.read(profile);
    chosen.setSecurity(HotspotForm::Security(security));
    QCOMPARE(int(chosen.applied(profile).securityType()), flags);
}

void HotspotFormTest::followsUnlessEdited()
{
    HotspotForm form;
    form.read(car());
    form.setName(QStringLiteral("Mine"));
    form.setMaxClients(7);
    form.read(other());
    QCOMPARE(fieldsOf(form), QStringLiteral("Mine, 3, 0, 7, 0, public, blocked"));
    QVERIFY(form.isEdited());
}

void HotspotFormTest::eachFieldAlone_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("fields");
    const auto row = [](const char *property, const QVariant &value, const char *fields) {
        QTest::newRow(property) << QString::fromLatin1(property) << value << QString::fromLatin1(fields);
    };
    row("name", QStringLiteral("Passengers"), "Passengers, 2, 1, 10, 600, private, free");
    row("security", int(HotspotForm::Open), "Morvek Car, 0, 1, 10, 600, private, free");
    row("band", int(HotspotForm::Band2_4GHz), "Morvek Car, 2, 0, 10, 600, private, free");
    row("maxClients", 4, "Morvek Car, 2, 1, 4, 600, private, free");
    row("inactivityTime", 0, "Morvek Car, 2, 1, 10, 0, private, free");
    row("privacy", false, "Morvek Car, 2, 1, 10, 600, public, free");
    row("blockConnections", true, "Morvek Car, 2, 1, 10, 600, private, blocked");
}

void HotspotFormTest::eachFieldAlone()
{
    QFETCH(QString, property);
    QFETCH(QVariant, value);
    QFETCH(QString, fields);
    HotspotForm form;
    form.read(car());
    QSignalSpy changed(&form, &HotspotForm::changed);
    QVERIFY(form.setProperty(qPrintable(property), value));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(fieldsOf(form), fields);
    QVERIFY(form.isEdited());
    QVERIFY(!form.isPassphraseEdited());
    HotspotForm written;
    written.read(form.applied(car()));
    QCOMPARE(fieldsOf(written), fields);
    QCOMPARE(form.applied(car()).passphrase(), QStringLiteral("drive safely 8"));
    form.revert();
    QCOMPARE(fieldsOf(form), QStringLiteral("Morvek Car, 2, 1, 10, 600, private, free"));
    QVERIFY(!form.isEdited());
    QCOMPARE(changed.count(), 2);
}

void HotspotFormTest::editedBackIsNotEdited()
{
    HotspotForm form;
    form.read(car());
    editAll(&form);
    QVERIFY(form.isEdited());
    QVERIFY(form.isPassphraseEdited());
    form.setName(QStringLiteral("Morvek Car"));
    form.setPassphrase(QStringLiteral("drive safely 8"));
    QVERIFY(!form.isPassphraseEdited());
    form.setSecurity(HotspotForm::Wpa2);
    form.setBand(HotspotForm::Band5GHz);
    form.setMaxClients(10);
    form.setInactivityTime(600);
    form.setPrivacy(true);
    QVERIFY(form.isEdited());
    form.setBlockConnections(false);
    QVERIFY(!form.isEdited());
    form.read(other());
    QCOMPARE(fieldsOf(form), QStringLiteral("Passengers, 3, 0, 4, 0, public, blocked"));
}

void HotspotFormTest::readAsItWasEdited()
{
    HotspotForm form;
    form.read(car());
    editAll(&form);
    form.read(other());
    QVERIFY(!form.isEdited());
    QVERIFY(!form.isPassphraseEdited());
    form.read(car());
    QCOMPARE(fieldsOf(form), QStringLiteral("Morvek Car, 2, 1, 10, 600, private, free"));
    QVERIFY(form.applied(car()) == car());
}

void HotspotFormTest::revertForgets()
{
    HotspotForm form;
    form.read(car());
    editAll(&form);
    form.revert();
    QVERIFY(!form.isEdited());
    QVERIFY(!form.isPassphraseEdited());
    QVERIFY(form.applied(car()) == car());
    QVERIFY(form.applied(other()) == other());
}

void HotspotFormTest::appliesWhatWasEditedOnly()
{
    HotspotForm form;
    form.read(car());
    QVERIFY(form.applied(car()) == car());
    editAll(&form);
    QVERIFY(form.applied(car()) == other());
    form.revert();
    form.setPassphrase(QStringLiteral("are we there yet?"));
    QVERIFY(form.isPassphraseEdited());
    QVERIFY(form.isEdited());
    WifiHotspot wanted = car();
    wanted.setPassphrase(QStringLiteral("are we there yet?"));
    QVERIFY(form.applied(car()) == wanted);
}

// Another application may have changed the profile since it was read.
void HotspotFormTest::appliesToAnotherProfile()
{
    HotspotForm form;
    form.read(car());
    form.setMaxClients(2);
    WifiHotspot wanted = other();
    wanted.setMaxClients(2);
    QVERIFY(form.applied(other()) == wanted);
}

void HotspotFormTest::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<HotspotForm::Fault>("fault");
    QTest::addRow("empty") << QString() << HotspotForm::Missing;
    QTest::addRow("one") << QStringLiteral("a") << HotspotForm::NoFault;
    QTest::addRow("32 bytes") << QString(32, QLatin1Char('a')) << HotspotForm::NoFault;
    QTest::addRow("33 bytes") << QString(33, QLatin1Char('a')) << HotspotForm::TooLong;
    QTest::addRow("16 of two bytes") << QString(16, QChar(0xe9)) << HotspotForm::NoFault;
    QTest::addRow("17 of two bytes") << QString(17, QChar(0xe9)) << HotspotForm::TooLong;
    QTest::addRow("a blank") << QStringLiteral(" ") << HotspotForm::NoFault;
    QTest::addRow("a car") << QString::fromUtf8("\xf0\x9f\x9a\x97") << HotspotForm::NoFault;
    QTest::addRow("half a character") << QString(QChar(0xd83d)) << HotspotForm::NotPrintable;
    QTest::addRow("what stands for none") << QString(QChar(0xfffd)) << HotspotForm::NotPrintable;
}

void HotspotFormTest::names()
{
    QFETCH(QString, name);
    QFETCH(HotspotForm::Fault, fault);
    HotspotForm form;
    form.read(car());
    form.setName(name);
    QCOMPARE(form.nameFault(), fault);
    QCOMPARE(form.isValid(), fault == HotspotForm::NoFault);
    QCOMPARE(form.nameText().isEmpty(), fault == HotspotForm::NoFault);
}

void HotspotFormTest::passphrases_data()
{
    QTest::addColumn<QString>("passphrase");
    QTest::addColumn<HotspotForm::Fault>("fault");
    QTest::addRow("seven") << QStringLiteral("1234567") << HotspotForm::TooShort;
    QTest::addRow("eight") << QStringLiteral("12345678") << HotspotForm::NoFault;
    QTest::addRow("the first and the last sign") << QStringLiteral("   ~~~  ") << HotspotForm::NoFault;
    QTest::addRow("63") << QString(63, QLatin1Char('z')) << HotspotForm::NoFault;
    QTest::addRow("64") << QString(64, QLatin1Char('z')) << HotspotForm::TooLong;
    QTest::addRow("64 digits") << QStringLiteral("0123456789abcdefABCDEF9876543210").repeated(2)
                               << HotspotForm::NoFault;
    QTest::addRow("64, g") << QString(63, QLatin1Char('0')) + QLatin1Char('g') << HotspotForm::TooLong;
    QTest::addRow("64, G") << QString(63, QLatin1Char('0')) + QLatin1Char('G') << HotspotForm::TooLong;
    QTest::addRow("64, :") << QString(63, QLatin1Char('0')) + QLatin1Char(':') << HotspotForm::TooLong;
    QTest::addRow("64, /") << QString(63, QLatin1Char('0')) + QLatin1Char('/') << HotspotForm::TooLong;
    QTest::addRow("65 digits") << QString(65, QLatin1Char('0')) << HotspotForm::TooLong;
    QTest::addRow("a line break") << QStringLiteral("12345678\n") << HotspotForm::NotPrintable;
    QTest::addRow("what deletes") << QStringLiteral("1234567\x7f") << HotspotForm::NotPrintable;
    QTest::addRow("an accent") << QString::fromUtf8("caf\xc3\xa9 noir") << HotspotForm::NotPrintable;
    QTest::addRow("short, with an accent") << QString::fromUtf8("\xc3\xa9") << HotspotForm::NotPrintable;
    QTest::addRow("wide digits") << QString(64, QChar(0xff11)) << HotspotForm::NotPrintable;
}

void HotspotFormTest::passphrases()
{
    QFETCH(QString, passphrase);
    QFETCH(HotspotForm::Fault, fault);
    HotspotForm form;
    form.read(car());
    form.setPassphrase(passphrase);
    QVERIFY(form.isPassphraseEdited());
    QCOMPARE(form.passphraseFault(), fault);
    QCOMPARE(form.isValid(), fault == HotspotForm::NoFault);
    QCOMPARE(form.passphraseText().isEmpty(), fault == HotspotForm::NoFault);
    // What was read is checked as well.
    WifiHotspot profile = car();
    profile.setPassphrase(passphrase);
    HotspotForm another;
    another.read(profile);
    QCOMPARE(another.passphraseFault(), fault);
}

void HotspotFormTest::numbers_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<HotspotForm::Fault>("ofClients");
    QTest::addColumn<HotspotForm::Fault>("ofTime");
    QTest::addRow("-2") << -2 << HotspotForm::OutOfRange << HotspotForm::OutOfRange;
    QTest::addRow("-1") << -1 << HotspotForm::OutOfRange << HotspotForm::OutOfRange;
    QTest::addRow("0") << 0 << HotspotForm::OutOfRange << HotspotForm::NoFault;
    QTest::addRow("1") << 1 << HotspotForm::NoFault << HotspotForm::NoFault;
    QTest::addRow("2147483647") << 2147483647 << HotspotForm::NoFault << HotspotForm::NoFault;
}

void HotspotFormTest::numbers()
{
    QFETCH(int, number);
    QFETCH(HotspotForm::Fault, ofClients);
    QFETCH(HotspotForm::Fault, ofTime);
    HotspotForm form;
    form.read(car());
    form.setMaxClients(number);
    QCOMPARE(form.maxClientsFault(), ofClients);
    QCOMPARE(form.maxClientsText().isEmpty(), ofClients == HotspotForm::NoFault);
    QCOMPARE(form.inactivityTimeFault(), HotspotForm::NoFault);
    QCOMPARE(form.isValid(), ofClients == HotspotForm::NoFault);
    form.revert();
    form.setInactivityTime(number);
    QCOMPARE(form.inactivityTimeFault(), ofTime);
    QCOMPARE(form.inactivityTimeText().isEmpty(), ofTime == HotspotForm::NoFault);
    QCOMPARE(form.maxClientsFault(), HotspotForm::NoFault);
    QCOMPARE(form.isValid(), ofTime == HotspotForm::NoFault);
}

void HotspotFormTest::unknownSecurityStays()
{
    WifiHotspot profile = car();
    profile.setSecurityType(QFlags<WifiSecurityProtocol>());
    HotspotForm form;
    form.read(profile);
    QCOMPARE(form.security(), HotspotForm::UnknownSecurity);
    QCOMPARE(form.securityFault(), HotspotForm::NotSelectable);
    QCOMPARE(form.securityText(), QStringLiteral("Choose how the hotspot is protected."));
    QVERIFY(!form.isEdited());
    QVERIFY(!form.isValid());
    form.setName(QStringLiteral("Mine"));
    QVERIFY(!form.isValid());
    QCOMPARE(int(form.applied(profile).securityType()), 0);
    // Whether it needs a passphrase is not known, so it does.
    profile.setPassphrase(QString());
    form.read(profile);
    QCOMPARE(form.passphraseFault(), HotspotForm::Missing);
}

void HotspotFormTest::unknownSecurityCanBeReplaced()
{
    WifiHotspot profile = car();
    profile.setSecurityType(QFlags<WifiSecurityProtocol>());
    HotspotForm form;
    form.read(profile);
    form.setSecurity(HotspotForm::Wpa);
    QVERIFY(form.isValid());
    QVERIFY(form.securityText().isEmpty());
    QCOMPARE(int(form.applied(profile).securityType()), int(WifiSecurityProtocolWpa));
    form.setSecurity(HotspotForm::UnknownSecurity);
    QVERIFY(!form.isEdited());
    QCOMPARE(form.securityFault(), HotspotForm::NotSelectable);
    form.read(car());
    form.setSecurity(HotspotForm::Security(7)); // there is none
    QCOMPARE(form.security(), HotspotForm::UnknownSecurity);
    QVERIFY(form.isEdited());
    QVERIFY(!form.isValid());
}

void HotspotFormTest::emptyPassphraseLeavesIt()
{
    HotspotForm form;
    form.read(car());
    form.setPassphrase(QStringLiteral("short"));
    QVERIFY(!form.isValid());
    form.setPassphrase(QString());
    QVERIFY(form.isValid());
    QVERIFY(!form.isPassphraseEdited());
    QVERIFY(!form.isEdited());
    QVERIFY(form.applied(car()) == car());
}

void HotspotFormTest::openNeedsNoPassphrase()
{
    WifiHotspot profile = car();
    profile.setPassphrase(QString());
    HotspotForm form;
    form.read(profile);
    QCOMPARE(form.passphraseFault(), HotspotForm::Missing);
    form.setSecurity(HotspotForm::Open);
    QCOMPARE(form.passphraseFault(), HotspotForm::NoFault);
    QVERIFY(form.isValid());
    form.setPassphrase(QStringLiteral("short"));
    QCOMPARE(form.passphraseFault(), HotspotForm::NoFault);
    QVERIFY(form.isValid());
    form.setSecurity(HotspotForm::Wpa2);
    QCOMPARE(form.passphraseFault(), HotspotForm::TooShort);
}

void HotspotFormTest::openKeepsThePassphrase()
{
    HotspotForm form;
    form.read(car());
    form.setSecurity(HotspotForm::Open);
    WifiHotspot wanted = car();
    wanted.setSecurityType(WifiSecurityProtocolNone);
    QVERIFY(form.applied(car()) == wanted);
    form.setPassphrase(QStringLiteral("are we there yet?"));
    wanted.setPassphrase(QStringLiteral("are we there yet?"));
    QVERIFY(form.applied(car()) == wanted);
}

void HotspotFormTest::openWritesNoImpossiblePassphrase()
{
    HotspotForm form;
    form.read(car());
    form.setPassphrase(QStringLiteral("short"));
    form.setSecurity(HotspotForm::Open);
    QCOMPARE(form.applied(car()).passphrase(), QStringLiteral("drive safely 8"));
    // It is forgotten when the profile is read, be it the same.
    form.read(car());
    QVERIFY(!form.isPassphraseEdited());
    form.setSecurity(HotspotForm::Wpa2);
    QVERIFY(form.isValid());
    QVERIFY(!form.isEdited());
}

// The library writes no profile without a passphrase.
void HotspotFormTest::openIsWrittenWithoutPassphrase()
{
    WifiHotspot profile = car();
    profile.setPassphrase(QString());
    HotspotForm form;
    form.read(profile);
    QVERIFY(form.applied(profile).isEmpty());
    form.setSecurity(HotspotForm::Open);
    QCOMPARE(form.applied(profile).passphrase(), QStringLiteral("none"));
    QVERIFY(!form.applied(profile).isEmpty());
}

void HotspotFormTest::protectedAgainNeedsAPassphrase()
{
    WifiHotspot profile = car();
    profile.setSecurityType(WifiSecurityProtocolNone);
    profile.setPassphrase(QStringLiteral("none"));
    HotspotForm form;
    form.read(profile);
    QVERIFY(form.isValid());
    form.setSecurity(HotspotForm::Wpa2);
    QCOMPARE(form.passphraseFault(), HotspotForm::Missing);
    QVERIFY(form.applied(profile).passphrase().isEmpty());
    form.setPassphrase(QStringLiteral("are we there yet?"));
    QVERIFY(form.isValid());
    QCOMPARE(form.applied(profile).passphrase(), QStringLiteral("are we there yet?"));
}

void HotspotFormTest::tellsChangesOnly()
{
    HotspotForm form;
    QSignalSpy changed(&form, &HotspotForm::changed);
    form.read(car());
    QCOMPARE(changed.count(), 1);
    form.read(car());
    form.revert();
    form.setName(QStringLiteral("Morvek Car"));
    form.setPassphrase(QString());
    form.setPassphrase(QStringLiteral("drive safely 8"));
    QCOMPARE(changed.count(), 1);
    form.setPassphrase(QStringLiteral("are we there yet?"));
    QCOMPARE(changed.count(), 2);
    form.setPassphrase(QStringLiteral("short"));
    QCOMPARE(changed.count(), 3);
    form.setPassphrase(QStringLiteral("short"));
    QCOMPARE(changed.count(), 3);
    form.read(other()); // in the edited field nothing shows of it
    QCOMPARE(changed.count(), 4);
    WifiHotspot profile = other();
    profile.setPassphrase(QStringLiteral("another one"));
    form.read(profile);
    QCOMPARE(changed.count(), 4);
    form.setName(QStringLiteral("Mine"));
    QCOMPARE(changed.count(), 5);
    profile.setName(QStringLiteral("Mine")); // which is edited no more
    form.read(profile);
    QCOMPARE(changed.count(), 6);
}

void HotspotFormTest::stateComesBeforeItsSignal()
{
    HotspotForm form;
    QStringList seen;
    connect(&form, &HotspotForm::changed, this, [&] {
        seen += fieldsOf(form) + (form.isValid() ? QStringLiteral(", valid") : QString())
            + (form.isEdited() ? QStringLiteral(", edited") : QString());
    });
    form.read(car());
    form.setName(QString());
    form.revert();
    QCOMPARE(seen,
             QStringList({QStringLiteral("Morvek Car, 2, 1, 10, 600, private, free, valid"),
                          QStringLiteral(", 2, 1, 10, 600, private, free, edited"),
                          QStringLiteral("Morvek Car, 2, 1, 10, 600, private, free, valid")}));
}

void HotspotFormTest::textsFitAScreen()
{
    HotspotForm form;
    WifiHotspot nothing;
    nothing.setSecurityType(QFlags<WifiSecurityProtocol>());
    form.read(nothing);
    QStringList texts {form.nameText(), form.passphraseText(), form.securityText(), form.maxClientsText(),
                       form.inactivityTimeText()};
    form.setName(QString(33, QLatin1Char('a')));
    form.setPassphrase(QStringLiteral("short"));
    texts << form.nameText() << form.passphraseText();
    form.setName(QString(QChar(0xfffd)));
    form.setPassphrase(QString(64, QLatin1Char('z')));
    texts << form.nameText() << form.passphraseText();
    form.setPassphrase(QString(QChar(0xe9)));
    texts << form.passphraseText();
    QCOMPARE(texts.size(), 10);
    QCOMPARE(texts.removeDuplicates(), 0);
    for (const QString &text : qAsConst(texts)) {
        QVERIFY2(!text.isEmpty() && text.size() <= 120, qPrintable(text));
        QVERIFY2(text.endsWith(QLatin1Char('.')), qPrintable(text));
    }
}

void HotspotFormTest::passphraseIsInNoProperty()
{
    HotspotForm form;
    form.read(car());
    form.setPassphrase(QStringLiteral("are we there yet?"));
    QString all;
    QDebug debug(&all);
    debug << &form << form.dynamicPropertyNames() << form.objectName();
    const QMetaObject *meta = form.metaObject();
    for (int i = 0; i < meta->propertyCount(); ++i)
        debug << meta->property(i).name() << meta->property(i).read(&form);
    QVERIFY(all.contains(QLatin1String("Morvek Car")));
    QVERIFY(!all.contains(QLatin1String("drive safely 8")));
    QVERIFY(!all.contains(QLatin1String("are we there yet?")));
    for (int i = 0; i < meta->methodCount(); ++i)
        QVERIFY2(meta->method(i).returnType() != QMetaType::QString, meta->method(i).methodSignature().constData());
}

void HotspotFormTest::passphraseIsWiped()
{
    HotspotForm form;
    form.read(car());
    const auto type = [&form] {
        QString typed = Typed.text();
        form.setPassphrase(typed);
        typed.fill(QLatin1Char('x')); // the caller's own
    };
    type();
    QCOMPARE(Typed.count(), 1);
    {
        WifiHotspot profile = form.applied(car());
        QCOMPARE(Typed.count(), 2);
        QString applied = profile.passphrase();
        profile.setPassphrase(QString());
        applied.fill(QLatin1Char('x'));
    }
    QCOMPARE(Typed.count(), 1);
    form.revert();
    QCOMPARE(Typed.count(), 0);
    type();
    form.setPassphrase(QStringLiteral("are we there yet?"));
    QCOMPARE(Typed.count(), 0);
    type();
    form.setPassphrase(QString());
    QCOMPARE(Typed.count(), 0);

    // As it was read, and as it is read the next time.
    WifiHotspot read = car();
    read.setPassphrase(Typed.text());
    type();
    form.read(read);
    QVERIFY(!form.isPassphraseEdited());
    QCOMPARE(Typed.count(), 2);
    QString owned = read.passphrase();
    read.setPassphrase(QString());
    owned.fill(QLatin1Char('x'));
    QCOMPARE(Typed.count(), 1);
    form.read(car());
    QCOMPARE(Typed.count(), 0);

    {
        HotspotForm brief;
        QString typed = Typed.text();
        brief.setPassphrase(typed);
        typed.fill(QLatin1Char('x'));
        QCOMPARE(Typed.count(), 1);
    }
    QCOMPARE(Typed.count(), 0);
}

QTEST_GUILESS_MAIN(HotspotFormTest)
#include "tst_hotspotform.moc"
