// SPDX-License-Identifier: Apache-2.0
#include "owngroup.h"

#include <QtTest/QtTest>

using namespace morvek;

using Accounts = QVector<OwnGroup::Account>;
using Names = QVector<QByteArray>;

Q_DECLARE_METATYPE(Accounts)
Q_DECLARE_METATYPE(Names)

/*! When a group that may write is the user's alone. */
class OwnGroupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void judgesAGroup_data();
    void judgesAGroup();
    void whatCannotBeLookedUpIsAnObjection();
};

void OwnGroupTest::judgesAGroup_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Names>("members");
    QTest::addColumn<Accounts>("accounts");
    QTest::addColumn<QString>("objection");
    const OwnGroup::Account root {"root", 0, 0};
    const OwnGroup::Account ann {"ann", 1000, 1000};
    const OwnGroup::Account bob {"bob", 1001, 1001};
    // Always the group 1000, and the user 1000.
    QTest::newRow("the user's own") << QByteArray("ann") << Names() << Accounts {root, ann, bob} << "";
    QTest::newRow("the user is listed, too") << QByteArray("ann") << Names {"ann"} << Accounts {ann} << "";
    QTest::newRow("another's primary one")
        << QByteArray("bob") << Names() << Accounts {{"ann", 1000, 1001}, {"bob", 1001, 1000}}
        << "where the group \"bob\" may write, which is not the primary one of \"ann\"";
    QTest::newRow("the user is a member only")
        << QByteArray("ann") << Names {"ann"} << Accounts {{"ann", 1000, 100}}
        << "where the group \"ann\" may write, which is not the primary one of \"ann\"";
    QTest::newRow("of another name") << QByteArray("users") << Names() << Accounts {ann}
                                     << "where the group \"users\" may write, which does not bear the name of \"ann\"";
    QTest::newRow("of a longer name") << QByteArray("anna") << Names() << Accounts {ann}
                                      << "where the group \"anna\" may write, which does not bear the name of \"ann\"";
    QTest::newRow("another is a member") << QByteArray("ann") << Names {"ann", "bob"} << Accounts {ann, bob}
                                         << "where the group \"ann\" may write, which \"bob\" has, too";
    QTest::newRow("a member without an account") << QByteArray("ann") << Names {"carl"} << Accounts {ann}
                                                 << "where the group \"ann\" may write, which \"carl\" has, too";
    QTest::newRow("primary one of another, too") << QByteArray("ann") << Names() << Accounts {{"bob", 1001, 1000}, ann}
                                                 << "where the group \"ann\" may write, which \"bob\" has, too";
    QTest::newRow("the user has no account")
        << QByteArray("ann") << Names() << Accounts {root, bob}
        << "where the group \"ann\" may write, and there is no account of user 1000";
    QTest::newRow("there are no accounts") << QByteArray("ann") << Names() << Accounts()
                                           << "where the group \"ann\" may write, and there is no account of user 1000";
}

void OwnGroupTest::judgesAGroup()
{
    QFETCH(QByteArray, name);
    QFETCH(Names, members);
    QFETCH(Accounts, accounts);
    QTEST(OwnGroup::objection({name, 1000, members}, 1000, accounts), "objection");
}

void OwnGroupTest::whatCannotBeLookedUpIsAnObjection()
{
    QCOMPARE(OwnGroup::objection(4294967001),
             QStringLiteral("where the group 4294967001 may write, which cannot be looked up: there is no such group"));
}

QTEST_APPLESS_MAIN(OwnGroupTest)

#include "tst_owngroup.moc"
