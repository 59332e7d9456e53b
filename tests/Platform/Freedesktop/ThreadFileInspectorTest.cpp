#include "ThreadFileInspector.h"

#include "TestSupport.h"
#include "VirtualClock.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <condition_variable>
#include <mutex>

using namespace Qt::StringLiterals;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

namespace tessly::test {
namespace {

using Kind = FileStatus::Kind;

/// A file system of which everything below "/net" hangs until it is let go. Its threads may outlive
/// the test.
class Network
{
public:
    [[nodiscard]] ThreadFileInspector::Look look() const
    {
        return [state = m_state](const QByteArray& path) {
            if (path.startsWith("/net/")) {
                std::unique_lock lock(state->mutex);
                ++state->hanging;
                state->changed.notify_all();
                state->changed.wait(lock, [&] { return state->answers; });
                --state->hanging;
                state->changed.notify_all();
            }
            return FileStatus{.kind = Kind::file, .bytes = path.size()};
        };
    }
    void waitForHanging(int threads)
    {
        std::unique_lock lock(m_state->mutex);
        m_state->changed.wait(lock, [&] { return m_state->hanging == threads; });
    }
    void answer()
    {
        const std::scoped_lock lock(m_state->mutex);
        m_state->answers = true;
        m_state->changed.notify_all();
    }

private:
    struct State
    {
        std::mutex mutex;
        std::condition_variable changed;
        bool answers = false;
        int hanging = 0;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace

TEST(ThreadFileInspector, TellsWhatIsThere)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(1234, 'x'));
    file.close();
    const QByteArray path = QFile::encodeName(file.fileName());
    VirtualClock clock;
    ThreadFileInspector inspector(clock);
    EXPECT_THAT(
        await(inspector.inspect(
            {path, QFile::encodeName(folder.path()), path + "-gone", path + "/below", "/dev/null",
             QByteArray(), "."})),
        ElementsAre(
            FileStatus{.kind = Kind::file, .bytes = 1234}, FileStatus{.kind = Kind::folder},
            FileStatus{.kind = Kind::missing}, FileStatus{.kind = Kind::missing},
            FileStatus{.kind = Kind::other}, FileStatus(), FileStatus()));
    EXPECT_THAT(await(inspector.inspect({})), SizeIs(0));
    EXPECT_EQ(clock.pending(), 0U);
}

TEST(ThreadFileInspector, AFileSystemThatHangsCostsWhatIsBehindIt)
{
    VirtualClock clock;
    Network network;
    ThreadFileInspector inspector(clock, network.look());
    auto answer = inspector.inspect({"/home", "/net/far", "/tmp"});
    network.waitForHanging(1);
    clock.advance(ThreadFileInspector::timeout - std::chrono::milliseconds(1));
    EXPECT_FALSE(answer.isReady());
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_THAT(
        await(std::move(answer)),
        ElementsAre(FileStatus{.kind = Kind::file, .bytes = 5}, FileStatus(), FileStatus()));
    network.answer();
    network.waitForHanging(0);
}

TEST(ThreadFileInspector, NoMoreThanAFewThreadsAreLeftBehind)
{
    VirtualClock clock;
    Network network;
    ThreadFileInspector inspector(clock, network.look());
    std::vector<QCoro::Task<std::vector<FileStatus>>> answers;
    for (int i = 0; i < ThreadFileInspector::threads; ++i) {
        answers.push_back(inspector.inspect({"/net/far"}));
    }
    network.waitForHanging(ThreadFileInspector::threads);
    EXPECT_THAT(
        await(inspector.inspect({"/home", "/tmp"})), Each(FileStatus{.kind = Kind::notLookedUp}));
    network.answer();
    for (auto& answer : answers) {
        EXPECT_THAT(
            await(std::move(answer)), ElementsAre(FileStatus{.kind = Kind::file, .bytes = 8}));
    }
    EXPECT_TRUE(waitUntil([&] {
        return await(inspector.inspect({"/home"})).front().kind == Kind::file;
    })) << "there is one again";
}

} // namespace tessly::test
