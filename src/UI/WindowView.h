#pragma once

#include <functional>

namespace tessly {

/// An ordinary window, as its controller sees it. Main thread only. Not to be destroyed from inside
/// an event of its own.
class WindowView
{
public:
    struct Events
    {
        /// The window is gone, by its close button or by `close`.
        std::function<void()> didClose;
    };

    WindowView() = default;
    WindowView(const WindowView&) = delete;
    WindowView& operator=(const WindowView&) = delete;
    virtual ~WindowView() = default;

    virtual void setEvents(Events events) = 0;
    [[nodiscard]] virtual bool isShown() const = 0;
    /// Shows the window, the first time in the middle of the screen that the pointer is on, brings
    /// it to the front and gives it the keyboard; the latter two also when it is shown already.
    virtual void show() = 0;
    virtual void close() = 0;
};

} // namespace tessly
