#include "StatusNotifierItem.h"

#include "ActivationToken.h"
#include "BusConnecting.h"
#include "StatusMenuAdaptor.h"
#include "StatusNotifierItemAdaptor.h"
#include "StatusNotifierWatcher.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QString itemPath = u"/StatusNotifierItem"_s;
const QString menuPath = u"/MenuBar"_s;

} // namespace

/// What is on the bus, and what comes from there.
class StatusNotifierItem::Exported final : public QObject
{
public:
    Exported(Connect connect, ToIndependentPixels toIndependentPixels);
    ~Exported() override;

    void setEvents(Events events) { m_events = std::move(events); }
    void setVisible(bool visible);
    [[nodiscard]] Presence presence() const;
    [[nodiscard]] const Rectangle& rectangle() const { return m_rectangle; }

private:
    void connected(QDBusConnection bus);
    void setWatcherState(StatusNotifierWatcher::State state);
    void clicked(QPoint position);
    void contextMenu(QPoint position);
    void menuOpening();
    void menuChosen(const QString& action);
    [[nodiscard]] std::vector<StatusMenuItem> menu() const;
    [[nodiscard]] Rectangle rectangleAt(QPoint position) const;
    /// Calls back after the answer to the tray's call has gone out: what the program does then may
    /// take long.
    void later(std::function<void()> call);

    Connect m_connect;
    ToIndependentPixels m_toIndependentPixels;
    Events m_events;
    bool m_isVisible = false;
    Rectangle m_rectangle;
    StatusNotifierWatcher::State m_watcherState = StatusNotifierWatcher::State::undecided;

    QObject m_item;
    QObject m_menu;
    StatusNotifierItemAdaptor* m_itemAdaptor = nullptr;
    BusConnecting m_connecting{[this](const QDBusConnection& bus) { connected(bus); }};
    std::unique_ptr<StatusNotifierWatcher> m_watcher;
};

StatusNotifierItem::Exported::Exported(Connect connect, ToIndependentPixels toIndependentPixels)
    : m_connect(std::move(connect))
    , m_toIndependentPixels(std::move(toIndependentPixels))
{
    // Adaptors belong to the objects they are made for.
    m_itemAdaptor = new StatusNotifierItemAdaptor(
        {
            .activated = [this](QPoint position) { clicked(position); },
            .contextMenu = [this](QPoint position) { contextMenu(position); },
            .activationToken = keepActivationToken,
        },
        menuPath, &m_item);
    new StatusMenuAdaptor(
        {
            .menu = [this] { return menu(); },
            .opening = [this] { menuOpening(); },
            .chosen = [this](const QString& action) { menuChosen(action); },
        },
        &m_menu);
}

StatusNotifierItem::Exported::~Exported() = default;

void StatusNotifierItem::Exported::setVisible(bool visible)
{
    const Presence before = presence();
    m_isVisible = visible;
    m_itemAdaptor->setActive(visible);
    if (visible && m_connect) {
        m_connecting.start(std::exchange(m_connect, nullptr));
    }
    if (presence() != before && m_events.presenceChanged) {
        later(m_events.presenceChanged);
    }
}

StatusItem::Presence StatusNotifierItem::Exported::presence() const
{
    if (!m_isVisible) {
        return Presence::absent;
    }
    switch (m_watcherState) {
    case StatusNotifierWatcher::State::undecided:
        return Presence::undecided;
    case StatusNotifierWatcher::State::absent:
        return Presence::absent;
    case StatusNotifierWatcher::State::present:
        return Presence::present;
    }
    Q_UNREACHABLE();
}

void StatusNotifierItem::Exported::connected(QDBusConnection bus)
{
    const bool isExported = bus.isConnected() && bus.registerObject(itemPath, &m_item) &&
                            bus.registerObject(menuPath, &m_menu);
    if (!isExported) {
        setWatcherState(StatusNotifierWatcher::State::absent);
        return;
    }
    m_watcher = std::make_unique<StatusNotifierWatcher>(
        bus, [this](StatusNotifierWatcher::State state) { setWatcherState(state); });
}

void StatusNotifierItem::Exported::setWatcherState(StatusNotifierWatcher::State state)
{
    const Presence before = presence();
    m_watcherState = state;
    if (presence() != before && m_events.presenceChanged) {
        m_events.presenceChanged();
    }
}

void StatusNotifierItem::Exported::clicked(QPoint position)
{
    m_rectangle = rectangleAt(position);
    later([this] {
        if (m_events.leftClicked) {
            m_events.leftClicked(m_rectangle);
        }
    });
}

void StatusNotifierItem::Exported::contextMenu(QPoint position)
{
    m_rectangle = rectangleAt(position);
    const QPoint point = m_toIndependentPixels(QRect(position, QSize(1, 1))).topLeft();
    later([this, point] {
        if (m_events.rightClicked) {
            m_events.rightClicked(m_rectangle);
        }
        if (m_events.menuRequested) {
            m_events.menuRequested(point);
        }
    });
}

void StatusNotifierItem::Exported::menuOpening()
{
    later([this] {
        if (m_events.rightClicked) {
            m_events.rightClicked(std::nullopt);
        }
    });
}

void StatusNotifierItem::Exported::menuChosen(const QString& action)
{
    later([this, action] {
        if (m_events.menuItemChosen) {
            m_events.menuItemChosen(action);
        }
    });
}

std::vector<StatusMenuItem> StatusNotifierItem::Exported::menu() const
{
    return m_events.menu ? m_events.menu() : std::vector<StatusMenuItem>();
}

StatusItem::Rectangle StatusNotifierItem::Exported::rectangleAt(QPoint position) const
{
    // What trays say that do not know, or may not tell.
    if (position.isNull()) {
        return std::nullopt;
    }
    return m_toIndependentPixels(QRect(position, QSize(1, 1)));
}

void StatusNotifierItem::Exported::later(std::function<void()> call)
{
    QMetaObject::invokeMethod(this, std::move(call), Qt::QueuedConnection);
}

StatusNotifierItem::StatusNotifierItem(Connect connect, ToIndependentPixels toIndependentPixels)
    : m_exported(std::make_unique<Exported>(std::move(connect), std::move(toIndependentPixels)))
{
}

StatusNotifierItem::~StatusNotifierItem() = default;

void StatusNotifierItem::setEvents(Events events)
{
    m_exported->setEvents(std::move(events));
}

void StatusNotifierItem::setVisible(bool visible)
{
    m_exported->setVisible(visible);
}

StatusItem::Presence StatusNotifierItem::presence() const
{
    return m_exported->presence();
}

StatusItem::Rectangle StatusNotifierItem::rectangle() const
{
    return m_exported->rectangle();
}

} // namespace tessly
