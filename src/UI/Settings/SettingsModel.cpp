#include "SettingsModel.h"

#include "BannerPresentation.h"
#include "Presentation.h"

#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

QVariant tab(const QString& name, const QString& title, const QString& symbol)
{
    return QVariant::fromValue(SettingsTab{name, title, symbol});
}

QVariant shortcut(const QString& title, const QStringList& keys)
{
    return QVariant::fromValue(ShortcutSettingRow{title, keys, keyCapNames(keys)});
}

/// A text of several lines as an editor takes it: lines end in one way, and there are no control
/// characters.
QString editableText(const QByteArray& text)
{
    QString lines = QString::fromUtf8(text);
    lines.replace(u"\r\n"_s, u"\n"_s);
    lines.replace(u'\r', u'\n');
    lines.removeIf([](QChar character) {
        return character != u'\n' && character.category() == QChar::Other_Control;
    });
    return lines;
}

} // namespace

SettingsModel::SettingsModel(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_dependencies(std::move(dependencies))
{
    const AppModel& model = m_dependencies.model;
    const AppSettings& settings = model.settings();
    connect(
        &settings, &AppSettings::captureImagesChanged, this, &SettingsModel::captureImagesChanged);
    connect(
        &settings, &AppSettings::captureFilesChanged, this, &SettingsModel::captureFilesChanged);
    connect(&settings, &AppSettings::maxHistoryChanged, this, &SettingsModel::maxHistoryChanged);
    connect(
        &settings, &AppSettings::maxItemSizeMBChanged, this, &SettingsModel::maxItemSizeMBChanged);
    connect(
        &settings, &AppSettings::moveUsedItemsToTopChanged, this,
        &SettingsModel::moveUsedItemsToTopChanged);
    connect(
        &settings, &AppSettings::directPasteShortcutsChanged, this,
        &SettingsModel::directPasteShortcutsChanged);
    connect(
        &settings, &AppSettings::ignoredBundleIDsTextChanged, this,
        &SettingsModel::ignoredBundleIDsTextChanged);
    connect(
        &model, &AppModel::automaticPasteAccessGrantedChanged, this,
        &SettingsModel::automaticPasteAccessGrantedChanged);
    connect(&model, &AppModel::statisticsChanged, this, &SettingsModel::statisticsChanged);
    connect(&model, &AppModel::bannerChanged, this, &SettingsModel::bannerChanged);
}

SettingsModel::~SettingsModel() = default;

void SettingsModel::reload()
{
    m_dependencies.model.reload(AppModel::Debounce::no);
    Q_EMIT launchesAtLoginChanged();
    Q_EMIT reloaded();
}

QVariantList SettingsModel::tabs() const
{
    return {
        tab(u"general"_s, u"General"_s, u"gearshape"_s),
        tab(u"privacy"_s, u"Privacy"_s, u"hand.raised"_s),
        tab(u"shortcuts"_s, u"Shortcuts"_s, u"keyboard"_s),
        tab(u"about"_s, u"About"_s, u"info.circle"_s),
    };
}

void SettingsModel::setSelectedTab(int tab)
{
    tab = std::clamp(tab, 0, static_cast<int>(tabs().size()) - 1);
    if (tab != m_selectedTab) {
        m_selectedTab = tab;
        Q_EMIT selectedTabChanged();
    }
}

// General

bool SettingsModel::launchesAtLogin() const
{
    return m_dependencies.model.launchAtLoginService().isEnabled();
}

void SettingsModel::setLaunchesAtLogin(bool launches)
{
    try {
        m_dependencies.model.launchAtLoginService().setEnabled(launches);
    } catch (const std::exception& error) {
        m_dependencies.model.showBanner(
            QString::fromUtf8(error.what()), AppModel::BannerKind::error);
    }
    Q_EMIT launchesAtLoginChanged();
}

bool SettingsModel::captureImages() const
{
    return m_dependencies.model.settings().captureImages();
}

void SettingsModel::setCaptureImages(bool captures)
{
    m_dependencies.model.settings().setCaptureImages(captures);
}

bool SettingsModel::captureFiles() const
{
    return m_dependencies.model.settings().captureFiles();
}

void SettingsModel::setCaptureFiles(bool captures)
{
    m_dependencies.model.settings().setCaptureFiles(captures);
}

int SettingsModel::maxHistory() const
{
    return static_cast<int>(m_dependencies.model.settings().maxHistory());
}

void SettingsModel::setMaxHistory(int items)
{
    items = std::clamp(items, minHistory, topHistory);
    if (items != maxHistory()) {
        m_dependencies.model.settings().setMaxHistory(items);
        m_dependencies.model.trimHistoryToCurrentLimit();
    }
}

QString SettingsModel::maxHistoryLabel() const
{
    return u"Keep up to %1 unpinned items"_s.arg(maxHistory());
}

int SettingsModel::maxItemSizeMB() const
{
    return static_cast<int>(m_dependencies.model.settings().maxItemSizeMB());
}

void SettingsModel::setMaxItemSizeMB(int megabytes)
{
    m_dependencies.model.settings().setMaxItemSizeMB(
        std::clamp(megabytes, minItemSizeMB, topItemSizeMB));
}

QString SettingsModel::maxItemSizeLabel() const
{
    return u"Maximum item size: %1 MB"_s.arg(maxItemSizeMB());
}

bool SettingsModel::moveUsedItemsToTop() const
{
    return m_dependencies.model.settings().moveUsedItemsToTop();
}

void SettingsModel::setMoveUsedItemsToTop(bool moves)
{
    m_dependencies.model.settings().setMoveUsedItemsToTop(moves);
}

bool SettingsModel::directPasteShortcuts() const
{
    return m_dependencies.model.settings().directPasteShortcuts();
}

void SettingsModel::setDirectPasteShortcuts(bool enabled)
{
    if (enabled != directPasteShortcuts()) {
        m_dependencies.model.settings().setDirectPasteShortcuts(enabled);
        m_dependencies.model.directPasteShortcutsDidChange();
    }
}

// Privacy

QString SettingsModel::clipboardAccessDescription() const
{
    switch (m_dependencies.pasteboard.access()) {
    case PasteboardAccess::available:
        return u"Available"_s;
    case PasteboardAccess::askEveryTime:
        return u"Ask every time"_s;
    case PasteboardAccess::denied:
        return u"Denied"_s;
    }
    Q_UNREACHABLE();
}

bool SettingsModel::clipboardAccessIsGood() const
{
    return m_dependencies.pasteboard.access() == PasteboardAccess::available;
}

bool SettingsModel::automaticPasteAccessGranted() const
{
    return m_dependencies.model.automaticPasteAccessGranted();
}

QString SettingsModel::automaticPasteAccessDescription() const
{
    return automaticPasteAccessGranted() ? u"Granted"_s : u"Required"_s;
}

void SettingsModel::allowAutomaticPaste()
{
    m_dependencies.model.openAutomaticPasteSettings();
}

QString SettingsModel::ignoredBundleIDsText() const
{
    return m_dependencies.model.settings().ignoredBundleIDsText();
}

void SettingsModel::setIgnoredBundleIDsText(const QString& text)
{
    m_dependencies.model.settings().setIgnoredBundleIDsText(text);
}

void SettingsModel::pasteText()
{
    readText(m_dependencies.pasteboard.changeCount());
}

bool SettingsModel::copyText(const QString& text)
{
    PasteboardItem item;
    item.plainText = text.toUtf8();
    return !text.isEmpty() && m_dependencies.pasteboard.write({std::move(item)});
}

QCoro::Task<> SettingsModel::readText(qint64 changeCount)
{
    const QPointer<SettingsModel> self(this);
    const auto text =
        co_await m_dependencies.pasteboard.read(changeCount, Flavour::plainText, pasteByteLimit);
    if (!self || text.status != ReadStatus::read) {
        co_return;
    }
    if (const QString lines = editableText(text.value); !lines.isEmpty()) {
        Q_EMIT textPasted(lines);
    }
}

QString SettingsModel::historyCount() const
{
    return itemCount(m_dependencies.model.statistics().totalItems);
}

QString SettingsModel::pinnedCount() const
{
    return itemCount(m_dependencies.model.statistics().pinnedItems);
}

QString SettingsModel::databaseSize() const
{
    return byteCount(m_dependencies.model.statistics().databaseBytes);
}

QString SettingsModel::clearingTitle() const
{
    return m_pendingClearScope == ClearHistoryScope::everything
               ? u"Clear all clipboard history?"_s
               : u"Clear unpinned clipboard history?"_s;
}

QString SettingsModel::clearingMessage() const
{
    return m_pendingClearScope == ClearHistoryScope::everything
               ? u"Pinned and unpinned items will be removed. This cannot be undone."_s
               : u"Pinned items will be kept. This cannot be undone."_s;
}

QString SettingsModel::clearingButton() const
{
    return m_pendingClearScope == ClearHistoryScope::everything ? u"Clear Everything"_s
                                                                : u"Clear Unpinned History"_s;
}

void SettingsModel::clearUnpinnedHistory()
{
    setPendingClearScope(ClearHistoryScope::unpinned);
}

void SettingsModel::clearEverything()
{
    setPendingClearScope(ClearHistoryScope::everything);
}

void SettingsModel::confirmClearing()
{
    if (m_pendingClearScope) {
        m_dependencies.model.clearHistory(m_pendingClearScope == ClearHistoryScope::everything);
        setPendingClearScope(std::nullopt);
    }
}

void SettingsModel::cancelClearing()
{
    setPendingClearScope(std::nullopt);
}

void SettingsModel::clearSystemClipboard()
{
    m_dependencies.pasteboard.clear();
    m_dependencies.model.showBanner(
        u"System clipboard cleared."_s, AppModel::BannerKind::information);
}

void SettingsModel::setPendingClearScope(std::optional<ClearHistoryScope> scope)
{
    if (scope != m_pendingClearScope) {
        m_pendingClearScope = scope;
        Q_EMIT pendingClearScopeChanged();
    }
}

// Shortcuts

QVariantList SettingsModel::shortcutSections() const
{
    return {
        QVariant::fromValue(ShortcutSection{
            u"Global direct paste"_s,
            {
                shortcut(u"Positions 1–9"_s, {u"⌥"_s, u"⇧"_s, u"1…9"_s}),
                shortcut(u"Position 10"_s, {u"⌥"_s, u"⇧"_s, u"0"_s}),
            }}),
        QVariant::fromValue(ShortcutSection{
            u"Inside Quick Paste"_s,
            {
                shortcut(u"Paste selected"_s, {u"↩"_s}),
                shortcut(u"Paste plain text"_s, {u"⇧"_s, u"↩"_s}),
                shortcut(u"Pin or unpin"_s, {u"⌘"_s, u"P"_s}),
                shortcut(u"Delete"_s, {u"⌘"_s, u"⌫"_s}),
            }}),
    };
}

QString SettingsModel::keyboardLine() const
{
    return u"On this keyboard ⌘ is Ctrl and ⌥ is Alt."_s;
}

// About

QString SettingsModel::versionText() const
{
    return u"Version "_s + m_dependencies.version;
}

// The banner

bool SettingsModel::hasBanner() const
{
    return m_dependencies.model.banner().has_value();
}

QString SettingsModel::bannerMessage() const
{
    const auto& banner = m_dependencies.model.banner();
    return banner ? banner->message : QString();
}

QString SettingsModel::bannerKind() const
{
    const auto& banner = m_dependencies.model.banner();
    return bannerKindName(banner ? banner->kind : AppModel::BannerKind::information);
}

void SettingsModel::dismissBanner()
{
    m_dependencies.model.dismissBanner();
}

} // namespace tessly
