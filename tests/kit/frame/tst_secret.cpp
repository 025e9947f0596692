// SPDX-License-Identifier: Apache-2.0
#include "memorysearch.h"
#include "secret_p.h"

#include <QtTest/QtTest>

#include <type_traits>

using namespace morvek;

static_assert(!std::is_copy_constructible<Secret>::value, "copies are made on demand only");
static_assert(!std::is_copy_assignable<Secret>::value, "copies are made on demand only");
static_assert(!std::is_convertible<QString, Secret>::value, "no text becomes a secret unseen");
static_assert(!std::is_convertible<Secret, QString>::value, "no secret becomes a text unseen");
static_assert(std::is_nothrow_move_constructible<Secret>::value, "containers would copy it");
static_assert(std::is_nothrow_move_assignable<Secret>::value, "containers would copy it");

namespace {

const MemorySearch First("tfdsfu.pg.uif.cbdl.tfbu"); // "secret-of-the-back-seat"
const MemorySearch Second("b.tfdpoe.pof.mfgu.pwfs"); // "a-second-one-left-over"

/*! Not inlined: what is left in a register would not be found, and what is left on the stack is overwritten later. */
[[gnu::noinline]] Secret secretOf(const MemorySearch &search)
{
    QString text = search.text();
    Secret secret(text);
    text.fill(QLatin1Char('x'));
    return secret;
}

} // namespace

class SecretTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isWhatItWasMadeOf();
    void comparesWholeTexts();
    void searchFindsWhatIsThere();
    void cleared();
    void destroyed();
    void replaced();
    void replacedByItself();
    void movedFrom();
    void copiesAreWipedAlone();
    void textIsWiped();
    void textIsWipedBeyondItsEnd();
    void sharedTextStays();
    void textOfOthersStays();
};

void SecretTest::isWhatItWasMadeOf()
{
    const Secret secret(QStringLiteral("eight\u00e9\u20ac8"));
    QCOMPARE(secret.size(), 8);
    QVERIFY(!secret.isEmpty());
    QCOMPARE(secret.at(0), QLatin1Char('e'));
    QCOMPARE(secret.at(6), QChar(0x20ac));
    QCOMPARE(secret.text(), QStringLiteral("eight\u00e9\u20ac8"));
    QVERIFY(Secret().isEmpty());
    QVERIFY(Secret().text().isEmpty());
    QVERIFY(Secret(QString()).isEmpty());
    QVERIFY(Secret().copy().isEmpty());
}

void SecretTest::comparesWholeTexts()
{
    const Secret secret(QStringLiteral("abcd"));
    QVERIFY(secret == Secret(QStringLiteral("abcd")));
    QVERIFY(secret != Secret(QStringLiteral("abcD")));
    QVERIFY(secret != Secret(QStringLiteral("abc")));
    QVERIFY(secret != Secret(QStringLiteral("abcde")));
    QVERIFY(secret != Secret());
    QVERIFY(Secret() == Secret(QString()));
    QVERIFY(Secret() != secret);
}

void SecretTest::searchFindsWhatIsThere()
{
    QCOMPARE(First.count(), 0);
    QString text = First.text();
    QCOMPARE(First.count(), 1);
    QByteArray bytes = text.toUtf8();
    QCOMPARE(First.count(), 2);
    text.fill(QLatin1Char('x'));
    bytes.fill('x');
    QCOMPARE(First.count(), 0);
}

void SecretTest::cleared()
{
    Secret secret = secretOf(First);
    QCOMPARE(First.count(), 1);
    secret.clear();
    QVERIFY(secret.isEmpty());
    QCOMPARE(First.count(), 0);
}

void SecretTest::destroyed()
{
    {
        const Secret secret = secretOf(First);
        QCOMPARE(First.count(), 1);
    }
    QCOMPARE(First.count(), 0);
}

void SecretTest::replaced()
{
    Secret secret = secretOf(First);
    secret = secretOf(Second);
    QCOMPARE(First.count(), 0);
    QCOMPARE(Second.count(), 1);
    secret = Secret();
    QCOMPARE(Second.count(), 0);
    QVERIFY(secret.isEmpty());
}

void SecretTest::replacedByItself()
{
    Secret secret = secretOf(First);
    Secret &same = secret;
    secret = std::move(same);
    QCOMPARE(First.count(), 1);
    QVERIFY(secret == secretOf(First));
}

void SecretTest::movedFrom()
{
    Secret first = secretOf(First);
    Secret second(std::move(first));
    QVERIFY(first.isEmpty()); // NOLINT(bugprone-use-after-move)
    QVERIFY(first.text().isEmpty());
    QVERIFY(second == secretOf(First));
    QCOMPARE(First.count(), 1);
    Secret third;
    third = std::move(second);
    QVERIFY(second.isEmpty()); // NOLINT(bugprone-use-after-move)
    QCOMPARE(First.count(), 1);
    third.clear();
    QCOMPARE(First.count(), 0);
}

void SecretTest::copiesAreWipedAlone()
{
    Secret secret = secretOf(First);
    Secret copy = secret.copy();
    QVERIFY(copy == secret);
    QCOMPARE(First.count(), 2);
    copy.clear();
    QCOMPARE(First.count(), 1);
    QVERIFY(secret == secretOf(First));
}

void SecretTest::textIsWiped()
{
    const Secret secret = secretOf(First);
    QString text = secret.text();
    QCOMPARE(First.count(), 2);
    Secret::wipe(&text);
    QVERIFY(text.isNull());
    QCOMPARE(First.count(), 1);
    Secret::wipe(&text);
    QVERIFY(text.isNull());
}

void SecretTest::textIsWipedBeyondItsEnd()
{
    QString text = First.text("ab");
    text.truncate(1);
    QCOMPARE(First.count(), 1);
    Secret::wipe(&text);
    QCOMPARE(First.count(), 0);
}

void SecretTest::sharedTextStays()
{
    QString text = First.text();
    QString other = text;
    Secret::wipe(&text);
    QVERIFY(text.isNull());
    QCOMPARE(other.size(), 23);
    QCOMPARE(First.count(), 1);
    Secret::wipe(&other);
    QVERIFY(other.isNull());
}

void SecretTest::textOfOthersStays()
{
    const QChar memory[] = {QLatin1Char('a'), QLatin1Char('b')};
    QString text = QString::fromRawData(memory, 2);
    Secret::wipe(&text);
    QVERIFY(text.isNull());
    QCOMPARE(memory[0], QLatin1Char('a'));
    QString literal = QStringLiteral("literal");
    Secret::wipe(&literal);
    QVERIFY(literal.isNull());
}

QTEST_GUILESS_MAIN(SecretTest)
#include "tst_secret.moc"
