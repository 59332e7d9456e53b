#include "DirectPasteKeys.h"

#include "FakeHotKeyCenter.h"
#include "LogCapture.h"
#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace tessly::test {

namespace {

using Combination = FakeHotKeyCenter::Combination;
using State = DirectPasteKeys::State;

constexpr quint32 optionShift = 0xA00;
/// The virtual key codes of the keys 1 to 9 and 0.
constexpr std::array<quint32, 10> keyCodes = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};

class DirectPasteKeysTest : public testing::Test
{
protected:
    std::optional<QString> setUp(State state) { return await(m_keys->setUp(state)); }

    LogCapture m_log;
    FakeHotKeyCenter m_center;
    GlobalHotKeyManager m_manager{m_center};
    std::vector<int> m_pasted;
    std::unique_ptr<DirectPasteKeys> m_keys = std::make_unique<DirectPasteKeys>(
        m_manager, [this](int position) { m_pasted.push_back(position); });
};

TEST_F(DirectPasteKeysTest, OffRegistersNothing)
{
    EXPECT_EQ(setUp(State::off), std::nullopt);
    EXPECT_THAT(m_center.asked(), IsEmpty());
    EXPECT_EQ(m_center.handlersInstalled(), 0);
}

TEST_F(DirectPasteKeysTest, SwitchedOnTenKeysAreRegisteredInOrderWithTheIDsOneToTen)
{
    EXPECT_EQ(setUp(State::off), std::nullopt);
    EXPECT_EQ(setUp(State::on), std::nullopt);
    const auto held = m_center.held();
    ASSERT_EQ(held.size(), 10U);
    for (std::size_t index = 0; index < held.size(); ++index) {
        EXPECT_EQ(held[index].key.id, index + 1);
        EXPECT_EQ(held[index].combination, Combination(keyCodes.at(index), optionShift));
    }
}

TEST_F(DirectPasteKeysTest, EachKeyPastesItsPosition)
{
    EXPECT_EQ(setUp(State::on), std::nullopt);
    for (const quint32 keyCode : keyCodes) {
        m_center.press({keyCode, optionShift});
    }
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1000);
    EXPECT_THAT(m_pasted, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST_F(DirectPasteKeysTest, SwitchedOffEveryKeyIsGivenUp)
{
    EXPECT_EQ(setUp(State::on), std::nullopt);
    EXPECT_EQ(setUp(State::off), std::nullopt);
    EXPECT_THAT(m_center.held(), IsEmpty());
}

TEST_F(DirectPasteKeysTest, SetUpAgainTheIDsBeginAtOne)
{
    EXPECT_EQ(setUp(State::on), std::nullopt);
    EXPECT_EQ(setUp(State::on), std::nullopt);
    ASSERT_EQ(m_center.held().size(), 10U);
    EXPECT_EQ(m_center.held().front().key.id, 1U);
}

TEST_F(DirectPasteKeysTest, KeysInUseElsewhereAreNamedAndTheOthersWork)
{
    ASSERT_TRUE(m_center.takeElsewhere({keyCodes[2], optionShift}));
    ASSERT_TRUE(m_center.takeElsewhere({keyCodes[9], optionShift}));
    EXPECT_EQ(setUp(State::on), u"Some direct-paste shortcuts are already in use: ⌥⇧3, 0."_s);
    EXPECT_EQ(m_center.held().size(), 8U);
    EXPECT_EQ(m_center.held().back().key.id, 9U);
}

TEST_F(DirectPasteKeysTest, AKeyThatWasFreedIsHadTheNextTime)
{
    ASSERT_TRUE(m_center.takeElsewhere({keyCodes[0], optionShift}));
    EXPECT_EQ(setUp(State::on), u"Some direct-paste shortcuts are already in use: ⌥⇧1."_s);
    m_center.releaseElsewhere({keyCodes[0], optionShift});
    EXPECT_EQ(setUp(State::on), std::nullopt);
}

TEST_F(DirectPasteKeysTest, ASetUpThatWasOvertakenSaysNothing)
{
    ASSERT_TRUE(m_center.takeElsewhere({keyCodes[0], optionShift}));
    m_center.gate().hold();
    auto overtaken = m_keys->setUp(State::on);
    auto off = m_keys->setUp(State::off);
    m_center.gate().open();
    EXPECT_EQ(await(std::move(overtaken)), std::nullopt);
    EXPECT_EQ(await(std::move(off)), std::nullopt);
    EXPECT_THAT(m_center.held(), IsEmpty());
}

TEST_F(DirectPasteKeysTest, SwitchedOffAndOnAgainBeforeTheAnswerTheLastWordCounts)
{
    m_center.gate().hold();
    auto first = m_keys->setUp(State::on);
    auto off = m_keys->setUp(State::off);
    auto last = m_keys->setUp(State::on);
    m_center.gate().open();
    EXPECT_EQ(await(std::move(first)), std::nullopt);
    EXPECT_EQ(await(std::move(off)), std::nullopt);
    EXPECT_EQ(await(std::move(last)), std::nullopt);
    EXPECT_EQ(m_center.held().size(), 10U);
}

TEST_F(DirectPasteKeysTest, AnAnswerThatComesAfterTheEndSaysNothing)
{
    ASSERT_TRUE(m_center.takeElsewhere({keyCodes[0], optionShift}));
    m_center.gate().hold();
    auto answer = m_keys->setUp(State::on);
    m_keys.reset();
    m_center.gate().open();
    EXPECT_EQ(await(std::move(answer)), std::nullopt);
}

} // namespace

} // namespace tessly::test
