#include "CardWindow.h"

#include "Tokens.h"
#include "WindowGeometry.h"
#include "X11Cards.h"

#include <QQuickItem>

#include <utility>

namespace tessly {

CardWindow::CardWindow(const X11Cards& cards)
    : m_cards(cards)
{
    setColor(Qt::transparent);
}

CardWindow::CardWindow(const X11Cards& cards, ViewWindow& other)
    : ViewWindow(other)
    , m_cards(cards)
{
    setColor(Qt::transparent);
}

void CardWindow::placeCard(const QRect& card, const QRect& room)
{
    const TokenMetrics metrics;
    const QMargins shadow =
        m_cards.areComposited()
            ? shadowMargins(card, metrics.cardShadowReach, metrics.cardShadowDrop, room)
            : QMargins();
    const bool hadShadow = hasShadow();
    m_shadow = shadow;
    const QRect place = card.marginsAdded(shadow);
    setMinimumSize(place.size());
    setMaximumSize(place.size());
    setGeometry(place);
    layOut();
    m_cards.shape(*this, shadow, metrics.panelRadius);
    if (hasShadow() != hadShadow) {
        Q_EMIT hasShadowChanged();
    }
}

void CardWindow::resizeEvent(QResizeEvent* event)
{
    // Not the view's, which would lay the root out for the whole of the window first.
    QQuickWindow::resizeEvent(event); // NOLINT(bugprone-parent-virtual-call)
    layOut();
}

void CardWindow::exposeEvent(QExposeEvent* event)
{
    ViewWindow::exposeEvent(event);
    if (isExposed() && hasShadow()) {
        // A manager that puts the window into one of its own takes over where clicks go to when
        // that changes, not what it finds.
        m_cards.shape(*this, m_shadow, TokenMetrics().panelRadius);
    }
}

void CardWindow::layOut()
{
    if (QQuickItem* const root = rootObject(); root != nullptr) {
        root->setPosition(QPointF(m_shadow.left(), m_shadow.top()));
        root->setSize(size().shrunkBy(m_shadow));
    }
}

} // namespace tessly
