// SPDX-License-Identifier: Apache-2.0
#include "hotspotcontroller.h"
#include "hotspotform.h"
#include "krellogger.h"
#include "memorysearch.h"
#include "networkservices.h"
#include "secrecy.h"
#include "servicepointer.h"
#include "testunit.h"
#include "unwipedfrees.h"

#include <asynchotspotconfigoperation.h>
#include <hotspotservice.h>
#include <networklibraryexports.h>

#include <QtTest/QtTest>

using namespace morvek;

namespace {

const QString Done = QStringLiteral("done");
const QString Store = QStringLiteral(".morvek-hostd-hotspot.json");
const MemorySearch Typed("uzqfe.cz.uif.esjwfs.upebz"); // "typed-by-the-driver-today"

QByteArray *s_written = nullptr;

void note(QtMsgType, const QMessageLogContext &, const QString &text)
{
    *s_written += text.toUtf8() + '\n';
}

/*! What of \a object others can read by its names. */
QByteArray told(const QObject *object)
{
    QString text;
    QDebug debug(&text);
    debug << object << object->dynamicPropertyNames();
    const QMetaObject *meta = object->metaObject();
    for (int i = 0; i < meta->propertyCount(); ++i)
        debug << meta->property(i).name() << meta->property(i).read(object);
    return text.toUtf8();
}

} // namespace

/*! The passphrase is told to who asks for it, and leaves no other trace of the kit's making. */
class HotspotControllerSecrecyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void isToldNowhere();
    void leavesNoMoreInMemoryThanTheLibrary();

private:
    QString end(NetworkRequest *request);
    void look();
    /*! Sets the passphrase through the form; the text itself is left to nobody. */
    void type(QString passphrase);
    long tracesOfKit(const std::function<QString()> &passphrase);
    long tracesOfLibrary(HotSpotService *service, const std::function<QString()> &passphrase);
    WifiHotspot read(HotSpotService *service);

    QByteArray m_written;
    QList<QByteArray> m_secrets;
    std::unique_ptr<TestUnit> m_unit;
    std::unique_ptr<NetworkServices> m_services;
    std::unique_ptr<HotspotController> m_controller;
};

void HotspotControllerSecrecyTest::initTestCase()
{
    qRegisterMetaType<NetworkServices *>(); // or they are not read
    qRegisterMetaType<HotspotForm *>();
}

void HotspotControllerSecrecyTest::init()
{
    qputenv("KREL_VERBOSITY", "7"); // for the daemon
    KrelLogger::setVerbosity(7);
    KrelLogger::setSink(
        [this](KrelLogger::Level, unsigned short, const QString &text) { m_written += text.toUtf8() + '\n'; });
    m_unit = std::make_unique<TestUnit>();
    QVERIFY(m_unit->start());
    m_services = std::make_unique<NetworkServices>();
    m_controller = std::make_unique<HotspotController>(m_services.get());
    QTRY_VERIFY(m_controller->isProfileKnown());
}

void HotspotControllerSecrecyTest::cleanup()
{
    m_controller.reset();
    m_services.reset();
    m_unit.reset();
    KrelLogger::setSink(nullptr);
    KrelLogger::setVerbosity(2);
}

