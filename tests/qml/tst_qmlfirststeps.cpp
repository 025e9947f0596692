// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QVariantMap OfWifi {{QStringLiteral("daemon"), QStringLiteral("wifi")}};
const QVariantMap OfNetworking {{QStringLiteral("daemon"), QStringLiteral("networking")}};

std::unique_ptr<QmlDocument> step(int number)
{
    return QmlDocument::ofFile(QStringLiteral("examples/first/qml/step%1.qml").arg(number));
}

QString named(const char *name)
{
    return QChar(0x2068) + QString::fromUtf8(name) + QChar(0x2069);
}

/*! The sentence about being connected to \a name. */
QString connected(const char *name)
{
    return QStringLiteral("Connected to “%1”.").arg(named(name));
}

} // namespace

/*! The steps of the first screen, as fingers use them. */
class TestQmlFirstSteps : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsAState();
    void listsNetworks();
    void joinsWithATap();
    void asksForAPasskey();
    void tellsOfAWrongPasskey();
    void repairs();
    void keepsWhatWasTold();

private:
    std::unique_ptr<TestUnit> m_unit;
};

void TestQmlFirstSteps::init()
{
    m_unit.reset();
    m_unit.reset(new TestUnit);
    QVERIFY2(m_unit->start(), qPrintable(m_unit->errorString()));
}

void TestQmlFirstSteps::showsAState()
{
    const auto screen = step(1);
    QTRY_COMPARE(screen->texts(), QStringList(connected("Home")));
    QVERIFY(m_unit->act(QStringLiteral("daemon-dies"), OfWifi));
    QTRY_COMPARE(screen->texts(), QStringList(QStringLiteral("The Wi-Fi service has stopped.")));
}

void TestQmlFirstSteps::listsNetworks()
{
    const auto screen = step(2);
    QTRY_VERIFY(screen->item(named("Garage") + QStringLiteral(", WPA/WPA2 + WPS")));
    QCOMPARE(screen->texts().value(0), connected("Home"));
    QCOMPARE(screen->texts().value(1), named("Home") + QStringLiteral(", WPA2"));
}

void TestQmlFirstSteps::joinsWithATap()
{
    const auto screen = step(3);
    const QString cafe = named("Café am Markt") + QStringLiteral(", open");
    QTRY_VERIFY(screen->item(cafe));
    QVERIFY(screen->tap(cafe));
    QTRY_COMPARE(screen->texts().value(0), connected("Café am Markt"));

    const QString garage = named("Garage") + QStringLiteral(", WPA/WPA2 + WPS");
    QVERIFY(screen->tap(garage));
    QTRY_COMPARE(screen->texts().value(1), QStringLiteral("“%1” needs a passkey.").arg(named("Garage")));
}

void TestQmlFirstSteps::asksForAPasskey()
{
    const auto screen = step(4);
    const QString garage = named("Garage") + QStringLiteral(", WPA/WPA2 + WPS");
    QTRY_VERIFY(screen->item(garage));
    QVERIFY(screen->tap(garage));
    screen->type(QStringLiteral("open sesame 42"));
    screen->type(QStringLiteral("\r"));
    QVERIFY(!screen->texts().contains(QStringLiteral("open sesame 42")));
    QTRY_COMPARE(screen->texts().value(0), connected("Garage"));
}

void TestQmlFirstSteps::tellsOfAWrongPasskey()
{
    const auto screen = step(4);
    const QString garage = named("Garage") + QStringLiteral(", WPA/WPA2 + WPS");
    QTRY_VERIFY(screen->item(garage));
    QVERIFY(screen->tap(garage));
    screen->type(QStringLiteral("shut sesame 1"));
    screen->type(QStringLiteral("\r"));
    const QString advice = QStringLiteral("Tap again to try another passkey.");
    QTRY_VERIFY(screen->item(advice));
    QCOMPARE(screen->texts().indexOf(advice), screen->texts().indexOf(garage) + 1);
}

void TestQmlFirstSteps::repairs()
{
    QVERIFY(m_unit->stop());
    QVERIFY(m_unit->start(QStringLiteral(MORVEK_PROJECT "/examples/first/lost-lease.json")));
    const auto screen = step(5);
    const QString repair = QStringLiteral("Repair");
    QTRY_VERIFY(screen->item(repair));
    QVERIFY(screen->tap(repair));
    QTRY_COMPARE(screen->texts(), QStringList({QStringLiteral("Online"), QStringLiteral("eth0: Connected.")}));
}

void TestQmlFirstSteps::keepsWhatWasTold()
{
    const auto screen = step(5);
    QTRY_COMPARE(screen->texts().size(), 5);
    const QStringList before = screen->texts();
    QCOMPARE(before.value(0), QStringLiteral("Online"));
    QVERIFY(m_unit->act(QStringLiteral("daemon-dies"), OfNetworking));
    QTRY_COMPARE(screen->texts().value(0), QStringLiteral("The network service has stopped."));
    QCOMPARE(screen->texts().mid(1), before.mid(1));
    QVERIFY(m_unit->act(QStringLiteral("daemon-back"), OfNetworking));
    QTRY_COMPARE(screen->texts(), before);
}

QTEST_MAIN(TestQmlFirstSteps)
#include "tst_qmlfirststeps.moc"
