#include "XServerProbe.h"

#include "FrozenProcess.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <future>

using namespace std::chrono_literals;

namespace tessly::test {

namespace {

using Outcome = XServerProbe::Outcome;

// For what is to come; a test that passes does not wait so long.
constexpr auto timeout = 20s;

class XServerProbeTest : public testing::Test
{
protected:
    [[nodiscard]] std::string display() const { return m_session.display().toStdString(); }
    XSession m_session{XSession::WindowManager::none};
};

TEST_F(XServerProbeTest, aServerThatServesAnswers)
{
    EXPECT_EQ(XServerProbe(display()).wait(timeout), Outcome::answers);
}

TEST_F(XServerProbeTest, withoutAServerThereIsNothingToWaitFor)
{
    const std::string gone = display();
    m_session.killServer();
    EXPECT_EQ(XServerProbe(gone).wait(timeout), Outcome::absent);
}

TEST_F(XServerProbeTest, aServerThatServesNobodyIsSilentAndIsHeardOfOnceItAnswers)
{
    freeze(m_session.server());
    XServerProbe probe(display());
    std::promise<void> answered;
    EXPECT_EQ(probe.wait(50ms), Outcome::silent);
    probe.setAnswered([&] { answered.set_value(); });
    thaw(m_session.server());
    EXPECT_EQ(answered.get_future().wait_for(timeout), std::future_status::ready);
    EXPECT_EQ(probe.wait(0ms), Outcome::answers);
}

TEST_F(XServerProbeTest, whoAsksAfterTheAnswerIsCalledAtOnce)
{
    XServerProbe probe(display());
    ASSERT_EQ(probe.wait(timeout), Outcome::answers);
    bool isCalled = false;
    probe.setAnswered([&] { isCalled = true; });
    EXPECT_TRUE(isCalled);
}

TEST_F(XServerProbeTest, aServerThatEndsInSilenceIsAbsentAndNobodyIsCalled)
{
    freeze(m_session.server());
    XServerProbe probe(display());
    bool isCalled = false;
    probe.setAnswered([&] { isCalled = true; });
    m_session.killServer();
    EXPECT_EQ(probe.wait(timeout), Outcome::absent);
    EXPECT_FALSE(isCalled);
}

TEST_F(XServerProbeTest, nobodyIsCalledOnceItIsGone)
{
    freeze(m_session.server());
    bool isCalled = false;
    XServerProbe other(display());
    {
        XServerProbe probe(display());
        probe.setAnswered([&] { isCalled = true; });
    }
    thaw(m_session.server());
    // Which connects after it.
    ASSERT_EQ(XServerProbe(display()).wait(timeout), Outcome::answers);
    ASSERT_EQ(other.wait(timeout), Outcome::answers);
    EXPECT_FALSE(isCalled);
}

} // namespace
} // namespace tessly::test
