// SPDX-License-Identifier: Apache-2.0
#include "asynchotspotconfigoperation.h"
#include "asynchotspotenableoperation.h"
#include "asyncnetworkinterfaceoperation.h"
#include "asyncoperationwriter_p.h"
#include "asyncwificonnectoperation.h"
#include "asyncwifiscanoperation.h"
#include "eventloop.h"

#include <QtCore/QMetaMethod>
#include <QtTest/QtTest>

#include <memory>

using namespace morvek;

namespace {

/*! Counts its copies. */
struct Counted
{
    Counted() = default;
    Counted(const Counted &) { ++copies; }
    Counted &operator=(const Counted &) = default;
    static int copies;
};

int Counted::copies = 0;

struct Ends
{
    QList<const void *> succeeded;
    QList<const void *> failed;
};

/*! One of the five classes, as the tests use it. */
struct Kind
{
    QByteArray name;
    AsyncOperationBase *(*create)();
    void (*setResult)(AsyncOperationBase *);
    void (*setResults)(AsyncOperationBase *, int count);
    void (*setError)(AsyncOperationBase *, const AsyncOperationError &);
    int (*resultCount)(const AsyncOperationBase *);
    void (*record)(AsyncOperationBase *, Ends *);
};

template<typename Operation>
using Result = typename std::decay<decltype(std::declval<Operation>().results().first())>::type;

template<typename Operation>
Kind kind(const char *name)
{
    return {
        name,
        []() -> AsyncOperationBase * { return new Operation; },
        [](AsyncOperationBase *operation) {
            AsyncOperationWriter::setResult(*static_cast<Operation *>(operation), Result<Operation>());
        },
        [](AsyncOperationBase *operation, int count) {
            QList<Result<Operation>> values;
            for (int i = 0; i < count; ++i)
                values.append(Result<Operation>());
            AsyncOperationWriter::setResults(*static_cast<Operation *>(operation), values);
        },
        [](AsyncOperationBase *operation, const AsyncOperationError &error) {
            AsyncOperationWriter::setError(*static_cast<Operation *>(operation), error);
        },
        [](const AsyncOperationBase *operation) { return static_cast<const Operation *>(operation)->results().size(); },
        [](AsyncOperationBase *operation, Ends *ends) {
            auto *concrete = static_cast<Operation *>(operation);
            QObject::connect(concrete, &Operation::success, [ends](Operation *o) { ends->succeeded.append(o); });
            QObject::connect(concrete, &Operation::failure, [ends](Operation *o) { ends->failed.append(o); });
        },
    };
}

} // namespace

Q_DECLARE_METATYPE(Kind)

class CountedOperation : public AsyncOperation<Counted>
{
    Q_OBJECT

public:
    Q_INVOKABLE void notifySuccess() { }
};

/*! Hears of the ends of operations by name, as an application may. */
class Listener : public QObject
{
    Q_OBJECT

public:
    Ends ends;

public Q_SLOTS:
    void onSuccess(morvek::AsyncHotspotEnableOperation *asyncop) { ends.succeeded.append(asyncop); }
    void onSuccess(morvek::AsyncHotspotConfigOperation *asyncop) { ends.succeeded.append(asyncop); }
    void onSuccess(morvek::AsyncWifiScanOperation *asyncop) { ends.succeeded.append(asyncop); }
    void onSuccess(morvek::AsyncWifiConnectOperation *asyncop) { ends.succeeded.append(asyncop); }
    void onSuccess(morvek::AsyncNetworkInterfaceOperation *asyncop) { ends.succeeded.append(asyncop); }
    void onFailure(morvek::AsyncHotspotEnableOperation *asyncop) { ends.failed.append(asyncop); }
    void onFailure(morvek::AsyncHotspotConfigOperation *asyncop) { ends.failed.append(asyncop); }
    void onFailure(morvek::AsyncWifiScanOperation *asyncop) { ends.failed.append(asyncop); }
    void onFailure(morvek::AsyncWifiConnectOperation *asyncop) { ends.failed.append(asyncop); }
    void onFailure(morvek::AsyncNetworkInterfaceOperation *asyncop) { ends.failed.append(asyncop); }
};

class TestAsyncOperation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registersItsType_data() { kinds(); }
    void registersItsType();
    void reachesQueuedConnectionsByName_data() { kinds(); }
    void reachesQueuedConnectionsByName();
    void startsPending_data() { kinds(); }
    void startsPending();
    void tellsItselfWhenNotified_data() { kinds(); }
    void tellsItselfWhenNotified();
    void succeedsFromTheEventLoop_data() { kinds(); }
    void succeedsFromTheEventLoop();
    void succeedsWithAListFromTheEventLoop_data() { kinds(); }
    void succeedsWithAListFromTheEventLoop();
    void failsFromTheEventLoop_data() { kinds(); }
    void failsFromTheEventLoop();
    void dropsTheNoticeWhenDeleted_data() { kinds(); }
    void dropsTheNoticeWhenDeleted();
    void mayBeDeletedInItsSlot_data() { kinds(); }
    void mayBeDeletedInItsSlot();
    void appendsToItsResults();
    void replacesItsResults();
    void copiesNoResultForALoop();
    void runsAnOverriddenNotice();

