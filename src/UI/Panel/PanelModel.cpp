#include "PanelModel.h"

#include "BannerPresentation.h"
#include "Presentation.h"

#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

// How often the ages of the rows are told anew while the panel is up.
constexpr auto ageInterval = 30s;

QVariant filter(const QString& kind, const QString& title, const QString& symbol)
{
    return QVariant::fromValue(PanelFilter{kind, title, symbol});
}

QVariant hint(const QStringList& keys, const QString& title)
{
    return QVariant::fromValue(PanelHint{keys, keyCapNames(keys), title});
}

/// The beginning of a text, of no more UTF-16 units than that; no pair of them is split.
QString beginning(const QString& text, qsizetype length)
{
    if (text.size() <= length) {
        return text;
    }
    return text.first(text.at(length).isLowSurrogate() ? length - 1 : length);
}

/// The first line that has something on it, no longer than the search field takes.
QString firstLine(const QByteArray& text)
{
    QString line = QString::fromUtf8(text).trimmed();
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char16_t code = line.at(i).unicode();
        if (code == u'\n' || code == u'\r' || code == u'\v' || code == u'\f' || code == 0x85 ||
            code == QChar::LineSeparator || code == QChar::ParagraphSeparator) {
            line.truncate(i);
            break;
        }
    }
    return displayLine(beginning(line, PanelModel::pasteLength));
}

} // namespace

