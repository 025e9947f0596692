// SPDX-License-Identifier: Apache-2.0
#include "hotspotstore.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace morvek;

namespace {

QJsonObject profile(const char *ssid)
{
    const QByteArray text =
        R"({"type": "lan", "lantype": "wlanap", "wantype": "bridge", "lancfg": {"gateway_address": "192.168.0.1",
            "gateway_subnet": "255.255.255.0", "dhcp_lease_time": "120"}, "lanprofile": {"ssid": "%1",
            "passphrase": "drive safely 8", "mhs_band": "5.0", "max_num_sta": 10, "security_type": "wpa2",
            "autoshutdown_time": 600, "privacy": false, "block_conn": true}})";
    return QJsonDocument::fromJson(QByteArray(text).replace("%1", ssid)).object();
}

} // namespace

class HotspotStoreTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void nothingStored();
    void keepsWhatItIsGiven();
    void isPrivateWhateverTheUmaskIs_data();
    void isPrivateWhateverTheUmaskIs();
    void isPrivateOnceItIsRead();
    void replacesALink();
    void readsNoLink();
    void readsNoPipe();
    void wrongContent_data();
    void wrongContent();
    void largestFile();
    void fullDisk();
    void noPlace();
    void leftoversDoNotMatter();
    void forgets();
    void cannotForget();

private:
    QString file() const { return m_root->filePath(QStringLiteral(".morvek-hostd-hotspot.json")); }
    QByteArray name() const { return QFile::encodeName(file()); }
    void write(const QByteArray &content) const;
    QStringList files() const
    {
        return QDir(m_root->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    QString unused(const QString &why) const
    {
        return QStringLiteral("the stored profile \"%1\" is not used: %2").arg(file(), why);
    }

    std::unique_ptr<QTemporaryDir> m_root;
    HotspotStore m_store;
    QString m_error;
};

void HotspotStoreTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    m_store.setRoot(m_root->path());
    m_error = QStringLiteral("former");
}

void HotspotStoreTest::cleanup()
{
    m_root.reset();
}

void HotspotStoreTest::write(const QByteArray &content) const
{
    QFile target(file());
    QVERIFY(target.open(QIODevice::WriteOnly));
    QCOMPARE(target.write(content), qint64(content.size()));
}

void HotspotStoreTest::nothingStored()
{
    QCOMPARE(m_store.load(&m_error), QJsonObject());
    QCOMPARE(m_error, QString());
}

void HotspotStoreTest::keepsWhatItIsGiven()
{
    for (const char *ssid : {"One", "Two", "Caf\xc3\xa9"}) {
        QVERIFY2(m_store.save(profile(ssid), &m_error), qPrintable(m_error));
        QCOMPARE(m_store.load(&m_error), profile(ssid));
        QCOMPARE(m_error, QString());
    }
    QCOMPARE(files(), QStringList {QStringLiteral(".morvek-hostd-hotspot.json")});
}

void HotspotStoreTest::isPrivateWhateverTheUmaskIs_data()
{
    QTest::addColumn<int>("mask");

    QTest::addRow("open") << 0;
    QTest::addRow("usual") << 022;
    QTest::addRow("closed") << 0777;
}

void HotspotStoreTest::isPrivateWhateverTheUmaskIs()
{
    QFETCH(int, mask);
    const mode_t former = umask(mode_t(mask));
    const bool saved = m_store.save(profile("One"), &m_error);
    umask(former);
    QVERIFY2(saved, qPrintable(m_error));
    struct stat status;
    QCOMPARE(lstat(name().constData(), &status), 0);
    QCOMPARE(status.st_mode, mode_t(S_IFREG | 0600));
}

void HotspotStoreTest::isPrivateOnceItIsRead()
{
    QVERIFY2(m_store.save(profile("One"), &m_error), qPrintable(m_error));
    QCOMPARE(chmod(name().constData(), 0664), 0);
    QCOMPARE(m_store.load(&m_error), profile("One"));
    QCOMPARE(m_error, QString());
    struct stat status;
    QCOMPARE(lstat(name().constData(), &status), 0);
    QCOMPARE(status.st_mode, mode_t(S_IFREG | 0600));
}

void HotspotStoreTest::replacesALink()
{
    const QString other = m_root->filePath(QStringLiteral("other"));
    const QByteArray target = QFile::encodeName(other);
    QFile foreign(other);
    QVERIFY(foreign.open(QIODevice::WriteOnly));
    foreign.write("mine");
    foreign.close();
    QCOMPARE(symlink(target.constData(), name().constData()), 0);
    QCOMPARE(symlink(target.constData(), (name() + ".new").constData()), 0);
    QVERIFY2(m_store.save(profile("One"), &m_error), qPrintable(m_error));
    QCOMPARE(m_store.load(&m_error), profile("One"));
    QVERIFY(foreign.open(QIODevice::ReadOnly));
    QCOMPARE(foreign.readAll(), QByteArray("mine"));
}

void HotspotStoreTest::readsNoLink()
{
    QVERIFY(m_store.save(profile("One"), &m_error));
    const QString other = m_root->filePath(QStringLiteral("other"));
    QVERIFY(QFile::rename(file(), other));
    QCOMPARE(symlink(QFile::encodeName(other).constData(), name().constData()), 0);
    QCOMPARE(m_store.load(&m_error), QJsonObject());
    QCOMPARE(m_error, unused(QStringLiteral("Too many levels of symbolic links")));
}

