// SPDX-License-Identifier: Apache-2.0
#include "contracttest.h"
#include "peer.h"

#include <numeric>
#include <random>

using namespace morvek;

namespace {

constexpr int Lives = 60;          // of writers, each killed at a random moment
constexpr int Enough = 400;        // updates
constexpr int AtOnce = 3;          // writers
constexpr int LongestLife = 12000; // microseconds of writing
constexpr int LargestPayload = 20000;

struct Update
{
    int writer = 0;
    int number = 0;
    QString payload;
};

/*! "n=2 p=500*c w=7}", as a peer tells it. */
Update readUpdate(const QString &line)
{
    const QStringList words = line.chopped(1).split(QLatin1Char(' '));
    Update update;
    if (words.size() == 3) {
        update.number = words.at(0).mid(2).toInt();
        update.payload = words.at(1).mid(2);
        update.writer = words.at(2).mid(2).toInt();
    }
    return update;
}

/*! The payload that the writer gives to this update. */
QString payloadOf(int writer, int number)
{
    const int size = int((writer * 7919 + number * 104729LL) % LargestPayload);
    const QChar letter = QLatin1Char(char('a' + number % 26));
    return size < 100 ? QString(size, letter) : QStringLiteral("%1*%2").arg(size).arg(letter);
}

/*! Empty, or what is wrong with the updates that a reader was told. */
QString fault(const QStringList &updates, const QHash<int, int> &confirmed)
{
    QHash<int, int> last;
    for (const QString &line : updates) {
        const Update update = readUpdate(line);
        if (update.writer == 0)
            continue;
        if (update.number != ++last[update.writer])
            return QStringLiteral("lost, doubled or out of order: ") + line;
        if (update.payload != payloadOf(update.writer, update.number))
            return QStringLiteral("torn: ") + line;
    }
    for (auto it = confirmed.begin(); it != confirmed.end(); ++it) {
        // What the writer did not come to confirm may be there or not.
        const int told = last.value(it.key());
        if (told < it.value() || told > it.value() + 1)
            return QStringLiteral("writer %1 confirmed %2, told were %3").arg(it.key()).arg(it.value()).arg(told);
    }
    return QString();
}

} // namespace

/*! Writers are killed in the middle of what they do; their readers must not notice. */
class KillTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingConfirmedIsLostAndNothingElseHappens();

private:
    bool runWriters(const QString &path);
    int total() const;

    std::mt19937 m_random;
    QHash<int, int> m_confirmed; // by writer
};

/*! Lets a few writers live for a random time each, and notes what they confirmed. */
bool KillTest::runWriters(const QString &path)
{
    std::vector<std::unique_ptr<Peer>> writers;
    const int first = m_confirmed.size() + 1;
    for (int i = 0; i < AtOnce; ++i) {
        writers.push_back(std::make_unique<Peer>());
        if (!writers.back()->ask(QStringLiteral("open o %1 2").arg(path), QStringLiteral("o open")))
            return false;
    }
    // A machine that is slow, or slowed down by a sanitizer, gets longer ones after a while.
    const int longest = LongestLife << (m_confirmed.size() / Lives);
    for (int i = 0; i < AtOnce; ++i) {
        const int life = 1 + int(m_random() % unsigned(longest));
        writers[size_t(i)]->send(
            QStringLiteral("die %1\nwrite o %2 0 %3").arg(life).arg(first + i).arg(LargestPayload));
    }
    for (int i = 0; i < AtOnce; ++i) {
        if (!writers[size_t(i)]->waitForEnd())
            return false;
        const QStringList said = writers[size_t(i)]->heard(QStringLiteral("%1 wrote ").arg(first + i));
        m_confirmed.insert(first + i, said.isEmpty() ? 0 : said.last().toInt());
    }
    return true;
}

int KillTest::total() const
{
    return std::accumulate(m_confirmed.begin(), m_confirmed.end(), 0);
}

void KillTest::nothingConfirmedIsLostAndNothingElseHappens()
{
    const auto seed = qEnvironmentVariableIsSet("CONTRACT_SEED")
        ? unsigned(qEnvironmentVariableIntValue("CONTRACT_SEED"))
        : 20240229U;
    qInfo("CONTRACT_SEED=%u", seed);
    m_random.seed(seed);

    const QString path = testPath("object");
    QVERIFY(publish(path, QString()));
    Peer readers[2];
    for (Peer &reader : readers)
        QVERIFY(reader.ask(QStringLiteral("open o %1 1").arg(path), QStringLiteral("o open")));
    while (m_confirmed.size() < Lives || (total() < Enough && m_confirmed.size() < 10 * Lives)) {
        QVERIFY(runWriters(path));
        // Nobody is so far behind that not everything is told.
        const QString round = QStringLiteral("-round%1").arg(m_confirmed.size());
        QVERIFY(set(path, round));
        for (Peer &reader : readers)
            QVERIFY(reader.wait(QStringLiteral("o {%1}").arg(round)));
    }

    qInfo("%d updates of %d killed writers", total(), m_confirmed.size());
    QVERIFY(total() >= Enough);
    QVERIFY(set(path, QStringLiteral("end=1")));
    for (Peer &reader : readers) {
        QVERIFY(reader.wait(QStringLiteral("o {end=1}")));
        QCOMPARE(fault(reader.heard(QStringLiteral("o {")), m_confirmed), QString());
    }
    QCOMPARE(readers[0].heard(QStringLiteral("o {")), readers[1].heard(QStringLiteral("o {")));

    // Who comes now finds the state that the last update left.
    const QStringList heard = readers[0].heard(QStringLiteral("o {"));
    const Update last = readUpdate(heard.at(heard.size() - 3)); // then the round was over
    ZopObject object(path, ZopObject::Subscribe, false);
    const Events events(&object);
    object.setAttributeCacheEnabled(true);
    QCOMPARE(
        events.updates(),
        QStringList({QStringLiteral("{end=1 n=%1 p=%2 w=%3}").arg(last.number).arg(last.payload).arg(last.writer)}));
}

CONTRACT_TEST_MAIN(KillTest)

#include "tst_kill.moc"
