// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "hostfiles.h"
#include "journalbytes.h"
#include "lockholder.h"

#include <memory>

using namespace morvek;
using namespace JournalBytes;

namespace {

constexpr int MiB = 1024 * 1024;
constexpr int Other = 5; // a writer

QByteArray payload(const char *name, const char *value)
{
    return number(1, 4) + block(name) + block(value) + block("text");
}

/*! The record of an update that sets the attribute a. */
QByteArray update(const char *value)
{
    return record(Other, payload("a", value));
}

/*! What a killed writer leaves of a record. */
QByteArray torn(int size = 60, quint64 writer = Other)
{
    return recordHeader(writer, quint32(size) + 1, 7) + QByteArray(size, 'x');
}

QByteArray spoilt(QByteArray bytes, int at)
{
    bytes[at] = char(bytes.at(at) ^ 1);
    return bytes;
}

bool append(const QString &path, const QByteArray &bytes)
{
    QFile file(fileOf(path));
    return file.open(QIODevice::Append) && file.write(bytes) == bytes.size();
}

} // namespace

/*! A daemon sees whether its object's file still says what it has said to whoever has read it. */
class ObjectCheckTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void whatReadersStepOverIsNoDamage_data();
    void whatReadersStepOverIsNoDamage();
    void whatHasBeenToldMustStay_data();
    void whatHasBeenToldMustStay();
    void anObjectHasAState();
    void whatIsTornByALivingWriterIsDamage();
    void whoHasReadMoreAgreesAgain();
    void whatIsCutOffIsMissedAtOnce();
    void theNextGenerationIsTheSameObject();
    void aSlowReaderMissesNothingByARenewal();
    void whatIsLockedIsNotJudged();

private:
    QString m_path;
    std::unique_ptr<ZopObject> m_object;
};

void ObjectCheckTest::init()
{
    m_object.reset();
    m_path = testPath("object") + QString::number(qHash(QByteArray(QTest::currentDataTag())));
    const QByteArray state = record(0, payload("a", "0"));
    QVERIFY(plant(m_path, header(Marker, quint64(HeaderSize + state.size())) + state));
    m_object = std::make_unique<ZopObject>(m_path, ZopObject::ReadWrite, false);
}

void ObjectCheckTest::whatReadersStepOverIsNoDamage_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("value");
    QTest::newRow("behind") << torn() << "0";
    QTest::newRow("between") << torn() + update("1") << "1";
    QTest::newRow("a header only") << torn(0) + update("1") << "1";
    QTest::newRow("several") << update("1") + torn() + torn(0) + torn(9000) + update("2") + torn() << "2";
}

void ObjectCheckTest::whatReadersStepOverIsNoDamage()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, value);
    ZopObject running(m_path, ZopObject::Subscribe, false);
    running.setAttributeCacheEnabled(true);
    const QSignalSpy removals(&running, &ZopObject::attributeRemoved);
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QVERIFY(append(m_path, bytes));
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    ZopObject fresh(m_path, ZopObject::Subscribe, false);
    fresh.setAttributeCacheEnabled(true);
    QCOMPARE(fresh.attribute(QStringLiteral("a")).toString(), value);
    QVERIFY(set(m_path, QStringLiteral("a=3")));
    QTRY_COMPARE(running.attribute(QStringLiteral("a")).toString(), QStringLiteral("3"));
    QCOMPARE(removals.count(), 0);
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QVERIFY(append(m_path, "?"));
    QVERIFY(!m_object->check());
}

void ObjectCheckTest::whatHasBeenToldMustStay_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const QByteArray whole = update("1");
    QTest::newRow("wrong from the first") << QByteArray() << spoilt(whole, 30);
    QTest::newRow("overwritten length") << whole << spoilt(whole, 17) + update("2");
    QTest::newRow("overwritten payload") << whole << spoilt(whole, 30);
    QTest::newRow("overwritten last byte") << whole + update("2") << spoilt(whole, whole.size() - 1) + update("2");
    QTest::newRow("overwritten marker") << whole + update("2") << spoilt(whole, 0) + update("2");
    QTest::newRow("cut") << whole << whole.chopped(1);
    QTest::newRow("cut and written on") << whole << whole.chopped(1) + update("2");
    QTest::newRow("other update") << whole << update("2");
    QTest::newRow("wrong behind a torn one") << QByteArray() << torn(9000) + spoilt(whole, 30);
    QTest::newRow("wrong before a torn one") << QByteArray() << spoilt(whole, 30) + torn() + whole;
    QTest::newRow("nonsense") << QByteArray() << QByteArray(100, 'x');
    QTest::newRow("nonsense between") << QByteArray() << QByteArray(100, 'x') + whole;
    QTest::newRow("less than a header") << QByteArray() << whole.left(23);
    QTest::newRow("more than fits") << QByteArray() << recordHeader(Other, 16 * MiB + 1, 7);
}

