#include "SettingsViewTest.h"

namespace tessly::test {
namespace {

using SettingsPrivacyViewTest = SettingsViewTest;

// Privacy

TEST_F(SettingsPrivacyViewTest, AccessIsGreenWhereAllIsWell)
{
    showTab(1);
    EXPECT_EQ(text(u"clipboard-access"_s), u"Available"_s);
    EXPECT_EQ(color(u"clipboard-access"_s), colors().good);
    EXPECT_EQ(text(u"automatic-paste-access"_s), u"Granted"_s);
    EXPECT_EQ(color(u"automatic-paste-access"_s), colors().good);
    EXPECT_EQ(find(u"allow-automatic-paste"_s), nullptr);
}

TEST_F(SettingsPrivacyViewTest, AccessIsOrangeWhereSomethingIsToBeDone)
{
    m_pasteboard.setAccess(PasteboardAccess::denied);
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    showTab(1);
    EXPECT_EQ(text(u"clipboard-access"_s), u"Denied"_s);
    EXPECT_EQ(color(u"clipboard-access"_s), colors().attention);
    EXPECT_EQ(text(u"automatic-paste-access"_s), u"Required"_s);
    EXPECT_EQ(color(u"automatic-paste-access"_s), colors().attention);
    click(u"allow-automatic-paste"_s);
    EXPECT_THAT(m_openedURLs, SizeIs(1));
    m_keys.setAllowed(true);
    m_model->refreshAutomaticPasteAccess(false);
    run();
    EXPECT_EQ(text(u"automatic-paste-access"_s), u"Granted"_s);
    EXPECT_EQ(find(u"allow-automatic-paste"_s), nullptr);
}

TEST_F(SettingsPrivacyViewTest, ExcludedApplicationsAreEditedLineByLine)
{
    m_settings.setIgnoredBundleIDsText(u"org.one"_s);
    showTab(1);
    EXPECT_GE(item(u"ignored-bundle-ids"_s).height(), 120);
    EXPECT_EQ(text(u"ignored-bundle-ids-text"_s), u"org.one"_s);
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Return);
    driver().type(u"org.two"_s);
    run();
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one\norg.two"_s);
    m_settings.setIgnoredBundleIDsText(u"org.three"_s);
    run();
    EXPECT_EQ(text(u"ignored-bundle-ids-text"_s), u"org.three"_s) << "and follows the setting";
}

TEST_F(SettingsPrivacyViewTest, TheEditorReachesTheClipboardThroughOurPasteboardOnly)
{
    QGuiApplication::clipboard()->setText(u"the toolkit's"_s);
    QGuiApplication::clipboard()->setText(u"the toolkit's"_s, QClipboard::Selection);
    m_settings.setIgnoredBundleIDsText({});
    showTab(1);
    EXPECT_TRUE(QGuiApplication::clipboard()->signalsBlocked());
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    m_pasteboard.copyText("org.one\r\norg.two");
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one\norg.two"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Insert, Qt::ShiftModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one\norg.two"_s) << "in place of it all";
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), QString());
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(2));
    EXPECT_EQ(m_pasteboard.writes()[0].front().plainText, "org.one\norg.two");
    EXPECT_EQ(m_pasteboard.writes()[1].front().plainText, "org.one\norg.two");
    click(u"ignored-bundle-ids-text"_s, Qt::MiddleButton);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), QString()) << "the middle button does nothing";
}

TEST_F(SettingsPrivacyViewTest, CuttingKeepsWhatCannotBeCopied)
{
    m_settings.setIgnoredBundleIDsText(u"org.one"_s);
    showTab(1);
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    m_pasteboard.refuseWrites();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(m_settings.ignoredBundleIDsText(), u"org.one"_s);
}