QString HotspotControllerSecrecyTest::end(NetworkRequest *request)
{
    while (request->isRunning()) {
        look(); // at every step of it
        m_written += told(request);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    m_written += told(request);
    look();
    return request->isDone() ? Done : request->sentence();
}

void HotspotControllerSecrecyTest::look()
{
    m_written += told(m_controller.get()) + told(m_controller->form()) + m_unit->output().toUtf8();
    const QByteArray files = filesBelow(m_unit->root(), Store);
    const QByteArray processes = processList(m_unit->processId());
    // Each place does hold what is not secret.
    QVERIFY(m_written.contains("Morvek Car"));
    QVERIFY(files.contains("ACTIVE"));
    QVERIFY(processes.contains("tst_hotspotcontrollersecrecy"));
    for (const QByteArray &secret : qAsConst(m_secrets)) {
        QVERIFY2(!m_written.contains(secret), "what is written or told holds the passphrase");
        QVERIFY2(!files.contains(secret), "a file of the root holds the passphrase");
        QVERIFY2(!processes.contains(secret), "the list of processes holds the passphrase");
    }
}

void HotspotControllerSecrecyTest::isToldNowhere()
{
    s_written = &m_written;
    const QtMessageHandler handler = qInstallMessageHandler(note);
    for (const char *secret : {"drive safely 8", "are we there yet?", "seven77", "zw\u00f6lf \u20ac dort"})
        m_secrets += formsOf(secret);
    HotspotForm *form = m_controller->form();
    QCOMPARE(m_controller->reveal(), QStringLiteral("drive safely 8"));
    QCOMPARE(end(m_controller->fetch()), Done);
    form->setPassphrase(QStringLiteral("seven77"));
    look();
    QVERIFY(end(m_controller->apply()) != Done);
    form->setPassphrase(QString::fromUtf8("zw\u00f6lf \u20ac dort"));
    look();
    QVERIFY(end(m_controller->apply()) != Done);
    form->setPassphrase(QStringLiteral("are we there yet?"));
    m_unit->act(QStringLiteral("refuse"),
                {{QStringLiteral("message"), QStringLiteral("update_profile")},
                 {QStringLiteral("err"), 5},
                 {QStringLiteral("errmsg"), QStringLiteral("no room")},
                 {QStringLiteral("times"), 1}});
    m_unit->act(QStringLiteral("refuse"),
                {{QStringLiteral("message"), QStringLiteral("start")},
                 {QStringLiteral("err"), 5},
                 {QStringLiteral("errmsg"), QStringLiteral("no")},
                 {QStringLiteral("times"), 1}});
    QVERIFY(end(m_controller->apply()) != Done);
    QCOMPARE(end(m_controller->apply()), Done);
    QCOMPARE(m_controller->reveal(), QStringLiteral("are we there yet?"));
    QVERIFY(end(m_controller->setOn(true)) != Done);
    QCOMPARE(end(m_controller->setOn(true)), Done);
    form->setPassphrase(QStringLiteral("drive safely 8"));
    NetworkRequest *lost = m_controller->apply();
    m_unit->act(QStringLiteral("daemon-dies"), {{QStringLiteral("daemon"), QStringLiteral("tethering")}});
    QVERIFY(end(lost) != Done);
    look();
    qInstallMessageHandler(handler);
}

// What the library leaves behind is out of reach. So the same is done with it alone.
void HotspotControllerSecrecyTest::leavesNoMoreInMemoryThanTheLibrary()
{
#ifdef HEAP_IS_SANITIZED
    return QTest::qSkip("Sanitizers have a heap of their own.", __FILE__, __LINE__);
#endif
    const HotSpotServicePointer service(newHotSpotService());
    QTRY_VERIFY(service->ready());
    const auto typed = [] { return Typed.text(); };
    const auto other = [] { return QStringLiteral("drive safely 8"); };
    const long library = tracesOfLibrary(service.get(), typed) + tracesOfLibrary(service.get(), other);
    QVERIFY(library > 0);
    QCOMPARE(Typed.count(), 0);
    QCOMPARE(end(m_controller->fetch()), Done);
    const long kit = tracesOfKit(typed) + tracesOfKit(other);
    QCOMPARE(kit, library);
    QCOMPARE(Typed.count(), 0);
}

void HotspotControllerSecrecyTest::type(QString passphrase)
{
    m_controller->form()->setPassphrase(passphrase);
    passphrase.fill(QLatin1Char('x'));
}

long HotspotControllerSecrecyTest::tracesOfKit(const std::function<QString()> &passphrase)
{
    UnwipedFrees::s_count = 0;
    type(passphrase());
    NetworkRequest *request = m_controller->apply();
    const bool ends = QTest::qWaitFor([request] { return !request->isRunning(); }, 10000);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return ends && request->isDone() ? UnwipedFrees::s_count : -1000;
}

WifiHotspot HotspotControllerSecrecyTest::read(HotSpotService *service)
{
    const std::unique_ptr<AsyncHotspotConfigOperation> operation(service->configuration());
    QSignalSpy(operation.get(), &AsyncHotspotConfigOperation::success).wait();
    return operation->results().value(0);
}

long HotspotControllerSecrecyTest::tracesOfLibrary(HotSpotService *service, const std::function<QString()> &passphrase)
{
    UnwipedFrees::s_count = 0;
    WifiHotspot profile = read(service);
    QString text = passphrase();
    profile.setPassphrase(text);
    std::unique_ptr<AsyncHotspotConfigOperation> operation(service->setConfiguration(profile));
    profile = WifiHotspot();
    text.fill(QLatin1Char('x'));
    QSignalSpy(operation.get(), &AsyncHotspotConfigOperation::success).wait();
    read(service);
    operation.reset();
    return UnwipedFrees::s_count;
}

QTEST_GUILESS_MAIN(HotspotControllerSecrecyTest)
#include "tst_hotspotcontrollersecrecy.moc"
