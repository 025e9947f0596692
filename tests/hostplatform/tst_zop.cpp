// SPDX-License-Identifier: Apache-2.0
#include "childprocess.h"
#include "contracttest.h"

using namespace morvek;

/*! What morvek-zop shows of what others have written. */
class ZopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhatATerminalWouldActUpon_data();
    void showsWhatATerminalWouldActUpon();
};

void ZopTest::showsWhatATerminalWouldActUpon_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const auto character = [](uint code) { return QString::fromUcs4(&code, 1); };
    QTest::newRow("escape") << character(0x1b) << "\\u001b";
    QTest::newRow("end of line") << character('\n') << "\\u000a";
    QTest::newRow("delete") << character(0x7f) << "\\u007f";
    QTest::newRow("control of eight bits") << character(0x9b) << "\\u009b";
    QTest::newRow("line separator") << character(0x2028) << "\\u2028";
    QTest::newRow("paragraph separator") << character(0x2029) << "\\u2029";
    QTest::newRow("soft hyphen") << character(0xad) << "\\u00ad";
    QTest::newRow("no width") << character(0x200b) << "\\u200b";
    QTest::newRow("right to left") << character(0x202e) << "\\u202e";
    QTest::newRow("isolate") << character(0x2066) << "\\u2066";
    QTest::newRow("byte order mark") << QStringLiteral("x") + QChar(0xfeff) << "x\\ufeff";
    QTest::newRow("private use") << character(0xe000) << "\\ue000";
    QTest::newRow("unassigned") << character(0x378) << "\\u0378";
    QTest::newRow("tag") << character(0xe0041) << "\\U000e0041";
    QTest::newRow("private use, far") << character(0x10fffd) << "\\U0010fffd";
    QTest::newRow("letters") << QStringLiteral("gr\u00fc\u00df \u4f60") << QStringLiteral("gr\u00fc\u00df \u4f60");
    QTest::newRow("a letter, far") << character(0x10400) << character(0x10400);
    QTest::newRow("a picture") << character(0x1f697) << character(0x1f697);
}

void ZopTest::showsWhatATerminalWouldActUpon()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    ZopChangeset values;
    values.assignments.insert(QLatin1Char('n') + text, ZopVariant(text));
    QVERIFY(ZopObject::create(testPath("object"), values));

    qputenv("LC_ALL", "C.UTF-8"); // so that nothing is lost on the way
    ChildProcess show;
    show.start(QStringLiteral(MORVEK_ZOP), {QStringLiteral("show"), testPath("object")});
    QVERIFY(show.waitForFinished());
    QCOMPARE(QString::fromUtf8(show.readAllStandardOutput()), QStringLiteral("n%1 = %1  (text)\n").arg(shown));
    ChildProcess fail;
    fail.start(QStringLiteral(MORVEK_ZOP), {QStringLiteral("show"), QStringLiteral("/no/") + text});
    QVERIFY(fail.waitForFinished());
    const QString errors = QString::fromUtf8(fail.readAllStandardError());
    QVERIFY2(errors.startsWith(QStringLiteral("morvek-zop: /no/%1: ").arg(shown)), qPrintable(errors));
    QCOMPARE(errors.count(QLatin1Char('\n')), 1);
    QVERIFY(shown == text || !errors.chopped(1).contains(text)); // in the reason neither
    QVERIFY(ZopObject::remove(testPath("object")));
}

CONTRACT_TEST_MAIN(ZopTest)

#include "tst_zop.moc"
