// SPDX-License-Identifier: Apache-2.0
#include "qmldocument.h"
#include "testunit.h"

#include <QtCore/QDir>
#include <QtTest/QtTest>

using namespace morvek;

/*! What the documents show in QML runs, and warns of nothing. */
class TestQmlDocuments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runs_data();
    void runs();
};

void TestQmlDocuments::runs_data()
{
    QTest::addColumn<QByteArray>("text");
    const QDir folder(QStringLiteral(MORVEK_PROJECT "/docs"));
    int ofTheModule = 0;
    for (const QString &name : folder.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray block;
        bool isInside = false;
        for (int line = 1; !file.atEnd(); ++line) {
            const QByteArray text = file.readLine();
            if (isInside && text.startsWith("```")) {
                QTest::addRow("%s:%d", qPrintable(name), line) << block;
                ofTheModule += name == QLatin1String("qml.md") ? 1 : 0;
            } else if (isInside) {
                block += text;
            }
            if (text.startsWith("```")) {
                isInside = text == "```qml\n";
                block.clear();
            }
        }
    }
    QVERIFY(ofTheModule >= 11); // one for each type
}

void TestQmlDocuments::runs()
{
    QFETCH(QByteArray, text);
    if (text.contains("Morvek.TestKit"))
        return QTest::qSkip("a test of its own, which has a unit of its own", __FILE__, __LINE__);
    TestUnit unit;
    QVERIFY(unit.start());
    const QmlDocument document(text);
    QVERIFY2(document.root(), qPrintable(document.errors()));
    // What follows the daemons has come to rest, and warned of nothing.
    QObject *controller = nullptr;
    for (QObject *object : document.root()->findChildren<QObject *>()) {
        if (object->inherits("morvek::NetworkController"))
            QVERIFY(unit.waitForReady(controller = object));
    }
    QVERIFY(unit.pass(10000));
    QCoreApplication::processEvents();
    unit.kill();
    if (controller)
        QTRY_VERIFY(controller->property("availability").toInt() != 1);
}

QTEST_MAIN(TestQmlDocuments)
#include "tst_qmldocuments.moc"
