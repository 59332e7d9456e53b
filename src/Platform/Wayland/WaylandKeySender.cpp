#include "WaylandKeySender.h"

#include "WaylandDesktop.h"
#include "WaylandRunningApplication.h"

#include <QCoroFuture>
#include <QLoggingCategory>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcKeySender, "com.brackmoor.tessly.WaylandKeySender")

/// None of what is not known by a window.
std::shared_ptr<const TrackedWindow> windowOf(const std::shared_ptr<const PasteTarget>& target)
{
    const auto application = std::dynamic_pointer_cast<const WaylandRunningApplication>(target);
    return application ? application->window() : nullptr;
}

} // namespace

WaylandKeySender::WaylandKeySender(WaylandDesktop& desktop, WaylandKeyboard::Way way)
    : m_desktop(desktop)
    , m_way(way)
{
}

bool WaylandKeySender::isAllowed() const
{
    return m_desktop.canPress(m_way);
}

bool WaylandKeySender::requestAccess()
{
    return isAllowed();
}

QCoro::Task<KeySender::Sending>
WaylandKeySender::send(PasteChord chord, std::shared_ptr<const PasteTarget> target, IsThere isThere)
{
    auto sending = m_desktop.press(m_way, chord, windowOf(target), std::move(isThere));
    co_return co_await sending;
}

QCoro::Task<bool> FakeInputSender::ready()
{
    const QFuture<bool> up = desktop().modifiersUp();
    const bool areUp = co_await up;
    if (!areUp) {
        qCInfo(
            lcKeySender, "No keys are pressed: a modifier is held down, and would be part of them");
    }
    co_return areUp;
}

} // namespace tessly