private:
    void kinds();
};

void TestAsyncOperation::kinds()
{
    QTest::addColumn<Kind>("kind");
    const QList<Kind> all {
        kind<AsyncHotspotEnableOperation>("morvek::AsyncHotspotEnableOperation"),
        kind<AsyncHotspotConfigOperation>("morvek::AsyncHotspotConfigOperation"),
        kind<AsyncWifiScanOperation>("morvek::AsyncWifiScanOperation"),
        kind<AsyncWifiConnectOperation>("morvek::AsyncWifiConnectOperation"),
        kind<AsyncNetworkInterfaceOperation>("morvek::AsyncNetworkInterfaceOperation"),
    };
    for (const Kind &kind : all)
        QTest::newRow(kind.name) << kind;
}

void TestAsyncOperation::startsPending()
{
    QFETCH(Kind, kind);
    const std::unique_ptr<AsyncOperationBase> operation(kind.create());
    QVERIFY(!operation->parent());
    QVERIFY(!operation->hasError());
    QCOMPARE(operation->error().code(), 0);
    QVERIFY(operation->error().message().isEmpty());
    QCOMPARE(kind.resultCount(operation.get()), 0);
}

void TestAsyncOperation::tellsItselfWhenNotified()
{
    QFETCH(Kind, kind);
    const std::unique_ptr<AsyncOperationBase> operation(kind.create());
    Ends ends;
    kind.record(operation.get(), &ends);
    QVERIFY(QMetaObject::invokeMethod(operation.get(), "notifySuccess"));
    QCOMPARE(ends.succeeded, QList<const void *> {operation.get()});
    QVERIFY(ends.failed.isEmpty());
    QVERIFY(QMetaObject::invokeMethod(operation.get(), "notifyFailure"));
    QCOMPARE(ends.failed, QList<const void *> {operation.get()});
    QCOMPARE(ends.succeeded.size(), 1);
    QVERIFY(!operation->hasError());
    QCOMPARE(kind.resultCount(operation.get()), 0);
}

void TestAsyncOperation::succeedsFromTheEventLoop()
{
    QFETCH(Kind, kind);
    const std::unique_ptr<AsyncOperationBase> operation(kind.create());
    kind.setResult(operation.get());
    QCOMPARE(kind.resultCount(operation.get()), 1);
    Ends ends;
    kind.record(operation.get(), &ends);
    runQueued();
    QCOMPARE(ends.succeeded, QList<const void *> {operation.get()});
    QVERIFY(ends.failed.isEmpty());
    QVERIFY(!operation->hasError());
    runQueued();
    QCOMPARE(ends.succeeded.size(), 1);
}

void TestAsyncOperation::succeedsWithAListFromTheEventLoop()
{
    QFETCH(Kind, kind);
    for (const int count : {0, 1, 3}) {
        const std::unique_ptr<AsyncOperationBase> operation(kind.create());
        kind.setResults(operation.get(), count);
        QCOMPARE(kind.resultCount(operation.get()), count);
        Ends ends;
        kind.record(operation.get(), &ends);
        runQueued();
        runQueued();
        QCOMPARE(ends.succeeded, QList<const void *> {operation.get()});
        QVERIFY(ends.failed.isEmpty());
        QVERIFY(!operation->hasError());
    }
}

void TestAsyncOperation::failsFromTheEventLoop()
{
    QFETCH(Kind, kind);
    const std::unique_ptr<AsyncOperationBase> operation(kind.create());
    kind.setError(operation.get(), AsyncOperationError(-7, QStringLiteral("Words of the daemon")));
    QVERIFY(operation->hasError());
    Ends ends;
    kind.record(operation.get(), &ends);
    runQueued();
    QCOMPARE(ends.failed, QList<const void *> {operation.get()});
    QVERIFY(ends.succeeded.isEmpty());
    QCOMPARE(operation->error().code(), -7);
    QCOMPARE(operation->error().message(), QStringLiteral("Words of the daemon"));
    QCOMPARE(kind.resultCount(operation.get()), 0);
}

