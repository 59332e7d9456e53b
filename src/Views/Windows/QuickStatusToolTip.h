#pragma once

#include "StatusToolTipView.h"
#include "ViewWindow.h"

#include <memory>

namespace tessly {

/// The icon's tool tip in Qt Quick. Main thread only.
class QuickStatusToolTip final : public StatusToolTipView
{
public:
    /// Loads the tool tip's QML.
    QuickStatusToolTip();
    ~QuickStatusToolTip() override;

    /// Whether it could be loaded; the log tells why not.
    [[nodiscard]] bool isLoaded() const { return m_window->isLoaded(); }
    [[nodiscard]] ViewWindow& window() { return *m_window; }

    void show(const QString& text, const QRect& icon) override;
    void hide() override;

private:
    std::unique_ptr<ViewWindow> m_window;
};

} // namespace tessly
