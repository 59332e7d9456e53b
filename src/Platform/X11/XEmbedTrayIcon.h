#pragma once

#include "StatusItem.h"

#include <functional>
#include <memory>

namespace tessly {

class X11Desktop;

/// The status item by the XEMBED system tray, which every older X11 desktop has. The program shows
/// its menu and its tool tip itself.
class XEmbedTrayIcon final : public StatusItem
{
public:
    /// Turns the display's own pixels into device-independent ones.
    using ToIndependentPixels = std::function<QRect(const QRect&)>;

    /// `desktop` must outlive the icon.
    XEmbedTrayIcon(X11Desktop& desktop, ToIndependentPixels toIndependentPixels);
    ~XEmbedTrayIcon() override;

    void setEvents(Events events) override;
    void setVisible(bool visible) override;
    [[nodiscard]] Presence presence() const override;
    [[nodiscard]] Rectangle rectangle() const override;

private:
    class State;

    X11Desktop& m_desktop;
    std::shared_ptr<State> m_state;
};

} // namespace tessly
