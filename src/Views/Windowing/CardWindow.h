#pragma once

#include "ViewWindow.h"

#include <QMargins>
#include <QRect>

namespace tessly {

class X11Cards;

/// A window that is a card with round corners over other programs' windows. Where it may be
/// transparent in part, it reaches beyond the card, for the shadow. Main thread only.
class CardWindow : public ViewWindow
{
    Q_OBJECT
    /// Whether there is room for the shadow around the card; without it, a line tells it from
    /// what is below.
    Q_PROPERTY(bool hasShadow READ hasShadow NOTIFY hasShadowChanged)

public:
    /// `cards` must outlive the window.
    explicit CardWindow(const X11Cards& cards);
    /// With the engine of another, which has to outlive it.
    CardWindow(const X11Cards& cards, ViewWindow& other);

    [[nodiscard]] bool hasShadow() const { return !m_shadow.isNull(); }
    /// Where the card is; global, in device-independent pixels.
    [[nodiscard]] QRect card() const { return geometry().marginsRemoved(m_shadow); }
    /// Puts the card to a place, at a size that the user cannot change. Its shadow stays on
    /// `room`. Both are global, in device-independent pixels.
    void placeCard(const QRect& card, const QRect& room);

Q_SIGNALS:
    void hasShadowChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void exposeEvent(QExposeEvent* event) override;

private:
    void layOut();

    const X11Cards& m_cards;
    /// How far the window reaches beyond the card.
    QMargins m_shadow;
};

} // namespace tessly
