#include "AppModelTest.h"

namespace tessly::test {
namespace {

// Wiping what was dropped

/// While it lives, no file of this process grows or is written to.
class FullDisk
{
public:
    FullDisk()
        : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit none{0, m_limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_limit{};
};

class AppModelScrubTest : public AppModelTest
{
protected:
    AppModelScrubTest()
    {
        m_settings.setMaxHistory(10);
        for (int i = 0; i < 10; ++i) {
            save("text " + QByteArray::number(i));
        }
        m_model->clipboardMonitor().start();
    }

    /// Whether a text is anywhere in the database's files.
    [[nodiscard]] bool isOnDisk(const QByteArray& text) const
    {
        const QDir folder(m_folder.path());
        const QStringList names = folder.entryList(QDir::Files);
        return std::ranges::any_of(names, [&](const QString& name) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            return file.readAll().contains(text);
        });
    }
};

TEST_F(AppModelScrubTest, WhatACaptureDroppedIsWipedFiveSecondsLater)
{
    ASSERT_TRUE(isOnDisk("text 0"));
    copy("new");
    run();
    pass(4999ms);
    EXPECT_TRUE(isOnDisk("text 0")) << "this test would see it";
    pass(1ms);
    EXPECT_FALSE(isOnDisk("text 0"));
    EXPECT_TRUE(isOnDisk("text 1"));
}

TEST_F(AppModelScrubTest, WhatATrimDroppedIsWipedFiveSecondsLater)
{
    save("new");
    m_model->trimHistoryToCurrentLimit();
    run();
    pass(5s);
    EXPECT_FALSE(isOnDisk("text 0"));
}

TEST_F(AppModelScrubTest, EachCapturePutsTheWipingOff)
{
    for (int i = 0; i < 5; ++i) {
        copy("new " + QByteArray::number(i));
        run();
        m_clock.advance(4s);
        EXPECT_EQ(m_executor->pending(), 0U);
    }
    m_clock.advance(1s);
    EXPECT_EQ(m_executor->pending(), 1U);
}

TEST_F(AppModelScrubTest, NothingIsWipedWhileThePanelIsUp)
{
    copy("new");
    run();
    m_model->setPanelPresented(true);
    m_clock.advance(30s);
    EXPECT_EQ(m_executor->pending(), 0U);
    m_model->setPanelPresented(false);
    m_clock.advance(5s);
    EXPECT_EQ(m_executor->pending(), 1U);
}

TEST_F(AppModelScrubTest, WhatTheLastRunMayHaveLeftIsWipedAWhileAfterTheFirstReload)
{
    reload();
    m_clock.advance(10s);
    reload();
    m_clock.advance(19'999ms);
    EXPECT_EQ(m_executor->pending(), 0U);
    m_clock.advance(1ms);
    EXPECT_EQ(m_executor->pending(), 1U);
    run();
    reload();
    m_clock.advance(1h);
    EXPECT_EQ(m_executor->pending(), 0U);
}

TEST_F(AppModelScrubTest, WipingThatFailsIsLoggedAndShowsNoBanner)
{
    copy("new");
    run();
    const FullDisk disk;
    const LogCapture log;
    pass(5s);
    EXPECT_THAT(log.lines(u"com.brackmoor.tessly.AppModel"_s), SizeIs(1));
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelScrubTest, WhatADeletionCouldNotWipeIsWipedLater)
{
    reload();
    const LogCapture log;
    {
        SQLiteConnection reader(m_databasePath);
        reader.execute("BEGIN; SELECT count(*) FROM clips");
        m_model->deleteClip(m_model->clips().back());
        run();
        EXPECT_THAT(texts(), Not(Contains("text 0")));
        pass(5s);
        EXPECT_TRUE(isOnDisk("text 0")) << "the other program reads it still";
    }
    pass(59s);
    EXPECT_TRUE(isOnDisk("text 0"));
    pass(1s);
    EXPECT_FALSE(isOnDisk("text 0"));
    m_clock.advance(24h);
    EXPECT_EQ(m_executor->pending(), 0U) << "nothing is left to do";
}

TEST_F(AppModelScrubTest, WipingThatKeepsFailingIsTriedEverLessOften)
{
    copy("new");
    run();
    const FullDisk disk;
    const LogCapture log;
    pass(5s);
    for (const auto delay : {1min, 2min, 4min, 8min, 16min, 32min, 60min, 60min}) {
        m_clock.advance(delay - 1ms);
        EXPECT_EQ(m_executor->pending(), 0U);
        m_clock.advance(1ms);
        EXPECT_EQ(m_executor->pending(), 1U);
        run();
    }
}

TEST_F(AppModelTest, AccessIssuesBecomeBanners)
{
    m_model->clipboardMonitor().start();
    m_pasteboard.setAccess(PasteboardAccess::askEveryTime);
    copy("text");
    EXPECT_EQ(
        message(),
        u"Clipboard access is set to Ask. Choose Always Allow for continuous history."_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_pasteboard.setAccess(PasteboardAccess::denied);
    copy("text");
    EXPECT_EQ(
        message(), u"Clipboard access is denied. Enable it in Privacy & Security settings."_s);
    EXPECT_EQ(bannerKind(), BannerKind::error);
}

} // namespace
} // namespace tessly::test
