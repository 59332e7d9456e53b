#include "WaylandOutsideClickMonitor.h"

#include "LoopAnswer.h"
#include "WaylandDesktop.h"

#include <utility>

namespace tessly {

class WaylandOutsideClickMonitor::Handle final : public OutsideClickMonitor::Watch
{
public:
    Handle(WaylandOutsideClickMonitor& monitor, std::function<void()> pressed)
        : m_monitor(monitor)
    {
        m_pressed.setCallback(std::move(pressed));
        pointer = m_monitor.m_desktop.layGround(m_pressed.request());
        m_monitor.m_watch = this;
    }
    ~Handle() override
    {
        m_monitor.m_watch = nullptr;
        m_monitor.m_desktop.liftGround();
    }

    QFuture<std::optional<WaylandGround::Pointer>> pointer;

private:
    WaylandOutsideClickMonitor& m_monitor;
    MainThreadCall m_pressed;
};

WaylandOutsideClickMonitor::WaylandOutsideClickMonitor(WaylandDesktop& desktop)
    : m_desktop(desktop)
{
}

WaylandOutsideClickMonitor::~WaylandOutsideClickMonitor() = default;

std::unique_ptr<OutsideClickMonitor::Watch>
WaylandOutsideClickMonitor::watch(std::function<void()> pressed)
{
    return std::make_unique<Handle>(*this, std::move(pressed));
}

QFuture<std::optional<WaylandGround::Pointer>> WaylandOutsideClickMonitor::pointer() const
{
    if (m_watch != nullptr) {
        return m_watch->pointer;
    }
    // Answered as it goes.
    return LoopAnswer<std::optional<WaylandGround::Pointer>>(std::nullopt).future();
}

} // namespace tessly
