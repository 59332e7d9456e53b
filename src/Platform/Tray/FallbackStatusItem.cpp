#include "FallbackStatusItem.h"

#include <QLoggingCategory>

#include <utility>

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcStatusItem, "com.brackmoor.tessly.StatusItem")

} // namespace

FallbackStatusItem::FallbackStatusItem(
    std::unique_ptr<StatusItem> preferred, std::unique_ptr<StatusItem> fallback)
    : m_preferred(std::move(preferred))
    , m_fallback(std::move(fallback))
{
    setEvents({});
}

FallbackStatusItem::~FallbackStatusItem() = default;

void FallbackStatusItem::setEvents(Events events)
{
    m_events = std::move(events);
    Events forBoth = m_events;
    forBoth.presenceChanged = [this] { update(); };
    m_preferred->setEvents(forBoth);
    m_fallback->setEvents(std::move(forBoth));
}

void FallbackStatusItem::setVisible(bool visible)
{
    m_isVisible = visible;
    m_preferred->setVisible(visible);
    update();
}

StatusItem::Presence FallbackStatusItem::presence() const
{
    const Presence preferred = m_preferred->presence();
    return preferred == Presence::absent ? m_fallback->presence() : preferred;
}

StatusItem::Rectangle FallbackStatusItem::rectangle() const
{
    return m_preferred->presence() == Presence::absent ? m_fallback->rectangle()
                                                       : m_preferred->rectangle();
}

void FallbackStatusItem::update()
{
    // Not while the first way is undecided: an icon that appears and goes again would flicker.
    m_fallback->setVisible(m_isVisible && m_preferred->presence() == Presence::absent);
    const Presence now = presence();
    if (m_isVisible && now == Presence::absent && !std::exchange(m_hasLoggedAbsence, true)) {
        qCInfo(
            lcStatusItem, "There is no tray: start Tessly again, or call it, to open the panel.");
    }
    if (std::exchange(m_presence, now) != now && m_events.presenceChanged) {
        m_events.presenceChanged();
    }
}

} // namespace tessly
