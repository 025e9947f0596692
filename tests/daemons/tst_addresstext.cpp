// SPDX-License-Identifier: Apache-2.0
#include "addresstext.h"

#include <QtTest/QtTest>

using namespace morvek;

class AddressTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ipv4_data();
    void ipv4();
    void netmask_data();
    void netmask();
    void host_data();
    void host();
    void interfaceAddress_data();
    void interfaceAddress();
};

void AddressTextTest::ipv4_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<quint32>("address");

    QTest::addRow("plain") << "10.1.2.3" << true << 0x0a010203u;
    QTest::addRow("zeros") << "0.0.0.0" << true << 0u;
    QTest::addRow("largest") << "255.255.255.255" << true << 0xffffffffu;
    QTest::addRow("empty") << "" << false << 0u;
    QTest::addRow("three parts") << "10.1.2" << false << 0u;
    QTest::addRow("five parts") << "10.1.2.3.4" << false << 0u;
    QTest::addRow("dot behind") << "10.1.2.3." << false << 0u;
    QTest::addRow("256") << "10.1.2.256" << false << 0u;
    QTest::addRow("leading zero") << "10.01.2.3" << false << 0u;
    QTest::addRow("hexadecimal") << "0x0a.1.2.3" << false << 0u;
    QTest::addRow("blank") << " 10.1.2.3" << false << 0u;
    QTest::addRow("line break") << "10.1.2.3\n" << false << 0u;
    QTest::addRow("other digits") << QStringLiteral("\u0661.1.2.3") << false << 0u;
    QTest::addRow("with netmask") << "10.1.2.3/8" << false << 0u;
}

void AddressTextTest::ipv4()
{
    QFETCH(QString, text);
    QFETCH(quint32, address);
    quint32 read = 0;
    QTEST(AddressText::isIpv4(text, &read), "valid");
    QCOMPARE(read, address);
}

void AddressTextTest::netmask_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");

    QTest::addRow("one bit") << "128.0.0.0" << true;
    QTest::addRow("class C") << "255.255.255.0" << true;
    QTest::addRow("odd length") << "255.255.254.0" << true;
    QTest::addRow("all bits") << "255.255.255.255" << true;
    QTest::addRow("no bit") << "0.0.0.0" << false;
    QTest::addRow("hole") << "255.0.255.0" << false;
    QTest::addRow("from the right") << "0.0.0.255" << false;
    QTest::addRow("an address") << "192.168.0.1" << false;
    QTest::addRow("length") << "24" << false;
}

void AddressTextTest::netmask()
{
    QFETCH(QString, text);
    QTEST(AddressText::isNetmask(text), "valid");
}

void AddressTextTest::host_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");

    QTest::addRow("private") << "192.168.0.1" << true;
    QTest::addRow("first") << "1.0.0.0" << true;
    QTest::addRow("last") << "223.255.255.255" << true;
    QTest::addRow("this network") << "0.1.2.3" << false;
    QTest::addRow("loopback") << "127.0.0.1" << false;
    QTest::addRow("group") << "224.0.0.1" << false;
    QTest::addRow("everybody") << "255.255.255.255" << false;
    QTest::addRow("none") << "host" << false;
}

void AddressTextTest::host()
{
    QFETCH(QString, text);
    QTEST(AddressText::isHostAddress(text), "valid");
}

void AddressTextTest::interfaceAddress_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("published"); // empty when it is none

    const auto same = [](const char *name, const char *text) { QTest::addRow("%s", name) << text << text; };
    same("IPv4", "10.0.0.5/255.0.0.0");
    same("IPv6", "fe80::1/64");
    same("IPv6, full length", "2001:db8::1/128");
    same("IPv6, no length", "::1/0");
    QTest::addRow("IPv4 with length") << "10.0.0.5/8"
                                      << "10.0.0.5/255.0.0.0";
    QTest::addRow("IPv4, odd length") << "10.0.0.5/23"
                                      << "10.0.0.5/255.255.254.0";
    QTest::addRow("IPv4, shortest") << "10.0.0.5/1"
                                    << "10.0.0.5/128.0.0.0";
    QTest::addRow("IPv4, full length") << "10.0.0.5/32"
                                       << "10.0.0.5/255.255.255.255";
    for (const char *text :
         {"10.0.0.5/0", "10.0.0.5/33", "10.0.0.5/08", "10.0.0.5/-8", "10.0.0.5/+8", "10.0.0.5/8 ", "10.0.0.256/8",
          "10.0.0/8", "8/10.0.0.5", "fe80::1/255.0.0.0", "fe80::1/129", "fe80::1/064", "fe80::1%eth0/64", "10.0.0.5",
          "10.0.0.5/", "10.0.0.5/255.0.0.0/8", "10.0.0.5/8/8", ""})
        QTest::addRow("no \"%s\"", text) << text << "";
}

void AddressTextTest::interfaceAddress()
{
    QFETCH(QString, text);
    QFETCH(QString, published);
    QString read;
    const bool valid = AddressText::isInterfaceAddress(text, &read);
    QCOMPARE(valid, !published.isEmpty());
    QCOMPARE(AddressText::isInterfaceAddress(text), valid);
    if (valid)
        QCOMPARE(read, published);
}

QTEST_GUILESS_MAIN(AddressTextTest)
#include "tst_addresstext.moc"
