#pragma once

#include "AppModel.h"
#include "ClipStore.h"
#include "Clock.h"
#include "FileInspector.h"
#include "ImageConverter.h"
#include "PreviewText.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QVariantList>

#include <memory>
#include <optional>

namespace tessly {

/// One file of the preview.
struct PreviewFile
{
    Q_GADGET
    Q_PROPERTY(QString name MEMBER name CONSTANT)
    /// The path of the folder that it is in.
    Q_PROPERTY(QString folder MEMBER folder CONSTANT)
    /// Its size, or what else it is; empty until that is known.
    Q_PROPERTY(QString status MEMBER status CONSTANT)
    Q_PROPERTY(bool isMissing MEMBER isMissing CONSTANT)

public:
    QString name = {};
    QString folder = {};
    QString status = {};
    bool isMissing = false;
};

/// The preview of the selected clip, beside the open panel: when it is shown, and what is in it. It
/// comes when the selection has rested for a while, or at once when it is asked for; follows the
/// selection; and goes, with all that it holds, when it is closed or the panel is. Main thread
/// only.
class PreviewModel final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isShown READ isShown NOTIFY isShownChanged)
    /// "Image"
    Q_PROPERTY(QString title READ title NOTIFY contentChanged)
    /// "1920 × 1080 pixels • 1.2 MB"; empty while the content is fetched.
    Q_PROPERTY(QString facts READ facts NOTIFY contentChanged)
    Q_PROPERTY(QString text READ text NOTIFY contentChanged)
    Q_PROPERTY(bool isMonospaced READ isMonospaced NOTIFY contentChanged)
    /// Whether the lines of the text are not to be wrapped.
    Q_PROPERTY(bool hasColumns READ hasColumns NOTIFY contentChanged)
    /// PreviewFile
    Q_PROPERTY(QVariantList files READ files NOTIFY contentChanged)
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY contentChanged)
    /// What is not shown, and why.
    Q_PROPERTY(QString note READ note NOTIFY contentChanged)

public:
    /// All of it must outlive this.
    struct Dependencies
    {
        AppModel& model;
        ClipStore& store;
        ImageConverter& images;
        FileInspector& files;
        Clock& clock;
    };

    /// How long the selection rests before the preview comes by itself, and before one that is
    /// shown follows it: keys that are held down fetch nothing.
    static constexpr Clock::Duration rest = std::chrono::milliseconds(400);
    static constexpr Clock::Duration follow = std::chrono::milliseconds(60);
    /// Files that are shown of an entry.
    static constexpr qsizetype filesAtMost = 100;

    /// Whether the screen has room for it beside the panel. Where it has to lie over the panel, it
    /// comes only when it is asked for.
    enum class Room { besidePanel, overPanel };

    explicit PreviewModel(Dependencies dependencies, QObject* parent = nullptr);
    ~PreviewModel() override;

    /// The panel is about to be shown: what room there is, and the size into which a picture has to
    /// fit, in device pixels.
    void setPlace(Room room, QSize pictureBound);

    [[nodiscard]] bool isShown() const { return m_isShown; }
    /// Shows it at once, in this opening of the panel also where it was switched off.
    Q_INVOKABLE void show();
    /// Closes it until it is asked for, in this opening of the panel.
    void dismiss();
    /// Closes it, to come by itself no more; or shows it at once, and by itself from now on.
    void toggle();
    /// Scrolls it, where it is longer than can be seen, by so many times what can.
    Q_INVOKABLE void scroll(int pages) { Q_EMIT scrolled(pages); }

    [[nodiscard]] QString title() const { return m_content.title; }
    [[nodiscard]] QString facts() const { return m_content.facts; }
    [[nodiscard]] QString text() const { return m_content.text.text; }
    [[nodiscard]] bool isMonospaced() const { return m_content.text.isMonospaced; }
    [[nodiscard]] bool hasColumns() const { return m_content.text.hasColumns; }
    [[nodiscard]] const QVariantList& files() const { return m_content.files; }
    [[nodiscard]] bool hasPicture() const { return !m_content.picture.pixels.isEmpty(); }
    [[nodiscard]] const ScaledImage& picture() const { return m_content.picture; }
    [[nodiscard]] QString note() const { return m_content.note; }

Q_SIGNALS:
    void isShownChanged();
    void contentChanged();
    /// From now on the content is of another entry.
    void entryChanged();
    void scrolled(int pages);

private:
    struct Content
    {
        QString title = {};
        QString facts = {};
        PreviewText text = {};
        QVariantList files = {};
        ScaledImage picture = {};
        QString note = {};
    };

    void presentationChanged();
    void selectionChanged();
    void awaitRest();
    void setUp(bool up);
    void update();
    void setContent(Content content);
    static QCoro::Task<> fetch(QPointer<PreviewModel> self);
    static QCoro::Task<> fetchContent(QPointer<PreviewModel> self, QUuid id, ListedPayload listed);
    static QCoro::Task<> addStatuses(QPointer<PreviewModel> self, QByteArrayList paths);
    [[nodiscard]] QByteArrayList showFiles(const ClipPreview& preview);
    [[nodiscard]] std::optional<QUuid> selectedID() const;
    [[nodiscard]] bool isWanted(const QUuid& id) const
    {
        return m_isShown && m_contentID == id && m_clipID == id;
    }

    Dependencies m_dependencies;
    Room m_room = Room::besidePanel;
    QSize m_pictureBound = {400, 400};
    /// Switched by its key, for as long as the program runs.
    bool m_comesByItself = true;
    /// Closed by the user in this opening of the panel.
    bool m_isDismissed = false;
    /// To be shown if there is anything to show.
    bool m_isUp = false;
    bool m_isShown = false;
    /// Selected now, if the panel is up.
    std::optional<QUuid> m_clipID;
    /// What the content is of, or is being fetched for.
    std::optional<QUuid> m_contentID;
    Content m_content;
    /// Of one showing of one clip: what arrives for another is dropped.
    quint64 m_generation = 0;
    bool m_isFetching = false;
    std::unique_ptr<Clock::Timer> m_timer;
};

} // namespace tessly
