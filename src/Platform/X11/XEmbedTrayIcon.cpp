#include "XEmbedTrayIcon.h"

#include "X11Desktop.h"
#include "X11TrayIcon.h"

#include <QCoreApplication>

#include <utility>

namespace tessly {

namespace {

QRect toQt(const X11TrayIcon::Rectangle& rectangle)
{
    return {rectangle.x, rectangle.y, rectangle.width, rectangle.height};
}

StatusItem::Presence toItems(X11TrayIcon::Presence presence)
{
    switch (presence) {
    case X11TrayIcon::Presence::undecided:
        return StatusItem::Presence::undecided;
    case X11TrayIcon::Presence::absent:
        return StatusItem::Presence::absent;
    case X11TrayIcon::Presence::present:
        return StatusItem::Presence::present;
    }
    Q_UNREACHABLE();
}

} // namespace

/// What is on the main thread. The loop thread only passes a weak pointer to it back.
class XEmbedTrayIcon::State : public std::enable_shared_from_this<State>
{
    /// A handler for the loop thread that calls `method` here, if this is still there by then.
    template <typename... Arguments>
    auto passedOn(void (State::*method)(Arguments...))
    {
        return [weakState = weak_from_this(), method](const std::decay_t<Arguments>&... arguments) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [weakState, method, arguments...] {
                    if (const auto state = weakState.lock()) {
                        (state.get()->*method)(arguments...);
                    }
                },
                Qt::QueuedConnection);
        };
    }

public:
    explicit State(ToIndependentPixels toIndependentPixels)
        : m_toIndependentPixels(std::move(toIndependentPixels))
    {
    }

    [[nodiscard]] X11TrayIcon::Handlers handlers()
    {
        return {
            .presenceChanged = passedOn(&State::setTrayPresence),
            .moved = passedOn(&State::setRectangle),
            .clicked = passedOn(&State::click),
            .hovered = passedOn(&State::setHovered),
        };
    }

    void setEvents(Events events) { m_events = std::move(events); }

    void setVisible(bool visible)
    {
        if (visible == m_isVisible) {
            return;
        }
        const Presence before = presence();
        m_isVisible = visible;
        m_trayPresence = Presence::undecided;
        m_rectangle.reset();
        if (!visible) {
            setHovered(false);
        }
        if (presence() != before) {
            passedOn (&State::tellPresence)();
        }
    }

    [[nodiscard]] Presence presence() const
    {
        return m_isVisible ? m_trayPresence : Presence::absent;
    }
    [[nodiscard]] const Rectangle& rectangle() const { return m_rectangle; }

private:
    void setTrayPresence(X11TrayIcon::Presence trayPresence)
    {
        const Presence before = presence();
        m_trayPresence = toItems(trayPresence);
        if (m_trayPresence != Presence::present) {
            m_rectangle.reset();
        }
        if (presence() != before) {
            tellPresence();
        }
    }

    void tellPresence()
    {
        if (const auto told = m_events.presenceChanged) {
            told();
        }
    }

    void setRectangle(const X11TrayIcon::Rectangle& rectangle)
    {
        m_rectangle = m_toIndependentPixels(toQt(rectangle));
    }

    void click(const X11TrayIcon::Click& click)
    {
        setRectangle(click.icon);
        const auto events = m_events;
        if (!click.isRight) {
            if (events.leftClicked) {
                events.leftClicked(m_rectangle);
            }
            return;
        }
        const QPoint point =
            m_toIndependentPixels(QRect(QPoint(click.x, click.y), QSize(1, 1))).topLeft();
        if (events.rightClicked) {
            events.rightClicked(m_rectangle);
        }
        if (events.menuRequested) {
            events.menuRequested(point);
        }
    }

    void setHovered(bool hovered)
    {
        if (hovered && m_rectangle && m_events.toolTipRequested) {
            m_events.toolTipRequested(*m_rectangle);
        } else if (!hovered && m_events.toolTipDismissed) {
            m_events.toolTipDismissed();
        }
    }

    ToIndependentPixels m_toIndependentPixels;
    Events m_events;
    bool m_isVisible = false;
    Presence m_trayPresence = Presence::undecided;
    Rectangle m_rectangle;
};

XEmbedTrayIcon::XEmbedTrayIcon(X11Desktop& desktop, ToIndependentPixels toIndependentPixels)
    : m_desktop(desktop)
    , m_state(std::make_shared<State>(std::move(toIndependentPixels)))
{
    m_desktop.postToTrayIcon(
        [handlers = m_state->handlers()](X11TrayIcon& icon) { icon.setHandlers(handlers); });
}

XEmbedTrayIcon::~XEmbedTrayIcon()
{
    m_desktop.postToTrayIcon([](X11TrayIcon& icon) {
        icon.setHandlers({});
        icon.setVisible(false);
    });
}

void XEmbedTrayIcon::setEvents(Events events)
{
    m_state->setEvents(std::move(events));
}

void XEmbedTrayIcon::setVisible(bool visible)
{
    m_state->setVisible(visible);
    m_desktop.postToTrayIcon([visible](X11TrayIcon& icon) { icon.setVisible(visible); });
}

StatusItem::Presence XEmbedTrayIcon::presence() const
{
    return m_state->presence();
}

StatusItem::Rectangle XEmbedTrayIcon::rectangle() const
{
    return m_state->rectangle();
}

} // namespace tessly
