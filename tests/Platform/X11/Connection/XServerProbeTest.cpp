#include "XServerProbe.h"

#include "TestSupport.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <QFile>

#include <csignal>
#include <future>

using namespace Qt::StringLiterals;
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
    /// Returns once it is: until then it may still answer.
    void freeze()
    {
        const qint64 server = m_session.serverProcessID();
        kill(static_cast<pid_t>(server), SIGSTOP);
        ASSERT_TRUE(waitUntil([server] {
            QFile status(u"/proc/%1/stat"_s.arg(server));
            // Behind the program's name in parentheses.
            return status.open(QFile::ReadOnly) && status.readAll().contains(") T ");
        }));
    }
    void thaw() { kill(static_cast<pid_t>(m_session.serverProcessID()), SIGCONT); }
    void TearDown() override { thaw(); }

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
    freeze();
    XServerProbe probe(display());
    std::promise<void> answered;
    EXPECT_EQ(probe.wait(50ms), Outcome::silent);
    probe.setAnswered([&] { answered.set_value(); });
    thaw();
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
    freeze();
    XServerProbe probe(display());
    bool isCalled = false;
    probe.setAnswered([&] { isCalled = true; });
    m_session.killServer();
    EXPECT_EQ(probe.wait(timeout), Outcome::absent);
    EXPECT_FALSE(isCalled);
}

TEST_F(XServerProbeTest, nobodyIsCalledOnceItIsGone)
{
    freeze();
    bool isCalled = false;
    XServerProbe other(display());
    {
        XServerProbe probe(display());
        probe.setAnswered([&] { isCalled = true; });
    }
    thaw();
    // Which connects after it.
    ASSERT_EQ(XServerProbe(display()).wait(timeout), Outcome::answers);
    ASSERT_EQ(other.wait(timeout), Outcome::answers);
    EXPECT_FALSE(isCalled);
}

} // namespace
} // namespace tessly::test
