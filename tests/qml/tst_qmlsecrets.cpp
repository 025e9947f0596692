// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const char Passkey[] = "hold the line";
QStringList written;

void keep(QtMsgType, const QMessageLogContext &, const QString &text)
{
    written.append(text);
}

const char Screen[] = R"(
    QtObject {
        id: root

        property NetworkServices services: NetworkServices {}
        property WifiController wifi: WifiController { services: root.services }
        property HotspotController hotspot: HotspotController { services: root.services }
        property string secret: "hold the line"
        property NetworkRequest request: null
        property string ended: ""

        function everything(object) {
            let text = String(object);
            for (const name in object)
                text += " " + name + "=" + object[name];
            return text + JSON.stringify(object);
        }
    }
)";

/*! Whether something of \a secret is in \a text, however it is quoted. */
bool tells(const QString &text, const char *secret)
{
    return text.contains(QString::fromUtf8(secret));
}

} // namespace

/*! What is typed as a passkey or a passphrase is told by nothing that QML shows, writes or lists. */
class TestQmlSecrets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void mistakesInQml_data();
    void mistakesInQml();
    void whatObjectsList_data();
    void whatObjectsList();

private:
    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<QmlDocument> m_document;
};

void TestQmlSecrets::init()
{
    m_document.reset();
    m_unit.reset();
    m_unit.reset(new TestUnit);
    QVERIFY2(m_unit->start(), qPrintable(m_unit->errorString()));
    m_document.reset(new QmlDocument(Screen));
    QVERIFY2(m_document->root(), qPrintable(m_document->errors()));
    QVERIFY(m_unit->waitForReady(m_document->object("wifi")));
    QTRY_VERIFY(m_document->evaluate("hotspot.profileKnown").toBool());
}

void TestQmlSecrets::mistakesInQml_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("a property that is none") << QByteArray("hotspot.form.passphrase = secret");
    QTest::newRow("none to be read") << QByteArray("hotspot.form.passphrase.length");
    QTest::newRow("too many arguments") << QByteArray("hotspot.form.setPassphrase(secret, 1, nothing.here)");
    QTest::newRow("too few") << QByteArray("{ hotspot.form.setPassphrase(secret); hotspot.form.setPassphrase() }");
    QTest::newRow("a value that does not fit") << QByteArray("hotspot.form.maxClients = secret");
    QTest::newRow("an unknown function") << QByteArray("wifi.joinIt('Home', secret)");
    QTest::newRow("a network's name that is none") << QByteArray("wifi.join({}, secret)");
    QTest::newRow("no name") << QByteArray("wifi.join()");
    QTest::newRow("an object that is none") << QByteArray("request = wifi.join('Home', secret).finished.later");
}

void TestQmlSecrets::mistakesInQml()
{
    QFETCH(QByteArray, script);
    written.clear();
    // "{ ... }" alone would be an object.
    const QByteArray function =
        "(function () { try { " + script + " } catch (mistake) { console.warn(mistake, mistake.stack) } })()";
    const QtMessageHandler before = qInstallMessageHandler(keep);
    m_document->evaluate(function);
    m_document->evaluate("console.warn(wifi, hotspot, hotspot.form, request)");
    qInstallMessageHandler(before);
    QVERIFY(written.last().contains(QLatin1String("morvek::HotspotForm(")));
    QVERIFY2(!tells(written.join(QLatin1Char('\n')), Passkey), qPrintable(written.join(QLatin1Char('\n'))));
}

void TestQmlSecrets::whatObjectsList_data()
{
    QTest::addColumn<QByteArray>("object");
    for (const char *object : {"wifi", "wifi.networks", "hotspot", "hotspot.form", "request"})
        QTest::addRow("%s", object) << QByteArray(object);
}

void TestQmlSecrets::whatObjectsList()
{
    QFETCH(QByteArray, object);
    m_document->evaluate("hotspot.form.setPassphrase(secret)");
    m_document->evaluate("request = wifi.join('Garage', secret)");
    QString text = m_document->evaluate("everything(" + object + ")").toString();
    QVERIFY(text.contains(QLatin1String("objectName")));
    QTRY_VERIFY(!m_document->evaluate("request.running").toBool());
    text += m_document->evaluate("everything(" + object + ")").toString();
    QVERIFY2(!tells(text, Passkey), qPrintable(text));
    // It is that which was meant.
    m_document->evaluate("request = hotspot.apply()");
    QTRY_VERIFY(m_document->evaluate("request.done").toBool());
    text = m_document->evaluate("everything(" + object + ")").toString();
    QVERIFY2(!tells(text, Passkey), qPrintable(text));
    QCOMPARE(m_document->evaluate("hotspot.reveal()").toString(), QString::fromUtf8(Passkey));
}

QTEST_MAIN(TestQmlSecrets)
#include "tst_qmlsecrets.moc"
