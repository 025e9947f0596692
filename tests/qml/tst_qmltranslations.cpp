// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtCore/QTranslator>
#include <QtTest/QtTest>

using namespace morvek;

/*! An application that loads the translation of the kit has its sentences in German. */
class TestQmlTranslations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void german();
};

void TestQmlTranslations::german()
{
    QTranslator translator;
    QVERIFY(translator.load(QLocale(QLocale::German), QStringLiteral("morvek-network-kit"), QStringLiteral("_"),
                            QStringLiteral(TRANSLATIONS)));
    QVERIFY(QCoreApplication::installTranslator(&translator));
    TestUnit unit;
    QVERIFY(unit.start());
    QVERIFY(unit.stop());
    const QmlDocument document(R"(
        ListView {
            id: root

            property NetworkServices services: NetworkServices { retryPause: 50 }
            property WifiController wifi: WifiController { services: root.services; looking: true }
            property InterfaceController unit: InterfaceController { services: root.services }
            property HotspotController hotspot: HotspotController { services: root.services }
            property NetworkRequest request: null
            property Ipv4Form form: Ipv4Form {}

            width: 800
            height: 2000
            model: root.wifi.networks
            delegate: Text {
                required property string security
                text: security
            }
        }
    )");
    QVERIFY2(document.root(), qPrintable(document.errors()));
    QCOMPARE(document.evaluate("wifi.stateText").toString(),
             QStringLiteral("Der WLAN-Dienst ist noch nicht gestartet."));
    QCOMPARE(document.evaluate("form.addressText").toString(), QStringLiteral("Fehlt."));

    QVERIFY(unit.restart());
    QTRY_COMPARE(document.evaluate("wifi.stateText").toString(), QStringLiteral("Verbunden mit „\u2068Home\u2069“."));
    QTRY_COMPARE(document.evaluate("hotspot.stateText").toString(), QStringLiteral("Der Hotspot ist aus."));
    QTRY_VERIFY(document.texts().contains(QStringLiteral("offen")));
    document.evaluate("hotspot.form.name = ''");
    QCOMPARE(document.evaluate("hotspot.form.nameText").toString(), QStringLiteral("Einen Namen eingeben."));

    document.evaluate("request = wifi.join('Garage')");
    QTRY_COMPARE(document.evaluate("request.sentence").toString(),
                 QStringLiteral("„\u2068Garage\u2069“ braucht einen Schlüssel."));
    document.evaluate("request = unit.repair('eth9')");
    QTRY_COMPARE(document.evaluate("request.sentence").toString(), QStringLiteral("\u2068eth9\u2069 ist nicht da."));
    document.evaluate("request = hotspot.fetch()");
    document.evaluate("request.cancel()");
    QTRY_COMPARE(document.evaluate("request.sentence").toString(),
                 QStringLiteral("Abgebrochen. Die Einstellungen wurden nicht gelesen."));
}

QTEST_MAIN(TestQmlTranslations)
#include "tst_qmltranslations.moc"
