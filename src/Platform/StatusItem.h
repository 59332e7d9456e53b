#pragma once

#include <QPoint>
#include <QRect>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace tessly {

/// One line of the status menu.
struct StatusMenuItem
{
    /// A separator has neither title nor action.
    QString title = {};
    /// What the program calls it; no two lines of one menu share it.
    QString action = {};
    bool isEnabled = true;
    bool isSeparator = false;
    /// The key that chooses it together with Command (which is Ctrl here), as text; may be empty.
    QString keyText = {};

    bool operator==(const StatusMenuItem&) const = default;
};

/// The program's icon among those of the desktop's tray. Main thread only.
///
/// A desktop may have no tray, or get one at any time, or lose it. Nothing here waits for it, and
/// everything the icon offers can be reached without it.
class StatusItem
{
public:
    /// Rectangles and points are global, in device-independent pixels.
    using Rectangle = std::optional<QRect>;

    /// What the icon tells the program, from the event loop only. Any of them may be missing.
    struct Events
    {
        /// The left button was let go over the icon, or the like of it. The icon's rectangle, where
        /// it is known, or a point of it.
        std::function<void(Rectangle icon)> leftClicked = {};
        /// The right button was let go over the icon; its menu comes next.
        std::function<void(Rectangle icon)> rightClicked = {};
        /// Asked at each opening of the menu.
        std::function<std::vector<StatusMenuItem>()> menu = {};
        /// The program is to show the menu itself, here. Otherwise the desktop does.
        std::function<void(QPoint position)> menuRequested = {};
        /// The pointer rests on the icon, and the program is to show the tool tip itself; and no
        /// more.
        std::function<void(QRect icon)> toolTipRequested = {};
        std::function<void()> toolTipDismissed = {};
        /// A line was chosen in a menu that the desktop showed.
        std::function<void(const QString& action)> menuItemChosen = {};
        std::function<void()> presenceChanged = {};
    };

    enum class Presence {
        /// The desktop has not answered yet.
        undecided,
        /// The icon is not to be seen: it is hidden, or there is no tray.
        absent,
        present,
    };

    StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;
    virtual ~StatusItem() = default;

    virtual void setEvents(Events events) = 0;
    /// Puts the icon into the tray, now and whenever there is one; and takes it out again. Hidden
    /// at first.
    virtual void setVisible(bool visible) = 0;
    [[nodiscard]] virtual Presence presence() const = 0;
    /// Where the icon was when last heard of; none if that is not known.
    [[nodiscard]] virtual Rectangle rectangle() const = 0;
};

/// The icon's name for people who do not see it.
inline const QString statusItemTitle = QStringLiteral("Tessly");
inline const QString statusItemToolTip = QStringLiteral("Tessly — Open Quick Paste");

} // namespace tessly
