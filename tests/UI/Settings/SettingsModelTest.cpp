#include "SettingsModel.h"

#include "AppModelFixture.h"
#include "QtPrinting.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

class SettingsModelTest : public AppModelFixture
{
protected:
    SettingsModelTest()
    {
        m_model->hotKeyConfigurationDidChange = [this] { ++m_hotKeyChanges; };
    }

    void saveMany(int count)
    {
        for (int i = 1; i <= count; ++i) {
            save("entry " + QByteArray::number(i));
        }
    }

    [[nodiscard]] QByteArrayList storedTexts()
    {
        QByteArrayList texts;
        for (const Clip& clip : stored()) {
            texts.append(clip.payload.held()->plainText().value_or("(no text)"));
        }
        return texts;
    }

    /// What the editor was given by a paste.
    [[nodiscard]] QString pastedText(const QByteArray& clipboard)
    {
        QSignalSpy pasted(&m_view, &SettingsModel::textPasted);
        m_pasteboard.copyText(clipboard);
        m_view.pasteText();
        run();
        EXPECT_LE(pasted.size(), 1);
        return pasted.isEmpty() ? QString() : pasted.front().front().toString();
    }

    int m_hotKeyChanges = 0;
    SettingsModel m_view{{*m_model, m_pasteboard, u"1.2.3"_s}};
};

// Tabs

TEST_F(SettingsModelTest, TheTabsStandInTheirOrder)
{
    QStringList tabs;
    for (const QVariant& tab : m_view.tabs()) {
        const auto value = tab.value<SettingsTab>();
        tabs.append(value.name + u'|' + value.title + u'|' + value.symbol);
    }
    EXPECT_EQ(
        tabs, (QStringList{
                  u"general|General|gearshape"_s, u"privacy|Privacy|hand.raised"_s,
                  u"shortcuts|Shortcuts|keyboard"_s, u"about|About|info.circle"_s}));
}

TEST_F(SettingsModelTest, BeginsWithTheGeneralTab)
{
    EXPECT_EQ(m_view.selectedTab(), 0);
}

TEST_F(SettingsModelTest, SelectsOnlyTabsThatExist)
{
    const QSignalSpy changed(&m_view, &SettingsModel::selectedTabChanged);
    m_view.setSelectedTab(2);
    EXPECT_EQ(m_view.selectedTab(), 2);
    m_view.setSelectedTab(2);
    EXPECT_EQ(changed.size(), 1) << "that is no change";
    m_view.setSelectedTab(4);
    EXPECT_EQ(m_view.selectedTab(), 3);
    m_view.setSelectedTab(-1);
    EXPECT_EQ(m_view.selectedTab(), 0);
}

// Launch at login

TEST_F(SettingsModelTest, LaunchAtLoginReadsAndSetsTheLoginItem)
{
    const QSignalSpy changed(&m_view, &SettingsModel::launchesAtLoginChanged);
    EXPECT_FALSE(m_view.launchesAtLogin());
    m_view.setLaunchesAtLogin(true);
    EXPECT_EQ(m_loginItem.calls(), QStringList{u"register"_s});
    EXPECT_TRUE(m_view.launchesAtLogin());
    EXPECT_EQ(changed.size(), 1);
    m_view.setLaunchesAtLogin(false);
    EXPECT_FALSE(m_view.launchesAtLogin());
    EXPECT_EQ(message(), QString());
}

TEST_F(SettingsModelTest, ALoginItemThatCannotBeRegisteredIsToldAndShownAsItIs)
{
    m_loginItem.failRegistering();
    const QSignalSpy changed(&m_view, &SettingsModel::launchesAtLoginChanged);
    m_view.setLaunchesAtLogin(true);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::error);
    EXPECT_FALSE(message().isEmpty());
    EXPECT_EQ(changed.size(), 1) << "the switch has to look again";
    EXPECT_FALSE(m_view.launchesAtLogin());
}

TEST_F(SettingsModelTest, ALoginItemThatCannotBeRemovedStaysOn)
{
    m_view.setLaunchesAtLogin(true);
    m_loginItem.failUnregistering();
    m_view.setLaunchesAtLogin(false);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::error);
    EXPECT_TRUE(m_view.launchesAtLogin());
}

