#include "DesktopChoice.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace tessly::test {
namespace {

using Kind = DesktopChoice::Kind;
using Interfaces = std::set<std::string>;
using XServer = XServerProbe::Outcome;

TEST(DesktopChoice, WithoutACompositorTheXServerServes)
{
    const auto choice = desktopChoice({.xServer = XServer::answers});
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->kind, Kind::x11);
    EXPECT_TRUE(choice->hasClipboard);
    EXPECT_EQ(choice->toolkitPlatform(), "xcb");
    EXPECT_EQ(choice->protocols, QStringList(u"X11"_s));
    EXPECT_EQ(choice->remark, QString());
}

TEST(DesktopChoice, WithNeitherThereIsNoDesktop)
{
    EXPECT_FALSE(desktopChoice({}));
    EXPECT_FALSE(desktopChoice({.xServer = XServer::silent}));
}

TEST(DesktopChoice, EitherDataControlIsUsedNatively)
{
    for (const std::string dataControl :
         {"ext_data_control_manager_v1", "zwlr_data_control_manager_v1"}) {
        for (const auto xServer : {XServer::absent, XServer::silent, XServer::answers}) {
            const auto choice = desktopChoice(
                {.xServer = xServer, .compositor = Interfaces{"wl_seat", dataControl}});
            ASSERT_TRUE(choice);
            EXPECT_EQ(choice->kind, Kind::wayland);
            EXPECT_TRUE(choice->hasClipboard);
            EXPECT_EQ(choice->toolkitPlatform(), "wayland");
            EXPECT_EQ(choice->protocols, QStringList(QString::fromStdString(dataControl)));
            EXPECT_EQ(choice->remark, QString());
        }
    }
}

TEST(DesktopChoice, WithoutDataControlXWaylandServesAndTheUserIsTold)
{
    const auto choice =
        desktopChoice({.xServer = XServer::answers, .compositor = Interfaces{"wl_seat"}});
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->kind, Kind::xwayland);
    EXPECT_TRUE(choice->hasClipboard);
    EXPECT_EQ(choice->toolkitPlatform(), "xcb");
    EXPECT_TRUE(choice->remark.contains(u"XWayland"_s));
}

TEST(DesktopChoice, WithoutXWaylandEitherTheClipboardIsOutOfReachAndTheUserIsTold)
{
    const auto choice = desktopChoice({.compositor = Interfaces{"wl_seat"}});
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->kind, Kind::wayland);
    EXPECT_FALSE(choice->hasClipboard);
    EXPECT_TRUE(choice->remark.contains(u"cannot read or write the clipboard"_s));
}

TEST(DesktopChoice, WhileXWaylandDoesNotAnswerTheClipboardIsOutOfReachAndTheUserIsTold)
{
    const auto choice =
        desktopChoice({.xServer = XServer::silent, .compositor = Interfaces{"wl_seat"}});
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->kind, Kind::wayland);
    EXPECT_FALSE(choice->hasClipboard);
    EXPECT_EQ(choice->protocols, QStringList(u"XWayland (does not answer yet)"_s));
    EXPECT_TRUE(choice->remark.contains(u"until"_s));
}

TEST(DesktopChoice, NamesWhatItHasAUseForAndNothingElse)
{
    const auto choice = desktopChoice(
        {.compositor = Interfaces{
             "org_kde_kwin_fake_input", "org_kde_plasma_window_management", "wl_compositor",
             "zwlr_data_control_manager_v1", "zwlr_foreign_toplevel_manager_v1",
             "zwp_virtual_keyboard_manager_v1"}});
    ASSERT_TRUE(choice);
    EXPECT_EQ(
        choice->protocols,
        (QStringList{
            u"zwlr_data_control_manager_v1"_s, u"zwlr_foreign_toplevel_manager_v1"_s,
            u"org_kde_plasma_window_management"_s, u"zwp_virtual_keyboard_manager_v1"_s,
            u"org_kde_kwin_fake_input"_s}));
}

} // namespace
} // namespace tessly::test
