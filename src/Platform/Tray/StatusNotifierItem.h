#pragma once

#include "BusConnecting.h"
#include "StatusItem.h"

#include <functional>
#include <memory>

namespace tessly {

/// The status item by the StatusNotifierItem protocol, for trays that are reached over the session
/// bus. Main thread only; nothing waits for the bus or for another program on it.
class StatusNotifierItem final : public StatusItem
{
public:
    /// Opens the connection to the bus. Called once, when the icon is first to be seen, on a thread
    /// of its own.
    using Connect = BusConnecting::Connect;
    /// Turns the display's own pixels, in which trays tell where they are, into device-independent
    /// ones.
    using ToIndependentPixels = std::function<QRect(const QRect&)>;

    StatusNotifierItem(Connect connect, ToIndependentPixels toIndependentPixels);
    ~StatusNotifierItem() override;

    void setEvents(Events events) override;
    void setVisible(bool visible) override;
    [[nodiscard]] Presence presence() const override;
    [[nodiscard]] Rectangle rectangle() const override;

private:
    class Exported;

    std::unique_ptr<Exported> m_exported;
};

} // namespace tessly