TEST_F(SettingsModelTest, ACopyThatIsNotInstalledSaysWhyItCannotLaunchAtLogin)
{
    m_bundle.path = u"/home/jane/tessly"_s;
    m_view.setLaunchesAtLogin(true);
    const LaunchAtLoginService::RegistrationError error(
        LaunchAtLoginService::RegistrationError::Case::requiresInstalledApp);
    EXPECT_EQ(message(), error.description());
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::error);
    EXPECT_THAT(m_loginItem.calls(), IsEmpty());
}

TEST_F(SettingsModelTest, WhatOthersDoToTheLoginItemShowsAfterAReload)
{
    const QSignalSpy changed(&m_view, &SettingsModel::launchesAtLoginChanged);
    m_loginItem.setStatus(LoginItem::Status::enabled);
    m_view.reload();
    EXPECT_EQ(changed.size(), 1);
    EXPECT_TRUE(m_view.launchesAtLogin());
}

// Settings that are on or off

TEST_F(SettingsModelTest, SwitchesSetTheirSettings)
{
    struct Switch
    {
        bool (AppSettings::*read)() const;
        bool (SettingsModel::*shown)() const;
        void (SettingsModel::*set)(bool);
        void (SettingsModel::*changed)();
    };
    for (const Switch& one : {
             Switch{
                 &AppSettings::captureImages, &SettingsModel::captureImages,
                 &SettingsModel::setCaptureImages, &SettingsModel::captureImagesChanged},
             Switch{
                 &AppSettings::captureFiles, &SettingsModel::captureFiles,
                 &SettingsModel::setCaptureFiles, &SettingsModel::captureFilesChanged},
             Switch{
                 &AppSettings::moveUsedItemsToTop, &SettingsModel::moveUsedItemsToTop,
                 &SettingsModel::setMoveUsedItemsToTop, &SettingsModel::moveUsedItemsToTopChanged},
             Switch{
                 &AppSettings::directPasteShortcuts, &SettingsModel::directPasteShortcuts,
                 &SettingsModel::setDirectPasteShortcuts,
                 &SettingsModel::directPasteShortcutsChanged},
         }) {
        const QSignalSpy changed(&m_view, one.changed);
        for (const bool value : {false, true, false}) {
            (m_view.*one.set)(value);
            EXPECT_EQ((m_settings.*one.read)(), value);
            EXPECT_EQ((m_view.*one.shown)(), value);
        }
        EXPECT_GE(changed.size(), 2);
    }
}

TEST_F(SettingsModelTest, EveryChangeOfTheDirectShortcutsConfiguresTheHotKeys)
{
    const bool before = m_settings.directPasteShortcuts();
    m_view.setDirectPasteShortcuts(!before);
    EXPECT_EQ(m_hotKeyChanges, 1);
    m_view.setDirectPasteShortcuts(before);
    EXPECT_EQ(m_hotKeyChanges, 2);
    m_view.setDirectPasteShortcuts(before);
    EXPECT_EQ(m_hotKeyChanges, 2) << "that was no change";
}

// Steppers

