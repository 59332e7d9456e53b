#include "DesktopPortal.h"

#include "LogCapture.h"
#include "PortalWorld.h"

#include <QCoroFuture>
#include <QDBusObjectPath>
#include <QTimer>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace tessly::test {

namespace {

const QString remoteDesktop = u"org.freedesktop.portal.RemoteDesktop"_s;

class DesktopPortalTest : public PortalWorld
{
protected:
    void reachPortal()
    {
        startMock();
        openPortal();
        ASSERT_TRUE(becomes(State::present));
    }

    std::unique_ptr<PortalSession> session()
    {
        return std::move(await(m_portal->createSession(remoteDesktop)).session);
    }

    QFuture<DesktopPortal::Response>
    start(const PortalSession& session, DesktopPortal::Asks asks = DesktopPortal::Asks::theUser)
    {
        return m_portal->request(
            remoteDesktop, u"Start"_s,
            {QVariant::fromValue(QDBusObjectPath(session.path())), QString()}, {}, asks);
    }

    static DesktopPortal::Response responseOf(const QFuture<DesktopPortal::Response>& future)
    {
        EXPECT_TRUE(waitUntil([&] { return future.isFinished(); }));
        return future.isFinished() ? future.result() : DesktopPortal::Response();
    }
};

// Coming and going

TEST_F(DesktopPortalTest, APortalThatIsThereIsFound)
{
    startMock();
    openPortal();
    EXPECT_EQ(m_portal->state(), State::undecided);
    EXPECT_TRUE(becomes(State::present));
}

TEST_F(DesktopPortalTest, ItIsToldTheProgramsNameBeforeAnythingElse)
{
    reachPortal();
    EXPECT_EQ(await(m_portal->version(remoteDesktop)), 2U);
    const auto calls = mock().calls();
    ASSERT_FALSE(calls.isEmpty());
    EXPECT_EQ(calls[0].name, u"Registry.Register"_s);
    EXPECT_EQ(calls[0].arguments[0], u"com.brackmoor.tessly"_s);
    EXPECT_EQ(mock().calls(u"Registry.Register"_s).size(), 1);
}

TEST_F(DesktopPortalTest, APortalThatKnowsNoNamesServesAllTheSame)
{
    startMock();
    mock().hasRegistry = false;
    openPortal();
    EXPECT_TRUE(becomes(State::present));
}

TEST_F(DesktopPortalTest, APortalThatDoesNotAnswerToTheNameIsTriedAfterAWhile)
{
    startMock();
    mock().hangsAt = {u"Registry.Register"_s};
    openPortal();
    ASSERT_TRUE(waitUntil([this] { return !mock().calls().isEmpty(); }));
    EXPECT_EQ(m_portal->state(), State::undecided);
    m_clock.advance(DesktopPortal::timeout);
    EXPECT_TRUE(becomes(State::present));
}

TEST_F(DesktopPortalTest, APortalMayComeLateGoAndComeBack)
{
    openPortal();
    ASSERT_TRUE(becomes(State::absent));
    startMock();
    ASSERT_TRUE(becomes(State::present));
    mock().die();
    ASSERT_TRUE(becomes(State::absent));
    mock().come();
    ASSERT_TRUE(becomes(State::present));
    EXPECT_EQ(mock().calls(u"Registry.Register"_s).size(), 2) << "each portal is told the name";
}

TEST_F(DesktopPortalTest, ThatThereIsNoneIsSaidOnce)
{
    const LogCapture log;
    openPortal();
    ASSERT_TRUE(becomes(State::absent));
    startMock();
    ASSERT_TRUE(becomes(State::present));
    mock().die();
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_THAT(
        log.lines(u"com.brackmoor.tessly.DesktopPortal"_s),
        ElementsAre(LogCapture::Line{
            QtInfoMsg, u"com.brackmoor.tessly.DesktopPortal"_s, u"There is no desktop portal"_s}));
}

TEST_F(DesktopPortalTest, APortalThatIsNotRunningIsStarted)
{
    m_bus.addService(
        u"org.freedesktop.portal.Desktop"_s, QStringLiteral(TESSLY_DESKTOP_SCRIPTS "/portal.py"));
    openPortal();
    ASSERT_TRUE(becomes(State::present));
    EXPECT_EQ(await(m_portal->version(remoteDesktop)), 2U);
    const auto opened = session();
    ASSERT_NE(opened, nullptr);
    EXPECT_TRUE(opened->isOpen());
}

TEST_F(DesktopPortalTest, OneThatCouldNotBeStartedMayBeLater)
{
    m_bus.addService(u"org.freedesktop.portal.Desktop"_s, u"/bin/false"_s);
    openPortal();
    ASSERT_TRUE(becomes(State::absent));
    m_bus.addService(
        u"org.freedesktop.portal.Desktop"_s, QStringLiteral(TESSLY_DESKTOP_SCRIPTS "/portal.py"));
    m_portal->wake();
    EXPECT_TRUE(becomes(State::present));
}

TEST_F(DesktopPortalTest, WithoutABusThereIsNone)
{
    m_bus.kill();
    openPortal();
    EXPECT_TRUE(becomes(State::absent));
    m_portal->wake();
    EXPECT_EQ(await(m_portal->version(remoteDesktop)), std::nullopt);
    EXPECT_EQ(session(), nullptr);
}

TEST_F(DesktopPortalTest, WhenTheBusGoesAwaySoDoesIt)
{
    reachPortal();
    m_bus.kill();
    EXPECT_TRUE(becomes(State::absent));
    EXPECT_EQ(session(), nullptr);
}

TEST_F(DesktopPortalTest, ABusThatHangsHoldsNobodyUp)
{
    startMock();
    m_bus.suspend();
    openPortal();
    bool isAlive = false;
    QTimer::singleShot(50, [&] { isAlive = true; });
    ASSERT_TRUE(waitUntil([&] { return isAlive; }));
    EXPECT_EQ(m_portal->state(), State::undecided);
    m_bus.resume();
    EXPECT_TRUE(becomes(State::present));
}

TEST_F(DesktopPortalTest, ItMayEndWhileTheBusIsStillBeingReached)
{
    m_bus.suspend();
    openPortal();
    m_portal.reset();
    m_bus.resume();
    openPortal();
    EXPECT_TRUE(becomes(State::absent));
}

TEST_F(DesktopPortalTest, AnInterfaceThatIsNotThereHasNoVersion)
{
    reachPortal();
    mock().versions.remove(u"RemoteDesktop"_s);
    EXPECT_EQ(await(m_portal->version(remoteDesktop)), 0U);
}

TEST_F(DesktopPortalTest, APortalThatHangsTellsNoVersion)
{
    reachPortal();
    mock().hangsAt = {u"Properties.Get"_s};
    auto asked = m_portal->version(remoteDesktop, 300ms);
    ASSERT_TRUE(waitUntil([this] { return !mock().calls(u"Properties.Get"_s).isEmpty(); }));
    EXPECT_FALSE(asked.isReady());
    m_clock.advance(300ms);
    EXPECT_EQ(await(std::move(asked)), std::nullopt);
}

// The screen

TEST_F(DesktopPortalTest, OnlyTheScreenSaverTellsThatTheScreenIsLocked)
{
    reachPortal();
    std::vector<bool> told;
    QObject::connect(m_portal.get(), &DesktopPortal::screenLocked, [&](bool isLocked) {
        told.push_back(isLocked);
    });
    for (const QString& desktop : {u"gnome"_s, u"freedesktop"_s}) {
        told.clear();
        QDBusConnection screen = m_bus.connect();
        const auto tell = [&](bool isLocked) {
            auto signal = QDBusMessage::createSignal(
                u"/org/%1/ScreenSaver"_s.arg(desktop), u"org.%1.ScreenSaver"_s.arg(desktop),
                u"ActiveChanged"_s);
            signal << isLocked;
            EXPECT_TRUE(screen.send(signal));
        };
        ASSERT_TRUE(screen.registerService(u"org.%1.ScreenSaver"_s.arg(desktop)));
        tell(true);
        tell(false);
        ASSERT_TRUE(waitUntil([&] { return told.size() == 2; }));
        EXPECT_THAT(told, ElementsAre(true, false));

        QDBusConnection stranger = m_bus.connect();
        auto forged = QDBusMessage::createSignal(
            u"/org/%1/ScreenSaver"_s.arg(desktop), u"org.%1.ScreenSaver"_s.arg(desktop),
            u"ActiveChanged"_s);
        forged << false;
        EXPECT_TRUE(stranger.send(forged));
        tell(true);
        ASSERT_TRUE(waitUntil([&] { return told.size() == 3; }));
        settle();
        EXPECT_THAT(told, ElementsAre(true, false, true));
        QDBusConnection::disconnectFromBus(stranger.name());
        QDBusConnection::disconnectFromBus(screen.name());
    }
}

// Requests

struct Answering
{
    const char* name;
    MockPortal::Responding responding;
};

class DesktopPortalAnswerTest : public DesktopPortalTest,
                                public testing::WithParamInterface<Answering>
{
};

TEST_P(DesktopPortalAnswerTest, TheResponseIsHeard)
{
    reachPortal();
    mock().responding = GetParam().responding;
    for (int time = 0; time < 3; ++time) {
        const auto opened = session();
        ASSERT_NE(opened, nullptr);
        const auto response = responseOf(start(*opened));
        EXPECT_EQ(response.outcome, Outcome::granted);
        EXPECT_EQ(response.results.value(u"devices"_s), 1U);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each, DesktopPortalAnswerTest,
    testing::Values(
        Answering{"AsExpected", MockPortal::Responding::asExpected},
        Answering{"OnAnotherPath", MockPortal::Responding::onAnotherPath},
        Answering{"BeforeTheReply", MockPortal::Responding::beforeTheReply},
        Answering{
            "BeforeTheReplyOnAnotherPath", MockPortal::Responding::beforeTheReplyOnAnotherPath}),
    [](const auto& about) { return std::string(about.param.name); });

TEST_F(DesktopPortalTest, WhatTheUserSaidIsTold)
{
    reachPortal();
    const auto opened = session();
    mock().user = User::cancels;
    EXPECT_EQ(responseOf(start(*opened)).outcome, Outcome::cancelled);
    mock().user = User::isOverruled;
    EXPECT_EQ(responseOf(start(*opened)).outcome, Outcome::refused);
}

TEST_F(DesktopPortalTest, AnErrorIsARefusal)
{
    reachPortal();
    const auto opened = session();
    mock().failsAt = {u"RemoteDesktop.Start"_s};
    EXPECT_EQ(responseOf(start(*opened)).outcome, Outcome::refused);
}

TEST_F(DesktopPortalTest, AUserMayTakeAsLongAsTheyLike)
{
    reachPortal();
    const auto opened = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();
    m_clock.advance(24h);
    EXPECT_FALSE(asked.isFinished());
    mock().answer(User::grants);
    EXPECT_EQ(responseOf(asked).outcome, Outcome::granted);
}

TEST_F(DesktopPortalTest, APortalThatShouldAnswerAndDoesNotIsGivenUp)
{
    const LogCapture log;
    reachPortal();
    const auto opened = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened, DesktopPortal::Asks::nobody);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();
    EXPECT_FALSE(asked.isFinished());
    m_clock.advance(DesktopPortal::timeout);
    EXPECT_EQ(responseOf(asked).outcome, Outcome::failed);
    EXPECT_TRUE(waitUntil([this] { return mock().closedRequests() == 1; }))
        << "nobody hears the answer any more";
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.DesktopPortal"_s), Not(IsEmpty()));
}

TEST_F(DesktopPortalTest, APortalThatHangsBeforeItAsksTheUserIsGivenUpToo)
{
    reachPortal();
    const auto opened = session();
    mock().hangsAt = {u"RemoteDesktop.Start"_s};
    const auto asked = start(*opened);
    ASSERT_TRUE(waitUntil([this] { return !mock().calls(u"RemoteDesktop.Start"_s).isEmpty(); }));
    m_clock.advance(DesktopPortal::timeout);
    EXPECT_EQ(responseOf(asked).outcome, Outcome::failed);
}

TEST_F(DesktopPortalTest, APortalThatDiesLeavesNoQuestionOpen)
{
    reachPortal();
    const auto opened = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    mock().die();
    EXPECT_EQ(responseOf(asked).outcome, Outcome::failed);
}

TEST_F(DesktopPortalTest, ItsEndEndsWhatIsAsked)
{
    reachPortal();
    auto opened = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened);
    m_portal.reset();
    EXPECT_EQ(responseOf(asked).outcome, Outcome::failed);
}

