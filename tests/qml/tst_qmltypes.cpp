// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

/*! What the module Morvek.Network registers. */
class TestQmlTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void creatable_data();
    void creatable();
    void uncreatable_data();
    void uncreatable();
    void enumerations_data();
    void enumerations();
    void hasNoOtherTypes();

private:
    TestUnit m_unit; // which no daemon serves
};

void TestQmlTypes::creatable_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name :
         {"HotspotController", "InterfaceController", "Ipv4Form", "NetworkServices", "WifiController"})
        QTest::addRow("%s", name) << QByteArray(name);
}

void TestQmlTypes::creatable()
{
    QFETCH(QByteArray, name);
    const QmlDocument document(name + " {}");
    QVERIFY2(document.root(), qPrintable(document.errors()));
    QCOMPARE(QByteArray(document.root()->metaObject()->className()), "morvek::" + name);
}

void TestQmlTypes::uncreatable_data()
{
    QTest::addColumn<QString>("reason");
    const auto add = [](const char *name, const char *reason) {
        QTest::addRow("%s", name) << QString::fromUtf8(reason);
    };
    add("HotspotForm", "It is a HotspotController's form.");
    add("InterfaceModel", "It is an InterfaceController's interfaces.");
    add("InterfaceType", "It only has the names of types.");
    add("NetworkController", "Create a WifiController, an InterfaceController or a HotspotController.");
    add("NetworkRequest", "A controller's functions, such as WifiController.join(), return it.");
    add("WifiNetworkModel", "It is a WifiController's networks.");
}

void TestQmlTypes::uncreatable()
{
    QFETCH(QString, reason);
    const QmlDocument document(QByteArray(QTest::currentDataTag()) + " {}");
    QVERIFY(!document.root());
    QVERIFY2(document.errors().contains(reason), qPrintable(document.errors()));
}

void TestQmlTypes::enumerations_data()
{
    QTest::addColumn<QStringList>("names"); // in the order of their values, from 0 on
    const auto add = [](const char *type, const char *names) {
        QTest::addRow("%s: %s", type, names) << QString::fromUtf8(names).split(QLatin1Char(' '));
    };
    add("NetworkController", "Waiting Ready Gone");
    add("WifiController", "Waiting Ready Gone");
    add("WifiController", "NotReady SwitchingOn SwitchingOff Off Joining Leaving Connected Disconnected");
    add("InterfaceController", "Waiting Ready Gone");
    add("HotspotController", "Waiting Ready Gone");
    add("HotspotController", "NotReady SwitchingOn SwitchingOff On Off");
    add("NetworkRequest",
        "NoFailure NotReady Busy Invalid Refused WrongPasskey OutOfRange TimedOut Cancelled Overtaken Lost");
    add("Ipv4Form",
        "NoFault Missing NotAnAddress NotANetmask NotAHost NetworkItself Broadcast NotInNetwork OwnAddress");
    add("HotspotForm", "Open Wpa Wpa2 WpaAndWpa2 UnknownSecurity");
    add("HotspotForm", "Band2_4GHz Band5GHz");
    add("HotspotForm", "NoFault Missing TooLong TooShort NotPrintable OutOfRange NotSelectable");
    add("InterfaceModel", "Configuring Connected Unavailable Obtaining WithoutAddress Disconnected");
    add("InterfaceType", "Unknown Wired Wifi Usb Cellular Bluetooth Vpn OrvanBridge");
}

void TestQmlTypes::enumerations()
{
    QFETCH(QStringList, names);
    const QByteArray type = QByteArray(QTest::currentDataTag()).split(':').first();
    const QmlDocument document("QtObject {}");
    for (int value = 0; value < names.size(); ++value) {
        const QByteArray name = type + '.' + names.at(value).toLatin1();
        QCOMPARE(document.evaluate(name), QVariant(value));
    }
}

/*! Whoever adds a type adds it above. */
void TestQmlTypes::hasNoOtherTypes()
{
    QFile file(QStringLiteral(MORVEK_PROJECT "/qml/plugins.qmltypes"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QRegularExpressionMatchIterator matches = QRegularExpression(QStringLiteral("\"Morvek[.]Network/(\\w+) 1[.]0\""))
                                                  .globalMatch(QString::fromUtf8(file.readAll()));
    QStringList names;
    while (matches.hasNext())
        names.append(matches.next().captured(1));
    names.sort();
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("HotspotController HotspotForm InterfaceController InterfaceModel InterfaceType Ipv4Form "
                            "NetworkController NetworkRequest NetworkServices WifiController WifiNetworkModel"));
}

QTEST_MAIN(TestQmlTypes)
#include "tst_qmltypes.moc"
