#pragma once

#include "RunningApplication.h"

#include <functional>
#include <utility>

namespace tessly::test {

/// An application whose window comes to the front when the test says so, or after it was asked a
/// number of times.
class FakeRunningApplication final : public RunningApplication
{
public:
    explicit FakeRunningApplication(
        std::optional<QString> bundleIdentifier, std::optional<QString> localizedName = {})
        : m_bundleIdentifier(std::move(bundleIdentifier))
        , m_localizedName(std::move(localizedName))
    {
    }

    void setActive(bool active) { m_isActive = active && !m_isTerminated; }
    /// It comes to the front when asked for the `count`-th time from now.
    void becomeActiveAfter(int count) { m_asksUntilActive = count; }
    /// What happens on the desktop when it comes to the front because it was asked to.
    void setComesToFront(std::function<void()> action) { m_comesToFront = std::move(action); }
    /// What else the desktop calls it.
    void setNames(const QStringList& names) { m_names = names; }
    void terminate();
    /// How often it was asked to come to the front.
    [[nodiscard]] int activations() const { return m_activations; }

    [[nodiscard]] std::optional<QString> localizedName() const override { return m_localizedName; }
    [[nodiscard]] std::optional<QString> bundleIdentifier() const override
    {
        return m_bundleIdentifier;
    }
    [[nodiscard]] QStringList names() const override
    {
        return m_names.isEmpty() ? RunningApplication::names() : m_names;
    }
    [[nodiscard]] bool isActive() const override { return m_isActive; }
    [[nodiscard]] bool isTerminated() const override { return m_isTerminated; }
    void activate() override;

private:
    std::optional<QString> m_bundleIdentifier;
    std::optional<QString> m_localizedName;
    QStringList m_names;
    bool m_isActive = false;
    bool m_isTerminated = false;
    int m_activations = 0;
    int m_asksUntilActive = 0;
    std::function<void()> m_comesToFront;
};

} // namespace tessly::test
