#include "PanelViewTest.h"

namespace tessly::test {
namespace {

using PanelStatesTest = PanelViewTest;

// The banner

TEST_F(PanelStatesTest, TheBannerComesWithItsKindAndGoes)
{
    show();
    EXPECT_EQ(find(u"banner"_s), nullptr);
    const TokenColors colors = tokenColors(QGuiApplication::palette());
    const std::tuple<AppModel::BannerKind, QString, QColor> kinds[] = {
        {AppModel::BannerKind::information, u"info.circle.fill"_s, colors.bannerInformation},
        {AppModel::BannerKind::warning, u"exclamationmark.triangle.fill"_s, colors.bannerWarning},
        {AppModel::BannerKind::error, u"xmark.octagon.fill"_s, colors.bannerError},
    };
    for (const auto& [kind, symbol, color] : kinds) {
        m_model->showBanner(u"Some news."_s, kind);
        ASSERT_TRUE(waitUntil([this] {
            QQuickItem* const banner = find(u"banner"_s);
            return banner != nullptr && banner->opacity() == 1;
        }));
        EXPECT_EQ(text(u"banner-message"_s), u"Some news."_s);
        EXPECT_EQ(text(u"banner-symbol"_s, "name"), symbol);
        EXPECT_EQ(item(u"banner"_s).property("color").value<QColor>(), color);
    }
    pass(4s);
    EXPECT_TRUE(waitUntil([this] { return find(u"banner"_s) == nullptr; }));
}

TEST_F(PanelStatesTest, TheBannerIsDismissedByItsButton)
{
    show();
    m_model->setBanner(AppModel::Banner{u"It stays."_s, AppModel::BannerKind::warning});
    ASSERT_TRUE(waitUntil([this] {
        QQuickItem* const banner = find(u"banner"_s);
        return banner != nullptr && banner->opacity() == 1;
    }));
    pass(10s);
    EXPECT_NE(find(u"banner"_s), nullptr);
    click(u"dismiss-banner"_s);
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_TRUE(waitUntil([this] { return find(u"banner"_s) == nullptr; }));
}

// Empty states

TEST_F(PanelStatesTest, AnEmptyHistorySaysSo)
{
    show();
    EXPECT_EQ(text(u"empty-history-label"_s), u"Clipboard is empty"_s);
    EXPECT_EQ(text(u"empty-history-symbol"_s, "name"), u"doc.on.clipboard"_s);
    EXPECT_EQ(accessibleName(u"empty-history"_s), u"Clipboard is empty"_s);
    save("one");
    m_model->reload(AppModel::Debounce::no);
    run();
    EXPECT_EQ(find(u"empty-history"_s), nullptr);
    EXPECT_NE(find(u"row-0"_s), nullptr);
}

TEST_F(PanelStatesTest, ASearchWithoutResultSaysSo)
{
    save("one");
    show();
    type(u" "_s);
    settleSearch();
    type(u"zzz"_s);
    settleSearch();
    EXPECT_EQ(text(u"empty-history-label"_s), u"No matching clips"_s);
    EXPECT_EQ(text(u"empty-history-symbol"_s, "name"), u"magnifyingglass"_s);
}

TEST_F(PanelStatesTest, AFilterWithoutResultAndWithoutQueryIsAnEmptyClipboard)
{
    save("one");
    show();
    click(u"filter-image"_s);
    EXPECT_EQ(text(u"empty-history-label"_s), u"Clipboard is empty"_s);
}

// Header and footer

TEST_F(PanelStatesTest, ThePauseButtonPausesAndResumes)
{
    show();
    EXPECT_EQ(text(u"pause-recording"_s, "symbol"), u"pause.circle"_s);
    EXPECT_EQ(text(u"pause-recording"_s, "help"), u"Pause clipboard recording"_s);
    click(u"pause-recording"_s);
    EXPECT_TRUE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(text(u"pause-recording"_s, "symbol"), u"record.circle"_s);
    EXPECT_EQ(text(u"pause-recording"_s, "help"), u"Resume clipboard recording"_s);
    EXPECT_EQ(message(), u"Clipboard recording paused."_s);
    click(u"pause-recording"_s);
    EXPECT_FALSE(m_model->clipboardMonitor().isPaused());
    EXPECT_EQ(message(), u"Clipboard recording resumed."_s);
}

TEST_F(PanelStatesTest, TheSettingsButtonClosesAndAsksForTheSettings)
{
    show();
    QSignalSpy requested(&m_panel, &PanelModel::settingsRequested);
    QObject::connect(&m_panel, &PanelModel::settingsRequested, &m_panel, [this] {
        EXPECT_FALSE(window().isVisible()) << "the panel is closed first";
    });
    click(u"open-settings"_s);
    EXPECT_EQ(requested.size(), 1);
}

TEST_F(PanelStatesTest, TheFooterCountsTheWholeHistory)
{
    saveMany(3);
    show();
    EXPECT_EQ(text(u"item-count"_s), u"3 items"_s);
    type(u"2"_s);
    settleSearch();
    EXPECT_THAT(texts(), SizeIs(1));
    EXPECT_EQ(text(u"item-count"_s), u"3 items"_s);
}

// Names and help

TEST_F(PanelStatesTest, EverythingHasANameForAssistiveTechnology)
{
    m_settings.setDirectPasteShortcuts(true);
    save("one\ntwo");
    show();
    EXPECT_EQ(accessibleName(u"row-0"_s), u"Text, one two"_s);
    EXPECT_EQ(accessibleName(u"shortcut"_s), u"Alt+Shift+1"_s);
    EXPECT_EQ(accessibleName(u"clipboard-search"_s), u"Search clipboard history"_s);
    EXPECT_EQ(accessibleName(u"open-settings"_s), u"Settings"_s);
    EXPECT_EQ(accessibleName(u"pause-recording"_s), u"Pause clipboard recording"_s);
    EXPECT_EQ(accessibleName(u"filter-richText"_s), u"Rich Text"_s);
    EXPECT_EQ(accessibleName(u"hint-paste"_s), u"Return: paste"_s);
    EXPECT_EQ(accessibleName(u"hint-plain text"_s), u"Shift+Return: plain text"_s);
    EXPECT_EQ(accessibleName(u"hint-pin"_s), u"Ctrl+P: pin"_s);
    EXPECT_EQ(accessibleName(u"item-count"_s), u"1 items"_s);
}

TEST_F(PanelStatesTest, ARowCanBeChosenByAssistiveTechnology)
{
    save("one");
    show();
    QAccessibleInterface* const row = QAccessible::queryAccessibleInterface(&item(u"row-0"_s));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->role(), QAccessible::ListItem);
    ASSERT_NE(row->actionInterface(), nullptr);
    row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_THAT(m_pasteboard.writes(), SizeIs(1));
}

TEST_F(PanelStatesTest, ButtonsAndKeyCapsHaveToolTips)
{
    m_settings.setDirectPasteShortcuts(true);
    save("one");
    show();
    const std::pair<QString, QString> tips[] = {
        {u"open-settings"_s, u"Settings"_s}, {u"pause-recording"_s, u"Pause clipboard recording"_s},
        {u"shortcut"_s, u"Alt+Shift+1"_s},   {u"hint-plain text"_s, u"Shift+Return"_s},
        {u"hint-pin"_s, u"Ctrl+P"_s},
    };
    for (const auto& [name, tip] : tips) {
        point(name);
        ASSERT_TRUE(waitUntil([this] { return find(u"tool-tip"_s) != nullptr; }))
            << name.toStdString();
        EXPECT_EQ(text(u"tool-tip"_s), tip);
        const QQuickItem& shown = item(u"tool-tip"_s);
        EXPECT_TRUE(
            QRectF(0, 0, 660, 560)
                .contains(shown.mapRectToScene(QRectF(0, 0, shown.width(), shown.height()))));
        point(u"history"_s);
        EXPECT_EQ(find(u"tool-tip"_s), nullptr);
    }
}

// Appearance

TEST_F(PanelStatesTest, ColoursFollowThePaletteWhileItIsOpen)
{
    const QPalette before = QGuiApplication::palette();
    show();
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
    dark.setColor(QPalette::WindowText, Qt::white);
    QGuiApplication::setPalette(dark);
    run();
    EXPECT_EQ(window().rootObject()->property("color").value<QColor>(), tokenColors(dark).panel);
    QGuiApplication::setPalette(before);
    run();
    EXPECT_EQ(window().rootObject()->property("color").value<QColor>(), tokenColors(before).panel);
}

TEST_F(PanelStatesTest, IsDrawnWithoutAGPU)
{
    show();
    EXPECT_EQ(window().rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
}

} // namespace
} // namespace tessly::test