// Who opens a pipe waits for the other end.
void HotspotStoreTest::readsNoPipe()
{
    QCOMPARE(mkfifo(name().constData(), 0600), 0);
    QCOMPARE(m_store.load(&m_error), QJsonObject());
    QCOMPARE(m_error, unused(QStringLiteral("is not a file of at most 64 KiB")));
}

void HotspotStoreTest::wrongContent_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("why");

    const QByteArray right = QJsonDocument(profile("One")).toJson();
    QTest::addRow("empty") << QByteArray("") << "is empty";
    QTest::addRow("no JSON") << QByteArray("TopSecret") << "illegal value";
    QTest::addRow("cut off") << right.left(right.size() / 2) << "unterminated string";
    QTest::addRow("array") << QByteArray("[]") << "\"type\" is missing";
    QTest::addRow("no profile") << QByteArray("{}") << "\"type\" is missing";
    QTest::addRow("wrong value") << QByteArray(right).replace("wpa2", "TopSecret")
                                 << "\"security_type\" must be none, wpa, wpa2 or wpa_mixed";
}

void HotspotStoreTest::wrongContent()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, why);
    write(content);
    QCOMPARE(m_store.load(&m_error), QJsonObject());
    QCOMPARE(m_error, unused(why));
    QVERIFY2(m_store.save(profile("One"), &m_error), qPrintable(m_error));
    QCOMPARE(m_store.load(&m_error), profile("One"));
}

void HotspotStoreTest::largestFile()
{
    const QByteArray right = QJsonDocument(profile("One")).toJson();
    write(right + QByteArray(64 * 1024 - right.size(), ' '));
    QCOMPARE(m_store.load(&m_error), profile("One"));
    QCOMPARE(m_error, QString());
    write(right + QByteArray(64 * 1024 + 1 - right.size(), ' '));
    QCOMPARE(m_store.load(&m_error), QJsonObject());
    QCOMPARE(m_error, unused(QStringLiteral("is not a file of at most 64 KiB")));
}

void HotspotStoreTest::fullDisk()
{
    QVERIFY(m_store.save(profile("One"), &m_error));
    rlimit former {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &former), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QString reasons[2];
    bool saved[2];
    // No room at all, and room for a part.
    const rlim_t rooms[] = {0, 100};
    for (int i = 0; i < 2; ++i) {
        const rlimit limit {rooms[i], former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        saved[i] = m_store.save(profile("Two"), &reasons[i]);
    }
    setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!saved[0] && !saved[1]);
    QCOMPARE(reasons[0], QStringLiteral("File too large"));
    QCOMPARE(reasons[1], QStringLiteral("No space left on device"));
    QCOMPARE(m_store.load(&m_error), profile("One"));
    QCOMPARE(files(), QStringList {QStringLiteral(".morvek-hostd-hotspot.json")});
}

void HotspotStoreTest::noPlace()
{
    QVERIFY(QDir().mkdir(file()));
    QVERIFY(!m_store.save(profile("One"), &m_error));
    QCOMPARE(m_error, QStringLiteral("Is a directory"));
    QCOMPARE(files(), QStringList {QStringLiteral(".morvek-hostd-hotspot.json")});
    m_store.setRoot(m_root->filePath(QStringLiteral("gone")));
    QVERIFY(!m_store.save(profile("One"), &m_error));
    QCOMPARE(m_error, QStringLiteral("No such file or directory"));
    QCOMPARE(m_store.load(&m_error), QJsonObject());
}

void HotspotStoreTest::leftoversDoNotMatter()
{
    QFile left(file() + QStringLiteral(".new"));
    QVERIFY(left.open(QIODevice::WriteOnly));
    left.write("{\"half\"");
    left.close();
    QVERIFY(left.setPermissions(QFile::ReadOwner | QFile::ReadOther));
    QCOMPARE(m_store.load(&m_error), QJsonObject());
    QCOMPARE(m_error, QString());
    QVERIFY2(m_store.save(profile("One"), &m_error), qPrintable(m_error));
    struct stat status;
    QCOMPARE(lstat(name().constData(), &status), 0);
    QCOMPARE(status.st_mode, mode_t(S_IFREG | 0600));
    QCOMPARE(files(), QStringList {QStringLiteral(".morvek-hostd-hotspot.json")});
}

void HotspotStoreTest::forgets()
{
    QVERIFY2(m_store.forget(&m_error), qPrintable(m_error)); // nothing
    QVERIFY(m_store.save(profile("One"), &m_error));
    QVERIFY(QFile::copy(file(), file() + QStringLiteral(".new")));
    const QString other = m_root->filePath(QStringLiteral(".morvek-hostd.lock"));
    QVERIFY(QFile::copy(file(), other));
    QVERIFY2(m_store.forget(&m_error), qPrintable(m_error));
    QCOMPARE(files(), QStringList {QStringLiteral(".morvek-hostd.lock")});
    // Not what a link stands for.
    QCOMPARE(symlink(QFile::encodeName(other).constData(), name().constData()), 0);
    QVERIFY2(m_store.forget(&m_error), qPrintable(m_error));
    QCOMPARE(files(), QStringList {QStringLiteral(".morvek-hostd.lock")});
}

void HotspotStoreTest::cannotForget()
{
    write("x");
    m_store.setRoot(file());
    QVERIFY(!m_store.forget(&m_error));
    QCOMPARE(m_error,
             QStringLiteral("cannot remove the stored profile \"%1/.morvek-hostd-hotspot.json\": Not a directory")
                 .arg(file()));
}

QTEST_GUILESS_MAIN(HotspotStoreTest)
#include "tst_hotspotstore.moc"
