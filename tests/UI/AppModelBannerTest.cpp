#include "AppModelTest.h"

namespace tessly::test {
namespace {

using AppModelBannerTest = AppModelTest;

// Banners

TEST_F(AppModelBannerTest, ABannerIsShownForFourSeconds)
{
    m_model->showBanner(u"text"_s, BannerKind::warning);
    EXPECT_EQ(message(), u"text"_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_clock.advance(3999ms);
    EXPECT_TRUE(m_model->banner().has_value());
    m_clock.advance(1ms);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelBannerTest, ANewBannerHasItsOwnFourSeconds)
{
    m_model->showBanner(u"first"_s, BannerKind::information);
    m_clock.advance(3s);
    m_model->showBanner(u"second"_s, BannerKind::information);
    m_clock.advance(3999ms);
    EXPECT_EQ(message(), u"second"_s);
    m_clock.advance(1ms);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelBannerTest, ABannerThatIsSetDirectlyStays)
{
    m_model->showBanner(u"for a while"_s, BannerKind::information);
    m_clock.advance(1s);
    m_model->setBanner(AppModel::Banner{u"for good"_s, BannerKind::warning});
    m_clock.advance(1h);
    EXPECT_EQ(message(), u"for good"_s);
    m_model->showBanner(u"for a while"_s, BannerKind::information);
    EXPECT_EQ(message(), u"for a while"_s);
    m_clock.advance(4s);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelBannerTest, ADismissedBannerIsGone)
{
    m_model->setBanner(AppModel::Banner{u"for good"_s, BannerKind::warning});
    m_model->dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
    m_model->showBanner(u"text"_s, BannerKind::information);
    m_model->dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelBannerTest, ANoticeStaysInFrontUntilItIsDismissedAndTheOthersWait)
{
    const QSignalSpy dismissed(m_model.get(), &AppModel::noticeDismissed);
    m_model->showBanner(u"before"_s, BannerKind::information);
    m_clock.advance(3s);
    m_model->showNotice(u"name"_s, {u"notice"_s, BannerKind::warning});
    m_clock.advance(1h);
    EXPECT_EQ(message(), u"notice"_s);
    EXPECT_EQ(bannerKind(), BannerKind::warning);
    m_model->showBanner(u"behind it"_s, BannerKind::error);
    EXPECT_EQ(message(), u"notice"_s);
    m_clock.advance(1h);
    m_model->dismissBanner();
    EXPECT_EQ(message(), u"behind it"_s);
    ASSERT_EQ(dismissed.count(), 1);
    EXPECT_EQ(dismissed.front().front(), u"name"_s);
    m_clock.advance(3999ms);
    EXPECT_EQ(message(), u"behind it"_s) << "its time began when it could be seen";
    m_clock.advance(1ms);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_EQ(m_clock.pending(), 0U);
}

TEST_F(AppModelBannerTest, ABannerThatIsSetDirectlyWaitsBehindANoticeAndStays)
{
    m_model->showNotice(u"name"_s, {u"notice"_s, BannerKind::warning});
    m_model->setBanner(AppModel::Banner{u"for good"_s, BannerKind::warning});
    EXPECT_EQ(message(), u"notice"_s);
    m_model->dismissBanner();
    m_clock.advance(1h);
    EXPECT_EQ(message(), u"for good"_s);
}

TEST_F(AppModelBannerTest, NoticesAreShownOneAfterTheOtherAndReplacedByName)
{
    m_model->showNotice(u"one"_s, {u"first"_s, BannerKind::warning});
    m_model->showNotice(u"two"_s, {u"second"_s, BannerKind::warning});
    m_model->showNotice(u"one"_s, {u"first, with more"_s, BannerKind::warning});
    EXPECT_EQ(message(), u"first, with more"_s);
    m_model->dismissBanner();
    EXPECT_EQ(message(), u"second"_s);
    m_model->dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(AppModelBannerTest, EverySetOfTheBannerIsTold)
{
    const QSignalSpy spy(m_model.get(), &AppModel::bannerChanged);
    m_model->showBanner(u"text"_s, BannerKind::information);
    m_model->showBanner(u"text"_s, BannerKind::information);
    EXPECT_EQ(spy.count(), 2);
    m_clock.advance(4s);
    EXPECT_EQ(spy.count(), 3);
}

} // namespace
} // namespace tessly::test
