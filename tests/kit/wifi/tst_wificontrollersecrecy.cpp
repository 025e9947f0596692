// SPDX-License-Identifier: Apache-2.0
#include "memorysearch.h"
#include "wifiunit.h"

#include <krellogger.h>

#include <QtCore/QMetaProperty>
#include <QtCore/QTemporaryFile>

#include <unistd.h>

using namespace morvek;

namespace {

const QString Garage = QStringLiteral("Garage");
const MemorySearch Typed("uzqfe.cz.uif.esjwfs.upebz"); // "typed-by-the-driver-today"

/*! What this process writes, as long as this lives. */
class OwnOutput
{
public:
    OwnOutput()
    {
        m_file.open();
        for (int own : {STDOUT_FILENO, STDERR_FILENO}) {
            m_former[own] = ::dup(own);
            ::dup2(m_file.handle(), own);
        }
    }
    ~OwnOutput() { end(); }

    QByteArray end()
    {
        fflush(nullptr);
        for (int own : {STDOUT_FILENO, STDERR_FILENO}) {
            if (m_former[own] < 0)
                continue;
            ::dup2(m_former[own], own);
            ::close(std::exchange(m_former[own], -1));
        }
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    Q_DISABLE_COPY(OwnOutput)
    QTemporaryFile m_file;
    int m_former[3] = {-1, -1, -1};
};

/*! All that an object tells of itself. */
QString propertiesOf(const QObject &object)
{
    QString text;
    QDebug debug(&text);
    debug << &object;
    for (int i = 0; i < object.metaObject()->propertyCount(); ++i) {
        const QMetaProperty property = object.metaObject()->property(i);
        debug << property.name() << property.read(&object);
    }
    const auto names = object.dynamicPropertyNames();
    for (const QByteArray &name : names)
        debug << name << object.property(name);
    return text;
}

} // namespace

/*! A passkey is neither told nor kept. */
class WifiControllerSecrecyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qRegisterMetaType<NetworkServices *>();
        qRegisterMetaType<WifiNetworkModel *>();
    }

    void leavesNoTrace_data();
    void leavesNoTrace();
    void isWiped_data();
    void isWiped();
};

void WifiControllerSecrecyTest::leavesNoTrace_data()
{
    QTest::addColumn<QString>("passkey");
    QTest::addColumn<QString>("end");
    QTest::newRow("right") << "open sesame 42"
                           << "done";
    QTest::newRow("wrong") << "sesame open 24"
                           << "WrongPasskey";
    QTest::newRow("impossible") << "sesame7"
                                << "Invalid";
}

void WifiControllerSecrecyTest::leavesNoTrace()
{
    QFETCH(QString, passkey);
    QFETCH(QString, end);
    OwnOutput own;
    qputenv("KREL_VERBOSITY", "7"); // for the daemon
    KrelLogger::setVerbosity(7);
    WifiUnit unit;
    QVERIFY(unit.start(QStringLiteral("town")));
    NetworkRequest *request = unit.wifi->join(Garage, passkey);
    QString told = propertiesOf(*request);
    QCOMPARE(unit.unit.endOf(request), end);
    told += propertiesOf(*request) + propertiesOf(*unit.wifi) + propertiesOf(*unit.wifi->networks());
    const QByteArray seen =
        QJsonDocument(QJsonObject {{QStringLiteral("objects"), unit.unit.look(QStringLiteral("objects"))},
                                   {QStringLiteral("requests"), unit.unit.look(QStringLiteral("requests"))}})
            .toJson();
    const QByteArray written = own.end();
    KrelLogger::setVerbosity(2);

    // Each place does hold what is not secret.
    QVERIFY(told.contains(QLatin1String("morvek::WifiJoin")) && told.contains(Garage));
    QVERIFY(seen.contains("wifi_power") && (seen.contains("wnet_new") || end == QLatin1String("Invalid")));
    QVERIFY(written.contains("Updating powered flag"));
    QVERIFY(unit.unit.output().contains(QLatin1String("scan")) || end == QLatin1String("Invalid"));
    for (const QString &place : {told, QString::fromUtf8(seen), QString::fromUtf8(written), unit.unit.output()})
        QVERIFY2(!place.contains(passkey), qPrintable(place));
}

void WifiControllerSecrecyTest::isWiped_data()
{
    QTest::addColumn<QString>("ssid");
    QTest::addColumn<QString>("end");
    QTest::newRow("open") << QString::fromUtf8("Café ☕") << "Invalid";
    QTest::newRow("not in range") << "garage"
                                  << "OutOfRange";
    QTest::newRow("cancelled") << "Garage"
                               << "Cancelled";
    QTest::newRow("radio off") << "Home"
                               << "NotReady";
}

/*! The request is still there. (What was joined leaves copies of the library's behind.) */
void WifiControllerSecrecyTest::isWiped()
{
    QFETCH(QString, ssid);
    QFETCH(QString, end);
    WifiUnit unit;
    QVERIFY(unit.start(QStringLiteral("town")));
    if (end == QLatin1String("NotReady"))
        QCOMPARE(unit.unit.endOf(unit.wifi->setPowered(false)), QStringLiteral("done"));
    NetworkRequest *request = nullptr;
    {
        QString passkey = Typed.text();
        request = unit.wifi->join(ssid, passkey);
        passkey.fill(QLatin1Char('x'));
    }
    if (end == QLatin1String("Cancelled"))
        request->cancel();
    else if (end != QLatin1String("NotReady"))
        QVERIFY(Typed.count() > 0); // it is found while it is there
    QCOMPARE(unit.unit.endOf(request), end);
    QCOMPARE(Typed.count(), 0);
}

QTEST_GUILESS_MAIN(WifiControllerSecrecyTest)
#include "tst_wificontrollersecrecy.moc"
