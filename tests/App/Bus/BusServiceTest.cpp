#include "BusService.h"

#include "AppModelFixture.h"
#include "BusNames.h"
#include "BusTypes.h"
#include "LogCapture.h"
#include "SealedMemory.h"
#include "Services/Store/ExportedClips.h"
#include "TestBus.h"

#include <gmock/gmock.h>

#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QTemporaryFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

/// The service on a bus of the test's own, over a history of "one", "two" and "three".
class BusServiceTest : public AppModelFixture
{
protected:
    BusServiceTest()
    {
        registerBusTypes();
        for (const char* text : {"three", "two", "one"}) {
            save(text);
        }
        m_model->reload(AppModel::Debounce::no);
        run();
        pass(1min);
        m_workspace.setFrontmost(m_editor);
    }

    void start()
    {
        makeService([this] { return m_connection = m_bus.connect(); });
        m_service->start();
        ASSERT_TRUE(waitUntil([this] { return m_service->isRegistered(); }));
    }
    void makeService(BusService::Connect connect)
    {
        m_service = std::make_unique<BusService>(
            BusActions{
                .show = [this] { m_asked.push_back("show"); },
                .hide = [this] { m_asked.push_back("hide"); },
                .toggle = [this] { m_asked.push_back("toggle"); },
                .quit = [this] { m_asked.push_back("quit"); },
                .keepActivationToken =
                    [this](const QString& token) { m_tokens.push_back(token.toStdString()); },
            },
            m_commands, std::move(connect));
    }

    QDBusPendingCall send(
        const QString& method, const QVariantList& arguments = {},
        const QString& interface = busInterface)
    {
        auto message = QDBusMessage::createMethodCall(busName, busPath, interface, method);
        message.setArguments(arguments);
        return m_client.asyncCall(message);
    }
    /// The answer, with the store and the desktop at work meanwhile.
    QDBusMessage call(
        const QString& method, const QVariantList& arguments = {},
        const QString& interface = busInterface)
    {
        const QDBusPendingCall pending = send(method, arguments, interface);
        EXPECT_TRUE(waitUntil([&] {
            pass(100ms);
            return pending.isFinished();
        })) << method.toStdString();
        return pending.reply();
    }
    void expectDone(const QString& method, const QVariantList& arguments = {})
    {
        const QDBusMessage reply = call(method, arguments);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
        EXPECT_THAT(reply.arguments(), IsEmpty());
    }
    void expectError(
        const QString& method, const QVariantList& arguments, const QString& name,
        const QString& message)
    {
        const QDBusMessage reply = call(method, arguments);
        EXPECT_EQ(reply.type(), QDBusMessage::ErrorMessage);
        EXPECT_EQ(reply.errorName().toStdString(), name.toStdString());
        EXPECT_EQ(reply.errorMessage().toStdString(), message.toStdString());
    }
    [[nodiscard]] std::vector<LogCapture::Line> lines() const
    {
        return m_log.lines(u"com.brackmoor.tessly.BusService"_s);
    }

    LogCapture m_log;
    TestBus m_bus;
    QDBusConnection m_client = m_bus.connect();
    QDBusConnection m_connection{QString()};
    std::shared_ptr<FakeRunningApplication> m_editor =
        std::make_shared<FakeRunningApplication>(u"org.example.Editor"_s, u"Editor"_s);
    std::vector<std::string> m_asked;
    std::vector<std::string> m_tokens;
    HistoryCommands m_commands{{
        .model = *m_model,
        .store = *m_store,
        .workspace = m_workspace,
        .abilities = {.paste = [] { return true; }},
    }};
    std::unique_ptr<BusService> m_service;
};