TEST_F(DesktopPortalTest, AnotherProgramCannotAnswerForTheUser)
{
    reachPortal();
    const auto opened = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    settle();

    const QString program = opened->path().section(u'/', 6, 6);
    const QString token =
        mock().calls(u"RemoteDesktop.Start"_s)[0].options[u"handle_token"_s].toString();
    QDBusConnection stranger = m_bus.connect();
    auto forged = QDBusMessage::createTargetedSignal(
        u':' + QString(program).replace(u'_', u'.'),
        u"/org/freedesktop/portal/desktop/request/"_s + program + u'/' + token,
        u"org.freedesktop.portal.Request"_s, u"Response"_s);
    forged << 0U << QVariantMap{{u"devices"_s, 1U}};
    ASSERT_TRUE(stranger.send(forged));
    // The stranger's own call is behind it on the way to the bus.
    stranger.call(QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
        u"GetId"_s));
    settle();
    EXPECT_FALSE(asked.isFinished());
    QDBusConnection::disconnectFromBus(stranger.name());
}

// Sessions

TEST_F(DesktopPortalTest, ASessionEndsWithItsObject)
{
    reachPortal();
    auto opened = session();
    ASSERT_NE(opened, nullptr);
    EXPECT_TRUE(opened->isOpen());
    EXPECT_EQ(mock().sessions(), 1);
    opened.reset();
    EXPECT_TRUE(waitUntil([this] { return mock().sessions() == 0; }));
}

