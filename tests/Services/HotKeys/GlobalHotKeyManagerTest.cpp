#include "GlobalHotKeyManager.h"

#include "FakeHotKeyCenter.h"
#include "LogCapture.h"
#include "TestSupport.h"

#include <QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

using Shortcut = GlobalHotKeyManager::Shortcut;
using Line = LogCapture::Line;

constexpr quint32 optionShift = 0xA00;
constexpr Shortcut one = {18, optionShift};
constexpr Shortcut two = {19, optionShift};
constexpr Shortcut three = {20, optionShift};

FakeHotKeyCenter::Combination combination(Shortcut shortcut)
{
    return {shortcut.keyCode, shortcut.modifiers};
}

class GlobalHotKeyManagerTest : public testing::Test
{
protected:
    bool add(Shortcut shortcut, const QString& name = {})
    {
        return await(m_manager->registerShortcut(shortcut, [this, name] { m_ran << name; }));
    }

    std::vector<quint32> heldIDs() const
    {
        std::vector<quint32> ids;
        for (const auto& held : m_center.held()) {
            ids.push_back(held.key.id);
        }
        return ids;
    }

    std::vector<Line> log() const { return m_log.lines(category); }

    static void processEvents() { QCoreApplication::processEvents(QEventLoop::AllEvents, 1000); }

    const QString category = u"com.brackmoor.tessly.GlobalHotKeyManager"_s;
    LogCapture m_log;
    FakeHotKeyCenter m_center;
    std::unique_ptr<GlobalHotKeyManager> m_manager =
        std::make_unique<GlobalHotKeyManager>(m_center);
    QStringList m_ran;
};

TEST_F(GlobalHotKeyManagerTest, IDsCountFromOne)
{
    EXPECT_TRUE(add(one));
    EXPECT_TRUE(add(two));
    EXPECT_TRUE(add(three));
    EXPECT_THAT(heldIDs(), ElementsAre(1, 2, 3));
}

TEST_F(GlobalHotKeyManagerTest, ARefusedKeyLeavesAGapInTheIDs)
{
    ASSERT_TRUE(m_center.takeElsewhere(combination(two)));
    EXPECT_TRUE(add(one));
    EXPECT_FALSE(add(two));
    EXPECT_TRUE(add(three));
    EXPECT_THAT(heldIDs(), ElementsAre(1, 3));
}

TEST_F(GlobalHotKeyManagerTest, EveryKeyCarriesTheProgramsSignature)
{
    EXPECT_TRUE(add(one));
    EXPECT_EQ(m_center.held().front().key.signature, 0x54534C59U);
}

TEST_F(GlobalHotKeyManagerTest, AGrantWithoutAReferenceIsARefusal)
{
    m_center.withholdReferences();
    EXPECT_FALSE(add(one));
    EXPECT_THAT(
        log(), ElementsAre(
                   Line{QtInfoMsg, category, u"Hotkey event handler installed"_s},
                   Line{
                       QtCriticalMsg, category,
                       u"Unable to register hotkey keyCode=18 modifiers=2560: 0"_s}));
}

TEST_F(GlobalHotKeyManagerTest, TheHandlerIsInstalledWithTheFirstKeyAndOnlyOnce)
{
    EXPECT_EQ(m_center.handlersInstalled(), 0);
    EXPECT_TRUE(add(one));
    EXPECT_TRUE(add(two));
    EXPECT_EQ(m_center.handlersInstalled(), 1);
    m_manager->unregisterAll();
    EXPECT_TRUE(m_center.hasHandler());
    EXPECT_TRUE(add(one));
    EXPECT_EQ(m_center.handlersInstalled(), 1);
}

TEST_F(GlobalHotKeyManagerTest, WithoutAHandlerNoKeyIsAskedForAndNoIDSpent)
{
    m_center.failHandlers(-50);
    EXPECT_FALSE(add(one));
    EXPECT_FALSE(add(two));
    EXPECT_THAT(m_center.asked(), IsEmpty());
    const Line refused = {
        QtCriticalMsg, category, u"Unable to install hotkey event handler: -50"_s};
    EXPECT_THAT(log(), ElementsAre(refused, refused));

    m_center.allowHandlers();
    EXPECT_TRUE(add(three));
    EXPECT_THAT(heldIDs(), ElementsAre(1));
}

TEST_F(GlobalHotKeyManagerTest, AHandlerWithoutAReferenceCountsAsNone)
{
    m_center.failHandlers(HotKeyCenter::done);
    EXPECT_FALSE(add(one));
    EXPECT_THAT(m_center.asked(), IsEmpty());
    EXPECT_THAT(
        log(),
        ElementsAre(Line{QtCriticalMsg, category, u"Unable to install hotkey event handler: 0"_s}));
}

TEST_F(GlobalHotKeyManagerTest, APressRunsItsActionAfterTheDispatchHasReturned)
{
    EXPECT_TRUE(add(one, u"one"_s));
    EXPECT_TRUE(add(two, u"two"_s));
    EXPECT_EQ(m_center.deliver({.key = {.id = 2}}), HotKeyCenter::done);
    EXPECT_THAT(m_ran, IsEmpty());
    processEvents();
    EXPECT_THAT(m_ran, ElementsAre(u"two"_s));
}

TEST_F(GlobalHotKeyManagerTest, ThePressOfAKeyRunsItsActionEachTime)
{
    EXPECT_TRUE(add(one, u"one"_s));
    m_center.press(combination(one));
    m_center.press(combination(two));
    m_center.press(combination(one));
    processEvents();
    EXPECT_THAT(m_ran, ElementsAre(u"one"_s, u"one"_s));
}

