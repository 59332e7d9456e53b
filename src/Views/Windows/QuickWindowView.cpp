#include "QuickWindowView.h"

#include "Tokens.h"
#include "WindowGeometry.h"
#include "WindowModule.h"

#include <QCursor>
#include <QScreen>

#include <malloc.h>
#include <utility>

namespace tessly {

QuickWindowView::QuickWindowView(const Design& design)
    : m_frame(design.frame)
    , m_window(std::make_unique<ViewWindow>())
{
    if (m_frame == Frame::none) {
        m_window->setFlags(Qt::Window | Qt::FramelessWindowHint);
        m_window->setColor(Qt::transparent);
    } else {
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
    if (m_frame == Frame::none) {
        m_window->setMinimumSize(place.size());
        m_window->setMaximumSize(place.size());
    }
    m_window->setGeometry(place);
    if (m_frame == Frame::none && m_x11->isUsed()) {
        // Without a compositing manager, what is transparent shows black.
        m_window->setMask(roundedRegion(m_window->size(), TokenMetrics().panelRadius));
    }
}

} // namespace tessly
