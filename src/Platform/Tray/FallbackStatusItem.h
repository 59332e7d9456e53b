#pragma once

#include "StatusItem.h"

#include <memory>

namespace tessly {

/// A status item by the first of two ways, and by the second wherever the first leads nowhere. Goes
/// from one to the other as trays come and go.
class FallbackStatusItem final : public StatusItem
{
public:
    FallbackStatusItem(std::unique_ptr<StatusItem> preferred, std::unique_ptr<StatusItem> fallback);
    ~FallbackStatusItem() override;

    void setEvents(Events events) override;
    void setVisible(bool visible) override;
    [[nodiscard]] Presence presence() const override;
    [[nodiscard]] Rectangle rectangle() const override;

private:
    void update();

    std::unique_ptr<StatusItem> m_preferred;
    std::unique_ptr<StatusItem> m_fallback;
    Events m_events;
    bool m_isVisible = false;
    Presence m_presence = Presence::absent;
    bool m_hasLoggedAbsence = false;
};

} // namespace tessly
