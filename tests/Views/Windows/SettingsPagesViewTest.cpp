#include "SettingsViewTest.h"

namespace tessly::test {
namespace {

using SettingsPagesViewTest = SettingsViewTest;

// Shortcuts and About

TEST_F(SettingsPagesViewTest, KeyCapsHaveToolTips)
{
    showTab(2);
    driver().point(u"shortcut-Pin or unpin"_s);
    QQuickItem& row = item(u"shortcut-Pin or unpin"_s);
    const QQuickItem* cap = nullptr;
    const std::function<void(QQuickItem&)> look = [&](QQuickItem& inside) {
        if (inside.property("minimumWidth").isValid()) {
            cap = &inside;
        }
        for (QQuickItem* const child : inside.childItems()) {
            look(*child);
        }
    };
    look(row);
    ASSERT_NE(cap, nullptr);
    const QPoint center = cap->mapToScene(QPointF(cap->width() / 2, cap->height() / 2)).toPoint();
    QTest::mouseMove(&window(), center + QPoint(1, 1));
    QTest::mouseMove(&window(), center);
    ASSERT_TRUE(waitUntil([this] { return find(u"tool-tip"_s) != nullptr; }));
    EXPECT_EQ(driver().text(u"tool-tip"_s, "text"), u"Ctrl+P"_s);
}

TEST_F(SettingsPagesViewTest, TheShortcutsEndWithWhatTheKeysAreHere)
{
    showTab(2);
    EXPECT_EQ(text(u"keyboard-line"_s), u"On this keyboard ⌘ is Ctrl and ⌥ is Alt."_s);
    const QQuickItem& line = item(u"keyboard-line"_s);
    const QQuickItem& last = item(u"shortcut-Delete"_s);
    EXPECT_GT(line.mapToScene(QPointF()).y(), last.mapToScene(QPointF()).y());
    EXPECT_LE(line.mapToScene(QPointF(0, line.height())).y(), window().height());
}

TEST_F(SettingsPagesViewTest, AboutStandsInTheMiddle)
{
    showTab(3);
    EXPECT_EQ(text(u"local-only"_s), u"Local-only"_s);
    EXPECT_NEAR(driver().centerOf(u"about-symbol"_s).x(), window().width() / 2, 1);
    EXPECT_EQ(color(u"version"_s), colors().tertiaryText);
}

// Hairlines

/// How many pixels of a column each line has that crosses it, from above. What is thicker than a
/// line is left out, and so is what the picture cuts off.
std::vector<int> linesAcross(const QImage& image, int x, int y)
{
    constexpr int tooThick = 4;
    std::vector<int> lines;
    int length = 1;
    for (; y + 1 < image.height(); ++y) {
        if (image.pixel(x, y) == image.pixel(x, y + 1)) {
            ++length;
            continue;
        }
        if (length < tooThick) {
            lines.push_back(length);
        }
        length = 1;
    }
    return lines;
}

// Also run at scales between whole ones.
TEST_F(SettingsPagesViewTest, HairlinesHaveOnePixelWhereverTheyLie)
{
    for (const int tab : {0, 1, 2}) {
        showTab(tab);
        const QImage image = window().grabWindow();
        const qreal scale = image.devicePixelRatio();
        // Where there are no texts, from below the tabs.
        const std::vector<int> lines = linesAcross(image, qRound(400 * scale), qRound(60 * scale));
        EXPECT_THAT(lines, SizeIs(testing::Ge(8)));
        EXPECT_THAT(lines, testing::Each(1)) << "of tab " << tab;
    }
}

// Also run at scales between whole ones.
TEST_F(SettingsPagesViewTest, LinesBetweenRowsEndAtTheLineAroundThem)
{
    showTab(0);
    const QImage image = window().grabWindow();
    const qreal scale = image.devicePixelRatio();
    const int right = image.width() - 1;
    const qreal top = item(u"capture-files"_s).mapToScene(QPointF()).y();
    int y = qRound(top * scale);
    int x = right;
    while (x > 0 && image.pixel(x, y) == image.pixel(right, y)) {
        --x;
    }
    const QRgb around = image.pixel(x, y);
    // Past two lines between rows.
    for (const int end = qRound((top + 60) * scale); y < end; ++y) {
        ASSERT_EQ(image.pixel(x, y), around) << y;
    }
}

// Assistive technology

TEST_F(SettingsPagesViewTest, TheGeneralTabIsReadInItsOrder)
{
    m_settings.setMaxHistory(500);
    m_settings.setMaxItemSizeMB(25);
    show();
    QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"Dialog|Tessly Settings"_s)),
        (QStringList{
            u"Dialog|Tessly Settings"_s,
            u"PageTabList|Settings"_s,
            u"PageTab|General"_s,
            u"PageTab|Privacy"_s,
            u"PageTab|Shortcuts"_s,
            u"PageTab|About"_s,
            u"Grouping|Startup"_s,
            u"Heading|Startup"_s,
            u"StaticText|Launch Tessly at login"_s,
            u"CheckBox|Launch Tessly at login"_s,
            u"Grouping|Capture"_s,
            u"Heading|Capture"_s,
            u"StaticText|Remember images"_s,
            u"CheckBox|Remember images"_s,
            u"StaticText|Remember copied files"_s,
            u"CheckBox|Remember copied files"_s,
            u"StaticText|Keep up to 500 unpinned items"_s,
            u"SpinBox|Keep up to 500 unpinned items"_s,
            u"StaticText|Maximum item size: 25 MB"_s,
            u"SpinBox|Maximum item size: 25 MB"_s,
            u"Grouping|Behavior"_s,
            u"Heading|Behavior"_s,
            u"StaticText|Move pasted items to the top"_s,
            u"CheckBox|Move pasted items to the top"_s,
            u"StaticText|Enable direct position shortcuts"_s,
            u"CheckBox|Enable direct position shortcuts"_s,
        }));
}

