// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"

using namespace morvek;

class AccessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anImpossibleNameIsRefused_data();
    void anImpossibleNameIsRefused();
    void anUnusualNameIsTaken_data();
    void anUnusualNameIsTaken();
};

void AccessTest::anImpossibleNameIsRefused_data()
{
    QTest::addColumn<QString>("path");
    const QString zop = QStringLiteral("/zop/");
    QTest::newRow("empty path") << QString();
    QTest::newRow("root") << "/";
    QTest::newRow("relative") << "zop/object";
    QTest::newRow("above") << "/..";
    QTest::newRow("above at the end") << "/zop/..";
    QTest::newRow("above in the middle") << "/zop/../zop/object";
    QTest::newRow("above at the start") << "/../object";
    QTest::newRow("here") << "/zop/.";
    QTest::newRow("hidden") << "/zop/.object";
    QTest::newRow("hidden folder") << "/.zop/object";
    QTest::newRow("empty name") << "/zop//object";
    QTest::newRow("directory") << "/zop/object/";
    QTest::newRow("line break") << "/zop/a\nb";
    QTest::newRow("escape") << "/zop/a\x1b[31m";
    QTest::newRow("delete") << "/zop/a\x7f";
    QTest::newRow("zero") << zop + QChar(0) + QLatin1Char('a');
    QTest::newRow("overlong name") << zop + QString(300, QLatin1Char('a'));
    QTest::newRow("overlong in bytes") << zop + QString(150, QChar(0xe9));
    QTest::newRow("overlong path") << QStringLiteral("/zop").repeated(2000);
}

void AccessTest::anImpossibleNameIsRefused()
{
    QFETCH(QString, path);
    for (const auto mode : {ZopObject::Subscribe, ZopObject::ReadWrite, ZopObject::Publish}) {
        for (const bool flag : {false, true}) {
            ZopObject object(path, mode, flag);
            QVERIFY(!object.isValid());
            QVERIFY(!object.errorString().isEmpty());
            QVERIFY(!set(object, QStringLiteral("a=1")));
            QCOMPARE(object.path(), path);
        }
    }
    QString error;
    QVERIFY(!ZopObject::create(path, ZopChangeset(), &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!ZopObject::create(path, ZopChangeset()));
    error.clear();
    QVERIFY(!ZopObject::remove(path, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!ZopObject::remove(path));
}

void AccessTest::anUnusualNameIsTaken_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("outside ASCII") << QStringLiteral("gr\u00fc\u00dfe");
    QTest::newRow("outside the basic plane") << QStringLiteral("\U0001F697");
    QTest::newRow("blanks") << QStringLiteral(" a b ");
    QTest::newRow("dots") << QStringLiteral("a..b.");
    QTest::newRow("shell") << QStringLiteral("$(a);`b`*?~\\\"'");
    QTest::newRow("percent") << QStringLiteral("%1%2%s");
    QTest::newRow("long") << QString(64, QLatin1Char('n'));
}

void AccessTest::anUnusualNameIsTaken()
{
    QFETCH(QString, name);
    const QString path = testFolder() + name;
    ZopDirWatcher watcher(testFolder());
    const Events names(&watcher);
    QVERIFY(publish(path, QStringLiteral("a=1")));
    QVERIFY(names.wait(QLatin1Char('+') + name));
    ZopObject reader(path, ZopObject::Subscribe, false);
    QVERIFY2(reader.isValid(), qPrintable(reader.errorString()));
    const Events events(&reader);
    QVERIFY(set(path, QStringLiteral("a=2")));
    QVERIFY(events.wait(QStringLiteral("{a=2}")));
    QVERIFY(ZopObject::remove(path));

    const ZopObject daemon(path, ZopObject::Publish, true);
    QVERIFY2(daemon.isValid(), qPrintable(daemon.errorString()));
    const ZopObject client(path, ZopObject::ReadWrite, false);
    QVERIFY2(client.isValid(), qPrintable(client.errorString()));
}

CONTRACT_TEST_MAIN(AccessTest)

#include "tst_access.moc"