TEST_F(SettingsPrivacyViewTest, ManyExcludedApplicationsScroll)
{
    QStringList lines;
    for (int i = 0; i < 40; ++i) {
        lines.append(u"org.example.application%1"_s.arg(i));
    }
    m_settings.setIgnoredBundleIDsText(lines.join(u'\n'));
    showTab(1);
    ASSERT_TRUE(tabTo(u"ignored-bundle-ids-text"_s));
    press(Qt::Key_End, Qt::ControlModifier);
    const QQuickItem& area = item(u"ignored-bundle-ids-text"_s);
    const QQuickItem& editor = item(u"ignored-bundle-ids"_s);
    const QRectF cursor = area.property("cursorRectangle").toRectF();
    const QPointF bottom = area.mapToItem(&editor, cursor.bottomLeft());
    EXPECT_LE(bottom.y(), editor.height()) << "the cursor stays in sight";
    EXPECT_GT(bottom.y(), 0);
}

TEST_F(SettingsPrivacyViewTest, TellsWhatIsStored)
{
    save("one");
    save("two");
    m_shown.reload();
    showTab(1);
    EXPECT_EQ(text(u"history-count"_s), u"2 items"_s);
    EXPECT_EQ(text(u"pinned-count"_s), u"0 items"_s);
    EXPECT_EQ(text(u"database-size"_s), m_shown.databaseSize());
}

TEST_F(SettingsPrivacyViewTest, CancellingTheQuestionClearsNothing)
{
    save("one");
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-everything"_s));
    press(Qt::Key_Space);
    ASSERT_TRUE(asks());
    EXPECT_EQ(text(u"alert-title"_s), u"Clear all clipboard history?"_s);
    click(u"alert-cancel"_s);
    EXPECT_FALSE(asks());
    EXPECT_EQ(focused(), u"clear-everything"_s) << "the keyboard is where it was";
    press(Qt::Key_Return);
    ASSERT_TRUE(asks());
    press(Qt::Key_Escape);
    EXPECT_FALSE(asks());
    EXPECT_TRUE(m_view->isShown()) << "Escape ended the question only";
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    EXPECT_FALSE(asks()) << "Return does not clear unless moved to";
    run();
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(SettingsPrivacyViewTest, ConfirmingClearsWhatWasAskedFor)
{
    const Clip pinned = save("pinned");
    save("other");
    m_model->togglePin(&pinned);
    run();
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-unpinned-history"_s));
    press(Qt::Key_Space);
    EXPECT_EQ(text(u"alert-title"_s), u"Clear unpinned clipboard history?"_s);
    EXPECT_EQ(text(u"alert-message"_s), u"Pinned items will be kept. This cannot be undone."_s);
    EXPECT_EQ(driver().text(u"alert-confirm"_s, "title"), u"Clear Unpinned History"_s);
    click(u"alert-confirm"_s);
    EXPECT_FALSE(asks());
    ASSERT_THAT(stored(), SizeIs(1));
    EXPECT_TRUE(stored().front().isPinned);
    click(u"clear-everything"_s);
    EXPECT_EQ(driver().text(u"alert-confirm"_s, "title"), u"Clear Everything"_s);
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(SettingsPrivacyViewTest, NothingElseCanBeUsedWhileItAsks)
{
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-everything"_s));
    press(Qt::Key_Space);
    for (const QString& expected :
         {u"alert-cancel"_s, u"alert-confirm"_s, u"alert-cancel"_s, u"alert-confirm"_s}) {
        EXPECT_EQ(focused(), expected);
        press(Qt::Key_Tab);
    }
    click(u"tab-about"_s);
    EXPECT_EQ(m_shown.selectedTab(), 1);
    EXPECT_TRUE(asks());
}

TEST_F(SettingsPrivacyViewTest, TheSystemClipboardIsClearedAtOnce)
{
    m_pasteboard.copyText("secret");
    showTab(1);
    ASSERT_TRUE(tabTo(u"clear-system-clipboard"_s));
    press(Qt::Key_Space);
    EXPECT_FALSE(asks());
    EXPECT_TRUE(m_pasteboard.isEmpty());
    EXPECT_TRUE(waitUntil([this] {
        return find(u"banner"_s) && text(u"banner-message"_s) == u"System clipboard cleared."_s;
    }));
}

} // namespace
} // namespace tessly::test