TEST_F(SettingsPagesViewTest, ThePrivacyTabIsReadInItsOrder)
{
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    showTab(1);
    QStringList objects = driver().accessibleObjects();
    EXPECT_EQ(
        objects.mid(objects.indexOf(u"Grouping|Clipboard access"_s)),
        (QStringList{
            u"Grouping|Clipboard access"_s,
            u"Heading|Clipboard access"_s,
            u"StaticText|Background history"_s,
            u"StaticText|Available"_s,
            u"Grouping|Automatic paste"_s,
            u"Heading|Automatic paste"_s,
            u"StaticText|Access"_s,
            u"StaticText|Required"_s,
            u"Button|Allow"_s,
            u"Grouping|Excluded bundle IDs"_s,
            u"Heading|Excluded bundle IDs"_s,
            u"EditableText|Excluded bundle IDs"_s,
            u"Grouping|Stored data"_s,
            u"Heading|Stored data"_s,
            u"StaticText|History"_s,
            u"StaticText|0 items"_s,
            u"StaticText|Pinned"_s,
            u"StaticText|0 items"_s,
            u"StaticText|Database"_s,
            u"StaticText|Zero KB"_s,
            u"Button|Clear Unpinned History"_s,
            u"Button|Clear Everything"_s,
            u"Button|Clear System Clipboard"_s,
        }));
}

TEST_F(SettingsPagesViewTest, TheOtherTabsAreReadToo)
{
    showTab(2);
    const QStringList shortcuts = driver().accessibleObjects();
    for (const QString& object :
         {u"Heading|Global direct paste"_s, u"StaticText|Positions 1–9"_s,
          u"StaticText|Alt+Shift+1…9"_s, u"StaticText|Ctrl+Backspace"_s,
          u"StaticText|On this keyboard ⌘ is Ctrl and ⌥ is Alt."_s}) {
        EXPECT_TRUE(shortcuts.contains(object)) << object.toStdString();
    }
    m_shown.setSelectedTab(3);
    run();
    const QStringList about = driver().accessibleObjects();
    for (const QString& object :
         {u"StaticText|Tessly"_s, u"StaticText|Local-only"_s, u"StaticText|Version 1.2.3"_s}) {
        EXPECT_TRUE(about.contains(object)) << object.toStdString();
    }
}

