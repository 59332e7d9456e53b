#pragma once

#include "StatusItem.h"

#include <QPoint>

#include <functional>
#include <vector>

namespace tessly {

/// The status menu as a window of the program's own, for trays that leave menus to it. Main thread
/// only.
class StatusMenuView
{
public:
    /// Told from the event loop, when the menu is gone.
    using Chosen = std::function<void(const QString& action)>;

    StatusMenuView() = default;
    StatusMenuView(const StatusMenuView&) = delete;
    StatusMenuView& operator=(const StatusMenuView&) = delete;
    virtual ~StatusMenuView() = default;

    /// Opens at `position` (global, device-independent pixels), whole on the screen there, and
    /// takes the keyboard until a line is chosen, or Escape, a press elsewhere or `close` ends it.
    /// A menu that is open gives way to the new one.
    virtual void show(std::vector<StatusMenuItem> items, QPoint position, Chosen chosen) = 0;
    /// Nothing is chosen.
    virtual void close() = 0;
};

} // namespace tessly
