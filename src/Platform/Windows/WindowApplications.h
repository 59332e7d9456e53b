#pragma once

#include <memory>
#include <vector>

namespace tessly {

/// The applications of windows: the same object for the same window, for as long as anyone holds
/// it. `Application` is made of a window and what follows the windows.
template <typename Application, typename Window, typename Windows>
class WindowApplications
{
public:
    /// Null for no window.
    [[nodiscard]] std::shared_ptr<Application>
    of(const std::shared_ptr<const Window>& window, const std::weak_ptr<Windows>& windows)
    {
        if (!window) {
            return nullptr;
        }
        std::erase_if(m_known, [](const auto& known) { return known.expired(); });
        for (const auto& known : m_known) {
            if (auto application = known.lock(); application && application->window() == window) {
                return application;
            }
        }
        auto application = std::make_shared<Application>(window, windows);
        m_known.push_back(application);
        return application;
    }

private:
    std::vector<std::weak_ptr<Application>> m_known;
};

} // namespace tessly