PanelModel::PanelModel(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_dependencies(dependencies)
{
    AppModel& model = m_dependencies.model;
    connect(&model, &AppModel::clipsChanged, this, &PanelModel::updateClips);
    connect(&model, &AppModel::selectedIDChanged, this, &PanelModel::updateSelection);
    connect(&model, &AppModel::queryChanged, this, &PanelModel::queryChanged);
    connect(&model, &AppModel::selectedKindChanged, this, &PanelModel::selectedKindChanged);
    connect(&model, &AppModel::queryChanged, this, &PanelModel::updateShortcuts);
    connect(&model, &AppModel::selectedKindChanged, this, &PanelModel::updateShortcuts);
    connect(&model, &AppModel::listed, this, &PanelModel::updateShortcuts);
    connect(&model, &AppModel::isPanelPresentedChanged, this, &PanelModel::updatePresentation);
    connect(&model, &AppModel::bannerChanged, this, &PanelModel::bannerChanged);
    connect(&model, &AppModel::statisticsChanged, this, &PanelModel::itemCountChanged);
    connect(
        &model.clipboardMonitor(), &ClipboardMonitor::isPausedChanged, this,
        &PanelModel::isPausedChanged);
    connect(
        &model.settings(), &AppSettings::directPasteShortcutsChanged, this,
        &PanelModel::updateShortcuts);
    updateShortcuts();
    updateClips();
    updatePresentation();
}

PanelModel::~PanelModel() = default;

QAbstractItemModel* PanelModel::clips()
{
    return &m_clips;
}

QString PanelModel::query() const
{
    return m_dependencies.model.query();
}

void PanelModel::setQuery(const QString& query)
{
    m_dependencies.model.setQuery(beginning(query, longestQuery));
    m_dependencies.model.reload(AppModel::Debounce::yes);
}

QVariantList PanelModel::filters() const
{
    QVariantList filters{filter(QString(), u"All"_s, u"square.stack.3d.up"_s)};
    for (const ClipKind kind : allClipKinds) {
        filters.append(filter(rawValue(kind), kindTitle(kind), kindSymbol(kind)));
    }
    return filters;
}

QVariantList PanelModel::hints() const
{
    return {
        hint({u"↩"_s}, u"paste"_s),
        hint({u"⇧"_s, u"↩"_s}, u"plain text"_s),
        hint({u"⌘"_s, u"P"_s}, u"pin"_s),
    };
}

QString PanelModel::selectedKind() const
{
    const auto kind = m_dependencies.model.selectedKind();
    return kind ? rawValue(*kind) : QString();
}

bool PanelModel::isPresented() const
{
    return m_dependencies.model.isPanelPresented();
}

bool PanelModel::isPaused() const
{
    return m_dependencies.model.clipboardMonitor().isPaused();
}

bool PanelModel::hasBanner() const
{
    return m_dependencies.model.banner().has_value();
}

QString PanelModel::bannerMessage() const
{
    const auto& banner = m_dependencies.model.banner();
    return banner ? banner->message : QString();
}

QString PanelModel::bannerKind() const
{
    const auto& banner = m_dependencies.model.banner();
    return bannerKindName(banner ? banner->kind : AppModel::BannerKind::information);
}

QString PanelModel::itemCount() const
{
    return tessly::itemCount(m_dependencies.model.statistics().totalItems);
}

void PanelModel::chooseKind(const QString& rawValue)
{
    if (const auto kind = clipKind(rawValue); kind != m_dependencies.model.selectedKind()) {
        m_dependencies.model.setSelectedKind(kind);
    }
    m_dependencies.model.reload(AppModel::Debounce::no);
}

void PanelModel::moveSelection(int rows)
{
    const int last = m_clips.rowCount() - 1;
    if (const Clip* const clip =
            m_clips.clip(std::clamp(qMax(m_selectedRow, 0) + rows, 0, qMax(last, 0)));
        clip != nullptr) {
        m_dependencies.model.setSelectedID(clip->id);
    }
}

void PanelModel::selectClip(const QString& clipID)
{
    select(clipID);
}

void PanelModel::activateClip(const QString& clipID)
{
    AppModel& model = m_dependencies.model;
    if (!select(clipID)) {
        return;
    }
    if (const Clip* const clip = model.selectedClip(); clip != nullptr) {
        model.paste(*clip, AppModel::PasteStyle::original, model.currentTargetApplication());
    }
}

void PanelModel::copyClip(const QString& clipID, bool plainTextOnly)
{
    if (select(clipID)) {
        m_dependencies.model.copySelected(
            plainTextOnly ? AppModel::PasteStyle::plainTextOnly : AppModel::PasteStyle::original);
    }
}

void PanelModel::togglePinOfClip(const QString& clipID)
{
    if (const Clip* const clip = find(clipID); clip != nullptr) {
        m_dependencies.model.togglePin(clip);
    }
}

void PanelModel::deleteClip(const QString& clipID)
{
    if (select(clipID)) {
        m_dependencies.model.deleteSelected();
    }
}

void PanelModel::togglePaused()
{
    ClipboardMonitor& monitor = m_dependencies.model.clipboardMonitor();
    monitor.togglePaused();
    m_dependencies.model.showBanner(
        monitor.isPaused() ? u"Clipboard recording paused."_s : u"Clipboard recording resumed."_s,
        AppModel::BannerKind::information);
}

void PanelModel::dismissBanner()
{
    m_dependencies.model.dismissBanner();
}

void PanelModel::openSettings()
{
    if (m_dependencies.model.closePanel) {
        m_dependencies.model.closePanel();
    }
    Q_EMIT settingsRequested();
}

void PanelModel::pasteIntoQuery()
{
    readQueryText(m_dependencies.pasteboard.changeCount());
}

bool PanelModel::copyQueryText(const QString& text)
{
    PasteboardItem item;
    item.plainText = text.toUtf8();
    return !text.isEmpty() && m_dependencies.pasteboard.write({std::move(item)});
}

void PanelModel::updateClips()
{
    m_clips.setClips(m_dependencies.model.clips(), m_dependencies.clock.now());
    if (const bool isEmpty = m_clips.rowCount() == 0; isEmpty != m_isEmpty) {
        m_isEmpty = isEmpty;
        Q_EMIT isEmptyChanged();
    }
    updateSelectedRow();
}

void PanelModel::updateSelectedRow()
{
    const auto id = m_dependencies.model.selectedID();
    if (const int row = id ? m_clips.rowOf(*id) : -1; row != m_selectedRow) {
        m_selectedRow = row;
        Q_EMIT selectedRowChanged();
    }
}

void PanelModel::updateSelection()
{
    updateSelectedRow();
    Q_EMIT selectionChanged();
}

/// The keys paste by the position in the whole history, whatever is listed.
void PanelModel::updateShortcuts()
{
    const AppModel& model = m_dependencies.model;
    const bool arePositions =
        model.listsWholeHistory() && !model.selectedKind() && model.query().trimmed().isEmpty();
    m_clips.setShortcuts(
        arePositions && model.settings().directPasteShortcuts() ? ClipListModel::Shortcuts::shown
                                                                : ClipListModel::Shortcuts::hidden);
}

void PanelModel::updatePresentation()
{
    ++m_pasteGeneration;
    m_ageTimer.reset();
    if (isPresented()) {
        const auto tellAges = [this] { m_clips.setNow(m_dependencies.clock.now()); };
        tellAges();
        m_ageTimer = m_dependencies.clock.every(ageInterval, tellAges);
    }
    Q_EMIT isPresentedChanged();
}

QCoro::Task<> PanelModel::readQueryText(qint64 changeCount)
{
    const QPointer<PanelModel> self(this);
    const quint64 generation = ++m_pasteGeneration;
    const auto text =
        co_await m_dependencies.pasteboard.read(changeCount, Flavour::plainText, pasteByteLimit);
    if (!self || generation != m_pasteGeneration || text.status != ReadStatus::read) {
        co_return;
    }
    if (const QString line = firstLine(text.value); !line.isEmpty()) {
        Q_EMIT queryTextPasted(line);
    }
}

const Clip* PanelModel::find(const QString& clipID) const
{
    return m_clips.clip(m_clips.rowOf(QUuid(clipID)));
}

bool PanelModel::select(const QString& clipID)
{
    const Clip* const clip = find(clipID);
    if (clip != nullptr) {
        m_dependencies.model.setSelectedID(clip->id);
    }
    return clip != nullptr;
}

} // namespace tessly
