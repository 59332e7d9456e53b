#pragma once

#include "StatusItem.h"

#include <utility>

namespace tessly::test {

/// An icon in a tray that the test plays.
class FakeStatusItem final : public StatusItem
{
public:
    /// What the tray makes of a visible icon. Present at first.
    void setTray(Presence presence)
    {
        const Presence before = this->presence();
        m_tray = presence;
        tellIfChanged(before);
    }
    void setRectangle(Rectangle rectangle) { m_rectangle = rectangle; }
    /// The user clicks.
    void leftClick()
    {
        if (m_events.leftClicked) {
            m_events.leftClicked(m_rectangle);
        }
    }
    void rightClick()
    {
        if (m_events.rightClicked) {
            m_events.rightClicked(m_rectangle);
        }
        if (m_events.menuRequested) {
            m_events.menuRequested(m_rectangle.value_or(QRect()).topLeft());
        }
    }
    /// The tray opens the menu itself.
    [[nodiscard]] std::vector<StatusMenuItem> openMenu()
    {
        if (m_events.rightClicked) {
            m_events.rightClicked(m_rectangle);
        }
        return m_events.menu ? m_events.menu() : std::vector<StatusMenuItem>();
    }
    void choose(const QString& action)
    {
        if (m_events.menuItemChosen) {
            m_events.menuItemChosen(action);
        }
    }
    [[nodiscard]] bool isVisible() const { return m_isVisible; }

    void setEvents(Events events) override { m_events = std::move(events); }
    void setVisible(bool visible) override
    {
        const Presence before = presence();
        m_isVisible = visible;
        tellIfChanged(before);
    }
    [[nodiscard]] Presence presence() const override
    {
        return m_isVisible ? m_tray : Presence::absent;
    }
    [[nodiscard]] Rectangle rectangle() const override { return m_rectangle; }

private:
    void tellIfChanged(Presence before)
    {
        if (presence() != before && m_events.presenceChanged) {
            m_events.presenceChanged();
        }
    }

    Events m_events;
    bool m_isVisible = false;
    Presence m_tray = Presence::present;
    Rectangle m_rectangle;
};

} // namespace tessly::test
