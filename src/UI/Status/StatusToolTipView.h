#pragma once

#include <QRect>
#include <QString>

namespace tessly {

/// The tool tip of an icon in a tray that shows none. Main thread only.
class StatusToolTipView
{
public:
    StatusToolTipView() = default;
    StatusToolTipView(const StatusToolTipView&) = delete;
    StatusToolTipView& operator=(const StatusToolTipView&) = delete;
    virtual ~StatusToolTipView() = default;

    /// Shows `text` beside `icon` (global, device-independent pixels), whole on its screen. Takes
    /// neither the keyboard nor clicks.
    virtual void show(const QString& text, const QRect& icon) = 0;
    virtual void hide() = 0;
};

} // namespace tessly