TEST_F(GlobalHotKeyManagerTest, APressIsDispatchedByItsIDAlone)
{
    EXPECT_TRUE(add(one, u"one"_s));
    EXPECT_EQ(m_center.deliver({.key = {.signature = 7, .id = 1}}), HotKeyCenter::done);
    processEvents();
    EXPECT_THAT(m_ran, ElementsAre(u"one"_s));
}

TEST_F(GlobalHotKeyManagerTest, APressThatCannotBeReadIsPassedOn)
{
    EXPECT_TRUE(add(one, u"one"_s));
    m_log.clear();
    EXPECT_EQ(m_center.deliver({.status = -9870, .key = {.id = 1}}), -9870);
    processEvents();
    EXPECT_THAT(m_ran, IsEmpty());
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(GlobalHotKeyManagerTest, APressAfterTheManagersEndIsNotHandled)
{
    EXPECT_TRUE(add(one, u"one"_s));
    m_manager.reset();
    EXPECT_EQ(m_center.deliver({.key = {.id = 1}}), HotKeyCenter::notHandled);
}

TEST_F(GlobalHotKeyManagerTest, ADispatchedPressDoesNothingOnceTheManagerIsGone)
{
    EXPECT_TRUE(add(one, u"one"_s));
    EXPECT_EQ(m_center.deliver({.key = {.id = 1}}), HotKeyCenter::done);
    m_manager.reset();
    processEvents();
    EXPECT_THAT(m_ran, IsEmpty());
}

TEST_F(GlobalHotKeyManagerTest, ReleasingTheManagerUnregistersNothing)
{
    EXPECT_TRUE(add(one));
    m_manager.reset();
    EXPECT_THAT(heldIDs(), ElementsAre(1));
}

TEST_F(GlobalHotKeyManagerTest, AfterUnregisteringAllIDsBeginAtOneAgain)
{
    EXPECT_TRUE(add(one));
    EXPECT_TRUE(add(two));
    m_manager->unregisterAll();
    EXPECT_THAT(heldIDs(), IsEmpty());
    EXPECT_TRUE(add(three));
    EXPECT_THAT(heldIDs(), ElementsAre(1));
}

TEST_F(GlobalHotKeyManagerTest, APressThatOutranUnregisteringIsLoggedAndDoesNothingElse)
{
    EXPECT_TRUE(add(one, u"one"_s));
    EXPECT_EQ(m_center.deliver({.key = {.id = 1}}), HotKeyCenter::done);
    m_manager->unregisterAll();
    m_log.clear();
    processEvents();
    EXPECT_THAT(m_ran, IsEmpty());
    EXPECT_THAT(log(), ElementsAre(Line{QtInfoMsg, category, u"Triggered hotkey id=1"_s}));
}

TEST_F(GlobalHotKeyManagerTest, EveryRegistrationFailureAndTriggerIsLogged)
{
    ASSERT_TRUE(m_center.takeElsewhere(combination(two)));
    EXPECT_TRUE(add(one));
    EXPECT_FALSE(add(two));
    m_center.press(combination(one));
    processEvents();
    EXPECT_THAT(
        log(), ElementsAre(
                   Line{QtInfoMsg, category, u"Hotkey event handler installed"_s},
                   Line{QtInfoMsg, category, u"Registered hotkey id=1 keyCode=18 modifiers=2560"_s},
                   Line{
                       QtCriticalMsg, category,
                       u"Unable to register hotkey keyCode=19 modifiers=2560: -9878"_s},
                   Line{QtInfoMsg, category, u"Triggered hotkey id=1"_s}));
}

TEST_F(GlobalHotKeyManagerTest, AnActionMayRegisterAllKeysAnew)
{
    const auto again = [this] {
        m_manager->unregisterAll();
        m_ran << (add(two, u"two"_s) ? u"registered"_s : u"refused"_s);
    };
    EXPECT_TRUE(await(m_manager->registerShortcut(one, again)));
    m_center.press(combination(one));
    processEvents();
    m_center.press(combination(two));
    processEvents();
    EXPECT_THAT(m_ran, ElementsAre(u"registered"_s, u"two"_s));
}

TEST_F(GlobalHotKeyManagerTest, TheHandlerIsRemovedAndInstalledAgainWhenNeeded)
{
    EXPECT_TRUE(add(one));
    m_manager->removeEventHandler();
    EXPECT_FALSE(m_center.hasHandler());
    m_manager->removeEventHandler();
    EXPECT_TRUE(add(two));
    EXPECT_TRUE(m_center.hasHandler());
    EXPECT_EQ(m_center.handlersInstalled(), 2);
}

TEST_F(GlobalHotKeyManagerTest, AKeyGrantedAfterUnregisteringAllIsGivenBack)
{
    m_center.gate().hold();
    auto late = m_manager->registerShortcut(one, [this] { m_ran << u"late"_s; });
    m_manager->unregisterAll();
    auto current = m_manager->registerShortcut(two, [this] { m_ran << u"current"_s; });
    m_center.gate().open();
    EXPECT_FALSE(await(std::move(late)));
    EXPECT_TRUE(await(std::move(current)));
    ASSERT_THAT(heldIDs(), ElementsAre(1));
    EXPECT_EQ(m_center.held().front().combination, combination(two));
    m_center.press(combination(two));
    processEvents();
    EXPECT_THAT(m_ran, ElementsAre(u"current"_s));
}

TEST_F(GlobalHotKeyManagerTest, AnAnswerAfterTheManagersEndIsNoRegistration)
{
    m_center.gate().hold();
    auto registration = m_manager->registerShortcut(one, [this] { m_ran << u"one"_s; });
    m_manager.reset();
    m_center.gate().open();
    EXPECT_FALSE(await(std::move(registration)));
}

} // namespace

} // namespace tessly::test