TEST_F(DesktopPortalTest, ThereIsNoSessionWherePortalsRefuseOne)
{
    reachPortal();
    mock().failsAt = {u"RemoteDesktop.CreateSession"_s};
    EXPECT_EQ(session(), nullptr);
}

TEST_F(DesktopPortalTest, ASessionThatThePortalEndsTellsSoOnce)
{
    reachPortal();
    auto opened = session();
    int closings = 0;
    opened->setClosed([&] { ++closings; });
    mock().revoke();
    ASSERT_TRUE(waitUntil([&] { return closings == 1; }));
    EXPECT_FALSE(opened->isOpen());
    mock().die();
    ASSERT_TRUE(becomes(State::absent));
    EXPECT_EQ(closings, 1);
}

TEST_F(DesktopPortalTest, ASessionEndsWithThePortal)
{
    reachPortal();
    auto opened = session();
    bool isClosed = false;
    // As those do who have no use for it any more.
    opened->setClosed([&] {
        isClosed = true;
        opened.reset();
    });
    mock().die();
    EXPECT_TRUE(waitUntil([&] { return isClosed; }));
    EXPECT_EQ(opened, nullptr);
}

TEST_F(DesktopPortalTest, WithASessionGoesWhatTheUserIsBeingAskedForIt)
{
    reachPortal();
    auto opened = session();
    const auto other = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened);
    const auto askedForOther = start(*other);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 2; }));
    opened.reset();
    EXPECT_EQ(responseOf(asked).outcome, Outcome::failed);
    EXPECT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    EXPECT_FALSE(askedForOther.isFinished());
}

TEST_F(DesktopPortalTest, ASessionThatThePortalEndsHasNoAnswersAnyMore)
{
    reachPortal();
    const auto opened = session();
    mock().user = User::takesTime;
    const auto asked = start(*opened);
    ASSERT_TRUE(waitUntil([this] { return mock().openQuestions() == 1; }));
    mock().revoke();
    EXPECT_EQ(responseOf(asked).outcome, Outcome::failed);
}

TEST_F(DesktopPortalTest, APortalThatDiesWhileASessionIsMadeGivesNone)
{
    reachPortal();
    mock().diesAt = u"RemoteDesktop.CreateSession"_s;
    EXPECT_EQ(session(), nullptr);
    EXPECT_TRUE(becomes(State::absent));
}

} // namespace

} // namespace tessly::test
