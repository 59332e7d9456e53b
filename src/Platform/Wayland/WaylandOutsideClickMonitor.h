#pragma once

#include "MainThreadCall.h"
#include "OutsideClickMonitor.h"
#include "WaylandGround.h"

#include <QFuture>

#include <functional>
#include <memory>
#include <optional>

namespace tessly {

class WaylandDesktop;

/// Clicks beside a panel that is a layer surface. A ground under it gets them, for as long as there
/// is a watch; the windows do not. There is one watch at a time. Main thread only.
class WaylandOutsideClickMonitor final : public OutsideClickMonitor
{
public:
    /// The desktop must outlive it, and its watches.
    explicit WaylandOutsideClickMonitor(WaylandDesktop& desktop);
    ~WaylandOutsideClickMonitor() override;

    [[nodiscard]] std::unique_ptr<Watch> watch(std::function<void()> pressed) override;
    /// Finished once the ground of the watch is laid, so that what is shown from then on stands on
    /// it: where the pointer is. None if that is not known, or there is no watch.
    [[nodiscard]] QFuture<std::optional<WaylandGround::Pointer>> pointer() const;

private:
    class Handle;

    WaylandDesktop& m_desktop;
    Handle* m_watch = nullptr;
};

} // namespace tessly