TEST_F(SettingsPagesViewTest, StatesAreToldToAssistiveTechnology)
{
    m_settings.setCaptureImages(true);
    m_settings.setCaptureFiles(false);
    show();
    EXPECT_TRUE(driver().accessible(u"tab-general"_s)->state().selected);
    EXPECT_FALSE(driver().accessible(u"tab-privacy"_s)->state().selected);
    EXPECT_TRUE(driver().accessible(u"capture-images"_s)->state().checked);
    EXPECT_FALSE(driver().accessible(u"capture-files"_s)->state().checked);
    EXPECT_TRUE(driver().accessible(u"capture-files"_s)->state().checkable);
    EXPECT_TRUE(driver().accessible(u"capture-files"_s)->state().focusable);
    ASSERT_TRUE(tabTo(u"capture-files"_s));
    EXPECT_TRUE(driver().accessible(u"capture-files"_s)->state().focused);
    EXPECT_FALSE(driver().accessible(u"capture-images"_s)->state().focused);
}

TEST_F(SettingsPagesViewTest, AssistiveTechnologyCanUseTheControls)
{
    m_settings.setMaxHistory(500);
    show();
    const auto act = [this](const QString& name, const QString& action) {
        QAccessibleActionInterface* const actions = driver().accessible(name)->actionInterface();
        ASSERT_NE(actions, nullptr);
        ASSERT_TRUE(actions->actionNames().contains(action)) << action.toStdString();
        actions->doAction(action);
        run();
    };
    const bool before = m_settings.captureImages();
    act(u"capture-images"_s, QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(m_settings.captureImages(), !before);
    act(u"max-history"_s, QAccessibleActionInterface::increaseAction());
    EXPECT_EQ(m_settings.maxHistory(), 550);
    QAccessibleValueInterface* const value =
        driver().accessible(u"max-history"_s)->valueInterface();
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->currentValue().toInt(), 550);
    EXPECT_EQ(value->minimumValue().toInt(), 10);
    EXPECT_EQ(value->maximumValue().toInt(), 10'000);
    EXPECT_EQ(value->minimumStepSize().toInt(), 50);
    act(u"tab-about"_s, QAccessibleActionInterface::pressAction());
    EXPECT_EQ(m_shown.selectedTab(), 3);
}

TEST_F(SettingsPagesViewTest, TheQuestionIsReadWithItsAnswers)
{
    showTab(1);
    m_shown.clearEverything();
    run();
    const QStringList objects = driver().accessibleObjects();
    for (const QString& object :
         {u"StaticText|Clear all clipboard history?"_s,
          u"StaticText|Pinned and unpinned items will be removed. This cannot be undone."_s,
          u"Button|Clear Everything"_s, u"Button|Cancel"_s}) {
        EXPECT_TRUE(objects.contains(object)) << object.toStdString();
    }
    EXPECT_TRUE(driver().accessible(u"alert-cancel"_s)->state().focused);
}

// Colours

TEST_F(SettingsPagesViewTest, ColoursFollowThePaletteWhileItIsOpen)
{
    show();
    const QPalette before = QGuiApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x20));
    dark.setColor(QPalette::WindowText, Qt::white);
    QGuiApplication::setPalette(dark);
    run();
    EXPECT_EQ(window().rootObject()->property("color").value<QColor>(), tokenColors(dark).window);
    QGuiApplication::setPalette(before);
}

} // namespace
} // namespace tessly::test
