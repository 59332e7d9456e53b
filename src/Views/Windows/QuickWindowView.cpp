#include "QuickWindowView.h"

#include "WindowGeometry.h"
#include "WindowModule.h"

#include <QCursor>
#include <QScreen>

#include <malloc.h>
#include <utility>

namespace tessly {

QuickWindowView::QuickWindowView(const Design& design)
{
    if (design.frame == Frame::none) {
        auto card = std::make_unique<CardWindow>(m_cards);
        m_card = card.get();
        m_window = std::move(card);
        m_window->setFlags(Qt::Window | Qt::FramelessWindowHint);
    } else {
        m_window = std::make_unique<ViewWindow>();
        m_window->setFlags(
            Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
            Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    }
    m_window->setTitle(design.title);
    m_window->useIcon();
    m_window->resize(design.size);
    m_window->setMinimumSize(design.size);
    m_window->setMaximumSize(design.size);
    m_window->setCloseRequested([this] { close(); });
    m_window->load(windowModuleFile(design.file), design.properties);
    m_x11 = std::make_unique<X11ViewWindow>(*m_window, [] {});
}

QuickWindowView::~QuickWindowView()
{
    m_x11.reset();
    m_window.reset();
    // What its pictures and its types took is given back to the system.
    malloc_trim(0);
}

void QuickWindowView::setEvents(Events events)
{
    m_events = std::move(events);
}

void QuickWindowView::show()
{
    if (!isLoaded()) {
        return;
    }
    if (!m_isShown) {
        if (!std::exchange(m_isPlaced, true)) {
            place();
        }
        m_isShown = true;
        m_window->show();
    } else if (m_window->windowStates().testFlag(Qt::WindowMinimized)) {
        m_window->showNormal();
    }
    m_window->bringToFront();
    m_x11->activate();
}

void QuickWindowView::close()
{
    if (!m_isShown) {
        return;
    }
    m_isShown = false;
    m_window->hide();
    if (m_events.didClose) {
        m_events.didClose();
    }
}

void QuickWindowView::place()
{
    QScreen* const screen = screenNear(QCursor::pos());
    if (screen == nullptr) {
        return;
    }
    m_window->setScreen(screen);
    const QRect place = centredGeometry(m_window->size(), screen->availableGeometry());
    if (m_card != nullptr) {
        m_card->placeCard(place, screen->availableGeometry());
    } else {
        m_window->setGeometry(place);
    }
}

void QuickWindowView::compositedChanged()
{
    if (m_card != nullptr && m_isPlaced) {
        m_card->placeCard(m_card->card(), m_card->screen()->availableGeometry());
    }
}

} // namespace tessly
