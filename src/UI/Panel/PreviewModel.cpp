#include "PreviewModel.h"

#include "FileURL.h"
#include "MendedUTF8.h"
#include "Presentation.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString between = u" • "_s;

QString statusText(const FileStatus& status)
{
    switch (status.kind) {
    case FileStatus::Kind::unknown:
        return u"Cannot be reached"_s;
    case FileStatus::Kind::notLookedUp:
        return {};
    case FileStatus::Kind::missing:
        return u"No longer there"_s;
    case FileStatus::Kind::file:
        return byteCount(status.bytes);
    case FileStatus::Kind::folder:
        return u"Folder"_s;
    case FileStatus::Kind::other:
        return u"No file"_s;
    }
    Q_UNREACHABLE();
}

QString fileCount(qsizetype files)
{
    return files == 1 ? u"1 file"_s : u"%1 files"_s.arg(files);
}

QString shown(QByteArrayView fileName)
{
    return displayLine(QString::fromUtf8(mendedUTF8(fileName.toByteArray())));
}

} // namespace

PreviewModel::PreviewModel(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_dependencies(dependencies)
{
    AppModel& model = m_dependencies.model;
    connect(&model, &AppModel::isPanelPresentedChanged, this, &PreviewModel::presentationChanged);
    connect(&model, &AppModel::selectedIDChanged, this, &PreviewModel::selectionChanged);
    // Where nothing is selected, the first clip is meant.
    connect(&model, &AppModel::clipsChanged, this, &PreviewModel::selectionChanged);
}

PreviewModel::~PreviewModel() = default;

void PreviewModel::setPlace(Room room, QSize pictureBound)
{
    m_pictureBound = pictureBound;
    if (std::exchange(m_room, room) != room) {
        awaitRest();
    }
}

void PreviewModel::show()
{
    m_isDismissed = false;
    setUp(true);
}

void PreviewModel::dismiss()
{
    m_isDismissed = true;
    setUp(false);
}

void PreviewModel::toggle()
{
    m_comesByItself = !m_isShown;
    m_isDismissed = false;
    setUp(!m_isShown);
}

void PreviewModel::presentationChanged()
{
    m_isDismissed = false;
    m_clipID = selectedID();
    setUp(false);
    awaitRest();
}

void PreviewModel::selectionChanged()
{
    const auto id = selectedID();
    if (std::exchange(m_clipID, id) == id) {
        return;
    }
    if (!m_isUp) {
        awaitRest();
    } else if (m_isShown && id) {
        m_timer = m_dependencies.clock.after(follow, [this] { update(); });
    } else {
        update();
    }
}

/// Shows it by itself once the selection has rested from now on.
void PreviewModel::awaitRest()
{
    if (m_isUp) {
        return;
    }
    m_timer.reset();
    if (m_clipID && m_comesByItself && !m_isDismissed && m_room == Room::besidePanel) {
        m_timer = m_dependencies.clock.after(rest, [this] { setUp(true); });
    }
}

void PreviewModel::setUp(bool up)
{
    m_isUp = up && m_dependencies.model.isPanelPresented();
    update();
}

/// Makes what is shown that of the selection.
void PreviewModel::update()
{
    m_timer.reset();
    const bool wasShown = std::exchange(m_isShown, m_isUp && m_clipID);
    if (!m_isShown) {
        m_contentID.reset();
        ++m_generation;
        setContent({});
    } else if (!m_isFetching) {
        fetch(this);
    }
    if (wasShown != m_isShown) {
        Q_EMIT isShownChanged();
    }
}

void PreviewModel::setContent(Content content)
{
    m_content = std::move(content);
    Q_EMIT contentChanged();
}

std::optional<QUuid> PreviewModel::selectedID() const
{
    const AppModel& model = m_dependencies.model;
    const Clip* const clip = model.isPanelPresented() ? model.selectedClip() : nullptr;
    return clip != nullptr ? std::optional(clip->id) : std::nullopt;
}

/// Fetches one content at a time, so that one is in memory, until it is that of the selection.
QCoro::Task<> PreviewModel::fetch(QPointer<PreviewModel> self)
{
    self->m_isFetching = true;
    while (self && self->m_isShown && self->m_contentID != self->m_clipID) {
        // What is listed has just been compared with the selection.
        const Clip* const clip = self->m_dependencies.model.selectedClip();
        if (clip == nullptr || clip->id != self->m_clipID) {
            break;
        }
        self->m_contentID = clip->id;
        ++self->m_generation;
        Q_EMIT self->entryChanged();
        co_await fetchContent(self, clip->id, clip->payload);
    }
    if (self) {
        self->m_isFetching = false;
    }
}

QCoro::Task<>
PreviewModel::fetchContent(QPointer<PreviewModel> self, QUuid id, ListedPayload listed)
{
    const QString title = kindTitle(listed.kind());
    std::optional<ClipPreview> preview;
    QString failure = u"This entry is no longer in the history."_s;
    const ClipPayload* const held = listed.held();
    if (held != nullptr && ClipPreview::isInstant(*held)) {
        preview = ClipPreview::of(*held);
    } else {
        self->setContent({.title = title});
        try {
            preview = co_await self->m_dependencies.store.preview(id);
        } catch (const std::exception& error) {
            failure = QString::fromUtf8(error.what());
        }
        if (!self || !self->isWanted(id)) {
            co_return;
        }
    }
    if (!preview) {
        self->setContent({.title = title, .note = failure});
        co_return;
    }
    if (!preview->fileURLs.isEmpty()) {
        addStatuses(self, self->showFiles(*preview));
        co_return;
    }
    const QString size = byteCount(preview->size);
    if (preview->imagePNG) {
        self->setContent({.title = title, .facts = size});
        ScaledImage image;
        try {
            image = co_await self->m_dependencies.images.scaled(
                *preview->imagePNG, self->m_pictureBound);
        } catch (const std::bad_alloc&) {
            // As one that cannot be decoded.
        }
        if (!self || !self->isWanted(id)) {
            co_return;
        }
        Content content{.title = title, .facts = size, .picture = image};
        if (image.fullSize.isValid()) {
            content.facts =
                u"%1 × %2 pixels"_s.arg(image.fullSize.width()).arg(image.fullSize.height()) +
                between + size;
        }
        if (image.pixels.isEmpty()) {
            content.note = u"This image cannot be shown."_s;
        }
        self->setContent(std::move(content));
        co_return;
    }
    Content content{
        .title = title, .facts = size, .text = previewText(preview->text.value_or(QByteArray()))};
    if (!preview->text) {
        content.note = preview->isTextCut ? u"There is no text at its beginning."_s
                                          : u"This entry has no plain text."_s;
    } else if (content.text.isCut || preview->isTextCut) {
        content.note = u"Only the beginning is shown."_s;
    }
    self->setContent(std::move(content));
}

/// Shows what the entry itself tells of its files, and returns their paths.
QByteArrayList PreviewModel::showFiles(const ClipPreview& preview)
{
    const QByteArrayList& urls = preview.fileURLs;
    const qsizetype count = std::min(urls.size(), filesAtMost);
    Content content{
        .title = kindTitle(ClipKind::files),
        .facts = preview.areFilesCut ? u"More than %1"_s.arg(fileCount(urls.size()))
                                     : fileCount(urls.size())};
    QByteArrayList paths;
    for (const QByteArray& url : urls.first(count)) {
        const FileURL file = FileURL::parse(url).value_or(FileURL{url, url});
        const QByteArrayView folder = QByteArrayView(file.path).chopped(
            std::min(file.path.size(), file.lastPathComponent.size()));
        content.files.append(QVariant::fromValue(
            PreviewFile{.name = shown(file.lastPathComponent), .folder = shown(folder)}));
        paths.append(file.path);
    }
    if (preview.areFilesCut) {
        content.note = u"Only the beginning is shown."_s;
    } else if (count < urls.size()) {
        content.note = u"And %1 more."_s.arg(urls.size() - count);
    }
    setContent(std::move(content));
    return paths;
}

QCoro::Task<> PreviewModel::addStatuses(QPointer<PreviewModel> self, QByteArrayList paths)
{
    const quint64 generation = self->m_generation;
    const std::vector<FileStatus> statuses =
        co_await self->m_dependencies.files.inspect(std::move(paths));
    if (!self || self->m_generation != generation) {
        co_return;
    }
    Content content = self->m_content;
    for (qsizetype i = 0; i < content.files.size() && std::cmp_less(i, statuses.size()); ++i) {
        const FileStatus& status = statuses[static_cast<std::size_t>(i)];
        auto file = content.files.at(i).value<PreviewFile>();
        file.status = statusText(status);
        file.isMissing = status.kind == FileStatus::Kind::missing;
        content.files[i] = QVariant::fromValue(file);
    }
    self->setContent(std::move(content));
}

} // namespace tessly
