#pragma once

#include "CardWindow.h"

#include <QRect>

namespace tessly {

class PreviewModel;

/// The preview's window, beside that of the panel: a window to no window manager, which never has
/// the keyboard. Main thread only.
class PreviewWindow final : public CardWindow
{
    Q_OBJECT

public:
    /// `cards` and `panel` must outlive it.
    PreviewWindow(const X11Cards& cards, ViewWindow& panel, PreviewModel& model);

    /// On the panel's screen, as `placeCard` does.
    void showAt(const QRect& card, const QRect& room);
};

} // namespace tessly