// Runs first, so that nothing but the operation itself has registered its type.
void TestAsyncOperation::registersItsType()
{
    QFETCH(Kind, kind);
    const std::unique_ptr<AsyncOperationBase> operation(kind.create());
    QVERIFY(QMetaType::type(kind.name + '*') != QMetaType::UnknownType);
}

void TestAsyncOperation::reachesQueuedConnectionsByName()
{
    QFETCH(Kind, kind);
    const std::unique_ptr<AsyncOperationBase> operation(kind.create());
    Listener listener;
    const auto code = [&kind](char prefix, const char *name) {
        return prefix + QByteArray(name) + '(' + kind.name + "*)";
    };
    // What the macros SIGNAL and SLOT make of the signatures.
    QVERIFY(QObject::connect(operation.get(), code('2', "success"), &listener, code('1', "onSuccess"),
                             Qt::QueuedConnection));
    QVERIFY(QObject::connect(operation.get(), code('2', "failure"), &listener, code('1', "onFailure"),
                             Qt::QueuedConnection));
    kind.setResult(operation.get());
    kind.setError(operation.get(), AsyncOperationError(-1, QString()));
    QTRY_COMPARE(listener.ends.failed, QList<const void *> {operation.get()});
    QCOMPARE(listener.ends.succeeded, QList<const void *> {operation.get()});
}

void TestAsyncOperation::dropsTheNoticeWhenDeleted()
{
    QFETCH(Kind, kind);
    Ends ends;
    const std::unique_ptr<AsyncOperationBase> kept(kind.create());
    auto *deleted = kind.create();
    kind.record(deleted, &ends);
    kind.record(kept.get(), &ends);
    kind.setResult(deleted);
    kind.setError(deleted, AsyncOperationError(-1, QString()));
    kind.setResult(kept.get());
    delete deleted;
    QTRY_COMPARE(ends.succeeded, QList<const void *> {kept.get()});
    QVERIFY(ends.failed.isEmpty());
}

void TestAsyncOperation::mayBeDeletedInItsSlot()
{
    QFETCH(Kind, kind);
    QPointer<AsyncOperationBase> first = kind.create();
    QPointer<AsyncOperationBase> second = kind.create();
    for (AsyncOperationBase *operation : {first.data(), second.data()}) {
        const QMetaObject *metaObject = operation->metaObject();
        const QMetaMethod signal = metaObject->method(metaObject->methodOffset() + (operation == first ? 0 : 1));
        QVERIFY(
            QObject::connect(operation, signal, operation,
                             QObject::staticMetaObject.method(QObject::staticMetaObject.indexOfSlot("deleteLater()"))));
    }
    kind.setResult(first);
    kind.setError(second, AsyncOperationError(-1, QString()));
    QTRY_VERIFY(!first && !second);
}

void TestAsyncOperation::appendsToItsResults()
{
    AsyncHotspotEnableOperation operation;
    AsyncOperationWriter::setResult(operation, true);
    AsyncOperationWriter::setResult(operation, false);
    QCOMPARE(operation.results(), (QList<bool> {true, false}));
}

void TestAsyncOperation::replacesItsResults()
{
    AsyncHotspotEnableOperation operation;
    AsyncOperationWriter::setResult(operation, true);
    AsyncOperationWriter::setResults(operation, {false, true});
    QCOMPARE(operation.results(), (QList<bool> {false, true}));
    AsyncOperationWriter::setResults(operation, QList<bool>());
    QVERIFY(operation.results().isEmpty());
}

void TestAsyncOperation::copiesNoResultForALoop()
{
    CountedOperation operation;
    for (int i = 0; i < 3; ++i)
        AsyncOperationWriter::setResult(operation, Counted());
    Counted::copies = 0;
    int seen = 0;
    for (const Counted &result : operation.results()) {
        Q_UNUSED(result)
        ++seen;
    }
    QCOMPARE(seen, 3);
    QCOMPARE(Counted::copies, 0);
}

// The notices are invoked by name, and yet through the table of virtual operations.
void TestAsyncOperation::runsAnOverriddenNotice()
{
    struct Overridden : AsyncWifiScanOperation
    {
        QStringList notices;
        void notifySuccess() override { notices.append(QStringLiteral("success")); }
        void notifyFailure() override { notices.append(QStringLiteral("failure")); }
    };
    Overridden operation;
    AsyncOperationWriter::setResult(operation, WifiAccessPoint());
    AsyncOperationWriter::setError(operation, AsyncOperationError(-1, QString()));
    AsyncOperationWriter::setResults(operation, QList<WifiAccessPoint>());
    QTRY_COMPARE(operation.notices,
                 (QStringList {QStringLiteral("success"), QStringLiteral("failure"), QStringLiteral("success")}));
}

QTEST_GUILESS_MAIN(TestAsyncOperation)
#include "tst_asyncoperation.moc"