void ObjectCheckTest::whatHasBeenToldMustStay()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const QByteArray state = content(m_path);
    QVERIFY(m_object->check());
    QVERIFY(append(m_path, before));
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QVERIFY(QFile::resize(fileOf(m_path), state.size()));
    QVERIFY(append(m_path, after));
    QVERIFY(!m_object->check());
    QVERIFY2(m_object->errorString().startsWith(QStringLiteral("malformed content")),
             qPrintable(m_object->errorString()));
}

void ObjectCheckTest::anObjectHasAState()
{
    QVERIFY(QFile::resize(fileOf(m_path), HeaderSize));
    QVERIFY(!m_object->check());
}

void ObjectCheckTest::whatIsTornByALivingWriterIsDamage()
{
    QVERIFY(m_object->check());
    const int state = content(m_path).size();
    QVERIFY(set(*m_object, QStringLiteral("a=1")));
    const quint64 writer = numberAt(content(m_path), state + 8, 8);
    QVERIFY(m_object->check());
    QVERIFY(append(m_path, torn(60, writer)));
    QVERIFY(!m_object->check());
}

void ObjectCheckTest::whoHasReadMoreAgreesAgain()
{
    QVERIFY(m_object->check());
    ZopObject running(m_path, ZopObject::Subscribe, false);
    running.setAttributeCacheEnabled(true);
    QVERIFY(append(m_path, update("1") + record(Other, payload("b", "1"))));
    QTRY_COMPARE(running.attribute(QStringLiteral("b")).toString(), QStringLiteral("1"));
    QVERIFY(QFile::resize(fileOf(m_path), content(m_path).size() - 1));
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QTRY_VERIFY(!running.attribute(QStringLiteral("b")).isValid());
    QCOMPARE(running.attribute(QStringLiteral("a")).toString(), QStringLiteral("1"));
}

void ObjectCheckTest::whatIsCutOffIsMissedAtOnce()
{
    QVERIFY(m_object->check());
    const int state = content(m_path).size();
    QVERIFY(set(*m_object, QStringLiteral("a=1")));
    QVERIFY(QFile::resize(fileOf(m_path), state));
    QVERIFY(!m_object->check());
}

void ObjectCheckTest::theNextGenerationIsTheSameObject()
{
    QVERIFY(m_object->check());
    const QByteArray first = content(m_path);
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("b"), QString(MiB, QLatin1Char('b')));
    QVERIFY(m_object->setAttributes(changes));
    const QByteArray next = content(m_path);
    QVERIFY(numberAt(next, 24, 8) > numberAt(first, 24, 8));
    // Its own marker.
    QByteArray left = torn();
    left.replace(0, 8, next.mid(8, 8));
    QVERIFY(append(m_path, left));
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QVERIFY(QFile::resize(fileOf(m_path), next.size() - 1));
    QVERIFY(!m_object->check());
}

void ObjectCheckTest::aSlowReaderMissesNothingByARenewal()
{
    QVERIFY(m_object->check());
    ZopObject slow(m_path, ZopObject::Subscribe, false);
    const QSignalSpy updates(&slow, &ZopObject::attributesChanged);
    ZopChangeset changes;
    changes.assignments.insert(QStringLiteral("b"), QString(MiB, QLatin1Char('b')));
    QVERIFY(m_object->setAttributes(changes));
    QVERIFY(set(m_path, QStringLiteral("a=1")));
    const auto generation = [this] { return numberAt(content(m_path), 24, 8); };
    QCOMPARE(generation(), quint64(2));
    QByteArray left = torn();
    left.replace(0, 8, content(m_path).mid(8, 8));
    QVERIFY(append(m_path, left));
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QCOMPARE(generation(), quint64(2));
    QTRY_COMPARE(updates.count(), 2);
    QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    QCOMPARE(generation(), quint64(4));
}

void ObjectCheckTest::whatIsLockedIsNotJudged()
{
    QVERIFY(m_object->check());
    QVERIFY(append(m_path, QByteArray(100, 'x')));
    {
        const LockHolder holder(fileOf(m_path));
        QVERIFY(holder.holds());
        QVERIFY2(m_object->check(), qPrintable(m_object->errorString()));
    }
    QVERIFY(!m_object->check());
}

CONTRACT_TEST_MAIN(ObjectCheckTest)

#include "tst_objectcheck.moc"