TEST_F(SettingsModelTest, TheHistoryIsKeptWithinItsBounds)
{
    m_view.setMaxHistory(60);
    EXPECT_EQ(m_settings.maxHistory(), 60);
    EXPECT_EQ(m_view.maxHistoryLabel(), u"Keep up to 60 unpinned items"_s);
    m_view.setMaxHistory(9);
    EXPECT_EQ(m_settings.maxHistory(), 10);
    EXPECT_EQ(m_view.maxHistoryLabel(), u"Keep up to 10 unpinned items"_s);
    m_view.setMaxHistory(10'001);
    EXPECT_EQ(m_settings.maxHistory(), 10'000);
    EXPECT_EQ(m_view.maxHistoryLabel(), u"Keep up to 10000 unpinned items"_s);
    EXPECT_EQ(SettingsModel::historyStep, 50);
}

TEST_F(SettingsModelTest, ASmallerHistoryIsTrimmedAtOnce)
{
    saveMany(12);
    m_view.setMaxHistory(10);
    run();
    EXPECT_THAT(stored(), SizeIs(10));
}

TEST_F(SettingsModelTest, NothingIsTrimmedWithoutAChange)
{
    m_view.setMaxHistory(10);
    run();
    // Behind the model's back: only a trim would take these.
    saveMany(12);
    m_view.setMaxHistory(10);
    m_view.setMaxHistory(3);
    run();
    EXPECT_THAT(stored(), SizeIs(12));
}

TEST_F(SettingsModelTest, TheItemSizeIsKeptWithinItsBounds)
{
    m_view.setMaxItemSizeMB(2);
    EXPECT_EQ(m_settings.maxItemSizeMB(), 2);
    EXPECT_EQ(m_view.maxItemSizeLabel(), u"Maximum item size: 2 MB"_s);
    m_view.setMaxItemSizeMB(0);
    EXPECT_EQ(m_settings.maxItemSizeMB(), 1);
    m_view.setMaxItemSizeMB(251);
    EXPECT_EQ(m_settings.maxItemSizeMB(), 250);
    EXPECT_EQ(m_view.maxItemSizeLabel(), u"Maximum item size: 250 MB"_s);
}

// Access

TEST_F(SettingsModelTest, TellsTheAccessToTheClipboard)
{
    EXPECT_EQ(m_view.clipboardAccessDescription(), u"Available"_s);
    EXPECT_TRUE(m_view.clipboardAccessIsGood()) << "green";
    m_pasteboard.setAccess(PasteboardAccess::askEveryTime);
    EXPECT_EQ(m_view.clipboardAccessDescription(), u"Ask every time"_s);
    EXPECT_FALSE(m_view.clipboardAccessIsGood());
    m_pasteboard.setAccess(PasteboardAccess::denied);
    EXPECT_EQ(m_view.clipboardAccessDescription(), u"Denied"_s);
    EXPECT_FALSE(m_view.clipboardAccessIsGood());
}

TEST_F(SettingsModelTest, AutomaticPasteIsGrantedOrAskedFor)
{
    EXPECT_TRUE(m_view.automaticPasteAccessGranted());
    EXPECT_EQ(m_view.automaticPasteAccessDescription(), u"Granted"_s);
    const QSignalSpy changed(&m_view, &SettingsModel::automaticPasteAccessGrantedChanged);
    m_keys.setAllowed(false);
    m_model->refreshAutomaticPasteAccess(false);
    EXPECT_EQ(changed.size(), 1);
    EXPECT_FALSE(m_view.automaticPasteAccessGranted());
    EXPECT_EQ(m_view.automaticPasteAccessDescription(), u"Required"_s);
    m_view.allowAutomaticPaste();
    EXPECT_THAT(m_openedURLs, SizeIs(1)) << "the settings of the desktop";
}

// Excluded applications

TEST_F(SettingsModelTest, ExcludedApplicationsAreTheSettings)
{
    const QSignalSpy changed(&m_view, &SettingsModel::ignoredBundleIDsTextChanged);
    m_view.setIgnoredBundleIDsText(u"org.one\n Org.Two "_s);
    EXPECT_EQ(m_view.ignoredBundleIDsText(), u"org.one\n Org.Two "_s);
    EXPECT_EQ(m_settings.ignoredBundleIDs(), (QSet<QString>{u"org.one"_s, u"org.two"_s}));
    EXPECT_EQ(changed.size(), 1);
}

TEST_F(SettingsModelTest, PastesTextOfSeveralLines)
{
    EXPECT_EQ(pastedText("org.one\r\norg.two\rorg.three\n"), u"org.one\norg.two\norg.three\n"_s);
    EXPECT_EQ(pastedText(QByteArray("org.\x1B[31mone\x07")), u"org.[31mone"_s);
    EXPECT_EQ(pastedText("\x07"), QString());
}

TEST_F(SettingsModelTest, PastesNothingThatIsTooLong)
{
    EXPECT_EQ(pastedText(QByteArray(SettingsModel::pasteByteLimit + 1, 'x')), QString());
}

TEST_F(SettingsModelTest, AnOwnerThatHangsPastesNothing)
{
    QSignalSpy pasted(&m_view, &SettingsModel::textPasted);
    m_pasteboard.copy({.plainText = "late", .hanging = {Flavour::plainText}});
    m_view.pasteText();
    run();
    EXPECT_EQ(pasted.size(), 0);
}

TEST_F(SettingsModelTest, APasteThatIsAnsweredAfterTheModelIsGoneDoesNothing)
{
    auto view = std::make_unique<SettingsModel>(
        SettingsModel::Dependencies{*m_model, m_pasteboard, QString()});
    m_pasteboard.copyText("late");
    m_pasteboard.gate().hold();
    view->pasteText();
    EXPECT_EQ(m_pasteboard.gate().waiting(), 1U);
    view.reset();
    m_pasteboard.gate().releaseWaiting();
    run();
    EXPECT_EQ(m_pasteboard.gate().waiting(), 0U);
    EXPECT_FALSE(m_model->banner().has_value());
}

TEST_F(SettingsModelTest, CopiesThroughThePasteboard)
{
    EXPECT_TRUE(m_view.copyText(u"org.one"_s));
    ASSERT_THAT(m_pasteboard.writes(), SizeIs(1));
    EXPECT_EQ(m_pasteboard.writes().front().front().plainText, "org.one");
    EXPECT_FALSE(m_view.copyText(QString())) << "there is nothing to copy";
    m_pasteboard.refuseWrites();
    EXPECT_FALSE(m_view.copyText(u"org.one"_s));
    EXPECT_THAT(m_pasteboard.writes(), SizeIs(1));
}

// Stored data

TEST_F(SettingsModelTest, TellsWhatIsStoredOnceItIsReloaded)
{
    const Clip pinned = save("pinned");
    saveMany(2);
    m_model->togglePin(&pinned);
    run();
    const QSignalSpy changed(&m_view, &SettingsModel::statisticsChanged);
    m_view.reload();
    run();
    EXPECT_EQ(m_view.historyCount(), u"3 items"_s);
    EXPECT_EQ(m_view.pinnedCount(), u"1 items"_s);
    EXPECT_TRUE(m_view.databaseSize().endsWith(u"KB"_s)) << m_view.databaseSize().toStdString();
    save("behind its back");
    m_view.reload();
    run();
    EXPECT_EQ(m_view.historyCount(), u"4 items"_s);
    EXPECT_GE(changed.size(), 1);
}

TEST_F(SettingsModelTest, KnowsOfNothingAtFirst)
{
    EXPECT_EQ(m_view.historyCount(), u"0 items"_s);
    EXPECT_EQ(m_view.pinnedCount(), u"0 items"_s);
    EXPECT_EQ(m_view.databaseSize(), u"Zero KB"_s);
}

// Clearing

TEST_F(SettingsModelTest, ClearingAsksFirst)
{
    const QSignalSpy changed(&m_view, &SettingsModel::pendingClearScopeChanged);
    EXPECT_FALSE(m_view.isClearingPending());
    m_view.clearUnpinnedHistory();
    EXPECT_EQ(m_view.pendingClearScope(), SettingsModel::ClearHistoryScope::unpinned);
    EXPECT_EQ(m_view.clearingTitle(), u"Clear unpinned clipboard history?"_s);
    EXPECT_EQ(m_view.clearingMessage(), u"Pinned items will be kept. This cannot be undone."_s);
    EXPECT_EQ(m_view.clearingButton(), u"Clear Unpinned History"_s);
    m_view.cancelClearing();
    EXPECT_FALSE(m_view.isClearingPending());
    m_view.clearEverything();
    EXPECT_EQ(m_view.pendingClearScope(), SettingsModel::ClearHistoryScope::everything);
    EXPECT_EQ(m_view.clearingTitle(), u"Clear all clipboard history?"_s);
    EXPECT_EQ(
        m_view.clearingMessage(),
        u"Pinned and unpinned items will be removed. This cannot be undone."_s);
    EXPECT_EQ(m_view.clearingButton(), u"Clear Everything"_s);
    EXPECT_EQ(changed.size(), 3);
}

TEST_F(SettingsModelTest, CancellingClearsNothing)
{
    saveMany(3);
    m_view.clearEverything();
    m_view.cancelClearing();
    m_view.confirmClearing();
    run();
    EXPECT_THAT(stored(), SizeIs(3)) << "what was cancelled can no longer be confirmed";
}

TEST_F(SettingsModelTest, ClearingUnpinnedKeepsWhatIsPinned)
{
    const Clip pinned = save("pinned");
    saveMany(2);
    m_model->togglePin(&pinned);
    run();
    m_view.clearUnpinnedHistory();
    run();
    EXPECT_THAT(stored(), SizeIs(3)) << "it waits for the confirmation";
    m_view.confirmClearing();
    EXPECT_FALSE(m_view.isClearingPending());
    run();
    EXPECT_EQ(storedTexts(), QByteArrayList{"pinned"});
    EXPECT_EQ(message(), u"Clipboard history cleared."_s);
}

TEST_F(SettingsModelTest, ClearingEverythingClearsEverything)
{
    const Clip pinned = save("pinned");
    saveMany(2);
    m_model->togglePin(&pinned);
    run();
    m_view.clearEverything();
    m_view.confirmClearing();
    EXPECT_FALSE(m_view.isClearingPending());
    run();
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(SettingsModelTest, TheSystemClipboardIsClearedAtOnce)
{
    saveMany(1);
    m_pasteboard.copyText("secret");
    m_view.clearSystemClipboard();
    EXPECT_TRUE(m_pasteboard.isEmpty());
    EXPECT_EQ(message(), u"System clipboard cleared."_s);
    EXPECT_EQ(bannerKind(), AppModel::BannerKind::information);
    run();
    EXPECT_THAT(stored(), SizeIs(1)) << "the history stays";
}

// Shortcuts and version

TEST_F(SettingsModelTest, TheShortcutsStandInTheirSections)
{
    QStringList rows;
    for (const QVariant& variant : m_view.shortcutSections()) {
        const auto section = variant.value<ShortcutSection>();
        for (const QVariant& row : section.rows) {
            const auto shortcut = row.value<ShortcutSettingRow>();
            rows.append(
                section.title + u'|' + shortcut.title + u'|' + shortcut.keys.join(u' ') + u'|' +
                shortcut.keyNames);
        }
    }
    EXPECT_EQ(
        rows, (QStringList{
                  u"Global direct paste|Positions 1–9|⌥ ⇧ 1…9|Alt+Shift+1…9"_s,
                  u"Global direct paste|Position 10|⌥ ⇧ 0|Alt+Shift+0"_s,
                  u"Inside Quick Paste|Paste selected|↩|Return"_s,
                  u"Inside Quick Paste|Paste plain text|⇧ ↩|Shift+Return"_s,
                  u"Inside Quick Paste|Pin or unpin|⌘ P|Ctrl+P"_s,
                  u"Inside Quick Paste|Delete|⌘ ⌫|Ctrl+Backspace"_s,
              }));
    EXPECT_EQ(m_view.keyboardLine(), u"On this keyboard ⌘ is Ctrl and ⌥ is Alt."_s);
}

TEST_F(SettingsModelTest, TellsTheVersionIfThereIsOne)
{
    EXPECT_EQ(m_view.versionText(), u"Version 1.2.3"_s);
    const SettingsModel without({*m_model, m_pasteboard, QString()});
    EXPECT_EQ(without.versionText(), u"Version "_s);
}

// The banner

TEST_F(SettingsModelTest, ShowsTheModelsBanner)
{
    const QSignalSpy changed(&m_view, &SettingsModel::bannerChanged);
    EXPECT_FALSE(m_view.hasBanner());
    m_model->showBanner(u"News."_s, AppModel::BannerKind::warning);
    EXPECT_TRUE(m_view.hasBanner());
    EXPECT_EQ(m_view.bannerMessage(), u"News."_s);
    EXPECT_EQ(m_view.bannerKind(), u"warning"_s);
    m_view.dismissBanner();
    EXPECT_FALSE(m_model->banner().has_value());
    EXPECT_GE(changed.size(), 2);
}

} // namespace
} // namespace tessly::test