TEST_F(BusServiceTest, ThePanelAndTheProgramObey)
{
    start();
    for (const QString& method : {u"Show"_s, u"Hide"_s, u"Toggle"_s, u"Quit"_s}) {
        expectDone(method);
    }
    EXPECT_THAT(m_asked, ElementsAre("show", "hide", "toggle", "quit"));
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(BusServiceTest, DesktopsActivateTheProgramByOpeningThePanel)
{
    start();
    const QString application = u"org.freedesktop.Application"_s;
    EXPECT_EQ(call(u"Activate"_s, {QVariantMap()}, application).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(
        call(u"Open"_s, {QStringList(), QVariantMap()}, application).type(),
        QDBusMessage::ReplyMessage);
    EXPECT_THAT(m_asked, ElementsAre("show", "show"));
}

TEST_F(BusServiceTest, ThePermissionToTakeTheFocusComesBeforeThePanel)
{
    start();
    const QString application = u"org.freedesktop.Application"_s;
    const QVariantMap token = {{u"activation-token"_s, u"one"_s}};
    const QVariantMap older = {{u"desktop-startup-id"_s, u"two"_s}};
    const QVariantMap both = {
        {u"desktop-startup-id"_s, u"two"_s}, {u"activation-token"_s, u"three"_s}};
    for (const auto& [method, arguments, interface] :
         std::vector<std::tuple<QString, QVariantList, QString>>{
             {u"Show"_s, {token}, busInterface},
             {u"Toggle"_s, {older}, busInterface},
             {u"Activate"_s, {both}, application},
             {u"Open"_s, {QStringList(), token}, application},
             {u"Show"_s, {}, busInterface},
             {u"Show"_s, {QVariantMap{{u"activation-token"_s, 7}}}, busInterface}}) {
        EXPECT_EQ(call(method, arguments, interface).type(), QDBusMessage::ReplyMessage);
    }
    EXPECT_THAT(m_tokens, ElementsAre("one", "two", "three", "one", "", "7"));
    EXPECT_THAT(m_asked, ElementsAre("show", "toggle", "show", "show", "show", "show"));
}

TEST_F(BusServiceTest, RecordingIsPausedAndResumed)
{
    start();
    expectDone(u"Pause"_s);
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(call(u"Status"_s).arguments().size(), 1);
    expectDone(u"Resume"_s);
    EXPECT_FALSE(m_model->clipboardMonitor().isPaused());
}

TEST_F(BusServiceTest, EntriesArePastedCopiedPinnedAndDeleted)
{
    start();
    expectDone(u"Paste"_s, {2LL, false});
    EXPECT_THAT(m_keys.pastes(), ElementsAre(m_editor));
    expectDone(u"Copy"_s, {3LL, true});
    ASSERT_THAT(m_pasteboard.ownItems(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.ownItems().front().plainText, "three");
    expectDone(u"Pin"_s, {3LL});
    EXPECT_THAT(texts(), ElementsAre("three", "one", "two"));
    expectDone(u"Unpin"_s, {1LL});
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three"));
    expectDone(u"Delete"_s, {2LL});
    EXPECT_THAT(texts(), ElementsAre("one", "three"));
    expectDone(u"Pin"_s, {2LL});
    expectDone(u"Clear"_s, {false});
    EXPECT_THAT(texts(), ElementsAre("three"));
    expectDone(u"Clear"_s, {true});
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(BusServiceTest, RefusalsAndFailuresAreNamedErrors)
{
    start();
    const QString none = u"There is no clipboard item at position 9."_s;
    const QString noPosition = u"com.brackmoor.tessly.Error.NoSuchPosition"_s;
    for (const QString& method : {u"Paste"_s, u"Copy"_s}) {
        expectError(method, {9LL, false}, noPosition, none);
    }
    for (const QString& method : {u"Pin"_s, u"Unpin"_s, u"Delete"_s}) {
        expectError(method, {9LL}, noPosition, none);
    }
    expectError(
        u"List"_s, {QString(), u"video"_s, -1LL}, u"org.freedesktop.DBus.Error.InvalidArgs"_s,
        u"There is no kind \"video\"."_s);
    expectError(
        u"List"_s, {QString(10'001, u'x'), QString(), -1LL},
        u"org.freedesktop.DBus.Error.InvalidArgs"_s,
        u"A query has 10000 characters at the most."_s);
    EXPECT_TRUE(call(u"List"_s, {QString(10'000, u'x'), QString(), -1LL}).errorName().isEmpty());
    EXPECT_EQ(
        call(u"Paste"_s, {u"one"_s, false}).errorName(),
        u"org.freedesktop.DBus.Error.UnknownMethod"_s)
        << "of this signature";
    m_workspace.setFrontmost(nullptr);
    EXPECT_EQ(
        call(u"Paste"_s, {1LL, false}).errorName(), u"com.brackmoor.tessly.Error.CopiedOnly"_s);
    m_workspace.setFrontmost(m_editor);
    m_keys.setAllowed(false);
    EXPECT_EQ(
        call(u"Paste"_s, {1LL, false}).errorName(), u"com.brackmoor.tessly.Error.NeedsAccess"_s);
    m_pasteboard.refuseWrites();
    EXPECT_EQ(
        call(u"Copy"_s, {1LL, false}).errorName(), u"com.brackmoor.tessly.Error.NotRestored"_s);
    breakStore();
    const QDBusMessage reply = call(u"Delete"_s, {1LL});
    EXPECT_EQ(reply.errorName(), u"com.brackmoor.tessly.Error.StoreFailed"_s);
    EXPECT_TRUE(reply.errorMessage().startsWith(u"Clipboard database operation failed: "_s));
    EXPECT_EQ(call(u"Status"_s).errorName(), u"com.brackmoor.tessly.Error.StoreFailed"_s);
}

TEST_F(BusServiceTest, TheListCrossesTheBusUnharmed)
{
    save(ClipPayload({.fileURLs = {"file:///tmp/one"}}));
    executeSQL("UPDATE clips SET source_app_name = 'Files', source_bundle_id = 'org.example.Files' "
               "WHERE kind = 'files'");
    m_commands.setPinned(2, true, {});
    run();
    start();
    std::vector<ClipSummary> expected;
    m_commands.list({}, {}, -1, [&](HistoryCommands::Entries found) { expected = *found; }, {});
    run();
    ASSERT_THAT(expected, SizeIs(4));
    const QDBusMessage reply = call(u"List"_s, {QString(), QString(), -1LL});
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    EXPECT_EQ(reply.signature(), u"aa{sv}"_s);
    EXPECT_EQ(entries(qdbus_cast<BusEntries>(reply.arguments().at(0))), expected);

    const QDBusMessage part = call(u"List"_s, {u"t"_s, u"text"_s, 1LL});
    const auto found = entries(qdbus_cast<BusEntries>(part.arguments().at(0)));
    ASSERT_TRUE(found.has_value());
    ASSERT_THAT(*found, SizeIs(1));
    EXPECT_EQ(found->front().preview, u"two"_s);
    EXPECT_EQ(found->front().position, 3);
}

TEST_F(BusServiceTest, APreviewWithANullCharacterIsNotCut)
{
    save(QByteArray("before\0after", 12));
    start();
    const QDBusMessage reply = call(u"List"_s, {QString(), QString(), 1LL});
    const auto found = entries(qdbus_cast<BusEntries>(reply.arguments().at(0)));
    ASSERT_TRUE(found.has_value());
    ASSERT_THAT(*found, SizeIs(1));
    EXPECT_EQ(found->front().preview, u"before\uFFFDafter"_s);
}

TEST_F(BusServiceTest, TheStatusCrossesTheBusUnharmed)
{
    start();
    const QDBusMessage reply = call(u"Status"_s);
    EXPECT_EQ(reply.signature(), u"a{sv}"_s);
    const StatusReport report = statusReport(qdbus_cast<QVariantMap>(reply.arguments().at(0)));
    EXPECT_TRUE(report.isRunning);
    EXPECT_FALSE(report.isPaused);
    EXPECT_EQ(report.items, 3);
    EXPECT_GT(report.bytes, 0);
    EXPECT_FALSE(report.session.isEmpty());
    EXPECT_TRUE(report.paste);
    EXPECT_FALSE(report.tray);
}

TEST_F(BusServiceTest, SaysWhatItTakesAndGives)
{
    start();
    const QDBusMessage reply = call(u"Introspect"_s, {}, u"org.freedesktop.DBus.Introspectable"_s);
    const QString xml = reply.arguments().value(0).toString();
    EXPECT_TRUE(xml.contains(u"<method name=\"List\">"_s)) << xml.toStdString();
    EXPECT_TRUE(xml.contains(u"type=\"aa{sv}\" direction=\"out\""_s)) << xml.toStdString();
    EXPECT_TRUE(xml.contains(u"<method name=\"Paste\">"_s));
    EXPECT_FALSE(xml.contains(u"QDBusMessage"_s));
}

TEST_F(BusServiceTest, AnAnswerThatTakesTimeHoldsNothingUp)
{
    start();
    const QDBusPendingCall slow = send(u"Status"_s);
    const QDBusPendingCall quick = send(u"Show"_s);
    // The store does not run meanwhile.
    EXPECT_TRUE(waitUntil([&] { return quick.isFinished(); }));
    EXPECT_FALSE(slow.isFinished());
    EXPECT_TRUE(waitUntil([&] {
        run();
        return slow.isFinished();
    }));
    EXPECT_FALSE(slow.isError());
}

TEST_F(BusServiceTest, ABusThatHangsHoldsNothingUp)
{
    m_bus.suspend();
    makeService([this] { return m_bus.connect(); });
    m_service->start();
    m_commands.pause();
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    EXPECT_FALSE(m_service->isRegistered());
    m_bus.resume();
    EXPECT_TRUE(waitUntil([this] { return m_service->isRegistered(); }));
    expectDone(u"Show"_s);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(BusServiceTest, WithoutABusThereIsOneLineInTheLog)
{
    makeService([] { return TestBus::connect(u"unix:path=/nonexistent/bus"_s); });
    m_service->start();
    ASSERT_TRUE(waitUntil([this] { return !lines().empty(); }));
    EXPECT_THAT(
        lines(), ElementsAre(LogCapture::Line{
                     QtWarningMsg, u"com.brackmoor.tessly.BusService"_s,
                     u"There is no session bus: other programs cannot reach Tessly."_s}));
    EXPECT_FALSE(m_service->isRegistered());
}

TEST_F(BusServiceTest, ABusThatGoesAwayIsOneLineInTheLog)
{
    start();
    m_bus.kill();
    ASSERT_TRUE(waitUntil([this] { return !lines().empty(); }));
    EXPECT_THAT(lines(), SizeIs(1));
    EXPECT_EQ(
        lines().front().text, u"The session bus is gone: other programs cannot reach Tessly."_s);
    EXPECT_FALSE(m_service->isRegistered());
    m_service.reset();
    EXPECT_THAT(lines(), SizeIs(1));
}

TEST_F(BusServiceTest, ANameThatSomebodySilentHasIsTakenWhenItIsFree)
{
    ASSERT_TRUE(m_client.registerService(busName));
    makeService([this] { return m_bus.connect(); });
    m_service->start();
    ASSERT_TRUE(waitUntil([this] { return !lines().empty(); }));
    EXPECT_EQ(
        lines().front().text,
        u"The name on the session bus is taken: other programs cannot reach this Tessly for now."_s);
    EXPECT_FALSE(m_service->isRegistered());
    EXPECT_TRUE(m_client.unregisterService(busName));
    EXPECT_TRUE(waitUntil([this] { return m_service->isRegistered(); }));
    expectDone(u"Hide"_s);
    EXPECT_THAT(m_asked, ElementsAre("hide"));
    EXPECT_THAT(lines(), SizeIs(1));
}

TEST_F(BusServiceTest, OfTwoThatRunTheLaterOneOpensThePanelOfTheOtherAndQuits)
{
    start();
    std::vector<std::string> askedOfLater;
    BusService later(
        BusActions{
            .show = [&] { askedOfLater.push_back("show"); },
            .hide = [&] { askedOfLater.push_back("hide"); },
            .toggle = [&] { askedOfLater.push_back("toggle"); },
            .quit = [&] { askedOfLater.push_back("quit"); },
            .keepActivationToken = {},
        },
        m_commands, [this] { return m_bus.connect(); });
    later.start();
    ASSERT_TRUE(waitUntil([&] { return !askedOfLater.empty(); }));
    EXPECT_THAT(askedOfLater, ElementsAre("quit"));
    EXPECT_THAT(m_asked, ElementsAre("show"));
    EXPECT_FALSE(later.isRegistered());
    EXPECT_TRUE(m_service->isRegistered());
    EXPECT_THAT(lines(), SizeIs(1));
}

TEST_F(BusServiceTest, ANameThatIsLostIsOneLineInTheLog)
{
    start();
    auto release = QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"ReleaseName"_s);
    release << busName;
    m_connection.asyncCall(release);
    ASSERT_TRUE(waitUntil([this] { return !lines().empty(); }));
    EXPECT_THAT(lines(), SizeIs(1));
    EXPECT_FALSE(m_service->isRegistered());
}

TEST_F(BusServiceTest, GivesTheNameBackAtItsEnd)
{
    start();
    EXPECT_TRUE(m_client.interface()->isServiceRegistered(busName).value());
    m_connection = QDBusConnection(QString());
    m_service.reset();
    EXPECT_TRUE(
        waitUntil([this] { return !m_client.interface()->isServiceRegistered(busName).value(); }));
}

TEST_F(BusServiceTest, EndsWhileTheBusStillHangs)
{
    m_bus.suspend();
    makeService([address = m_bus.address()] { return TestBus::connect(address); });
    m_service->start();
    m_service.reset();
    m_bus.resume();
    // Nor has it the name then: another one gets it.
    start();
    EXPECT_THAT(m_asked, IsEmpty());
}

QVariant sealed(const QByteArray& lines)
{
    QDBusUnixFileDescriptor descriptor;
    descriptor.giveFileDescriptor(SealedMemory::make(lines));
    return QVariant::fromValue(descriptor);
}

TEST_F(BusServiceTest, LinesAreImportedAndListed)
{
    start();
    const QByteArray lines = lineOf(textClip("imported")) + "nonsense\n" + lineOf(textClip("one"));
    const QDBusMessage reply = call(u"Import"_s, {sealed(lines)});
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    const auto outcome = importOutcome(qdbus_cast<QVariantMap>(reply.arguments().value(0)), 3);
    ASSERT_TRUE(outcome.has_value());
    EXPECT_EQ(outcome->added, 1);
    EXPECT_EQ(outcome->present, 1);
    ASSERT_THAT(outcome->refused, SizeIs(1));
    EXPECT_EQ(outcome->refused.front().line, 1);
    run();
    EXPECT_THAT(texts(), ElementsAre("one", "two", "three", "imported"));
}

TEST_F(BusServiceTest, ImportsKeepToTheLimitOfTheSettings)
{
    m_settings.setMaxHistory(10);
    for (int i = 0; i < 7; ++i) {
        save(QByteArray::number(i));
    }
    start();
    const QDBusMessage reply = call(u"Import"_s, {sealed(lineOf(textClip("imported")))});
    const auto outcome = importOutcome(qdbus_cast<QVariantMap>(reply.arguments().value(0)), 1);
    ASSERT_TRUE(outcome.has_value());
    EXPECT_EQ(outcome->added, 0);
    EXPECT_THAT(outcome->refused, SizeIs(1));
    EXPECT_THAT(stored(), SizeIs(10));
}

TEST_F(BusServiceTest, LinesAreTakenFromSealedMemoryOnly)
{
    start();
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(lineOf(textClip("imported")));
    file.flush();
    expectError(
        u"Import"_s, {QVariant::fromValue(QDBusUnixFileDescriptor(file.handle()))},
        u"org.freedesktop.DBus.Error.InvalidArgs"_s, u"Lines are taken from sealed memory only."_s);
    EXPECT_THAT(stored(), SizeIs(3));
}

TEST_F(BusServiceTest, AnImportThatFailsIsSaid)
{
    start();
    breakStore();
    const QDBusMessage reply = call(u"Import"_s, {sealed(lineOf(textClip("imported")))});
    EXPECT_EQ(reply.type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(reply.errorName(), busErrorName(ActionOutcome::Case::storeFailed));
}

TEST(BusTypes, AnImportsOutcomeIsCheckedBeforeItIsBelieved)
{
    const ImportOutcome outcome{.added = 1, .present = 2, .refused = {{0, u"a"_s}, {4, u"b"_s}}};
    const QVariantMap map = busImportOutcome(outcome);
    EXPECT_EQ(importOutcome(map, 5), outcome);
    EXPECT_EQ(importOutcome(map, 4), std::nullopt) << "there is no such line";
    EXPECT_EQ(importOutcome({}, 5), std::nullopt);
    QVariantMap uneven = map;
    uneven[u"reasons"_s] = QStringList{u"a"_s};
    EXPECT_EQ(importOutcome(uneven, 5), std::nullopt);
}

} // namespace
} // namespace tessly::test
