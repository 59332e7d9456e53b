#pragma once

#include "ViewWindow.h"

#include <QRect>

namespace tessly {

class PreviewModel;

/// The preview's window, beside that of the panel: a window to no window manager, which never has
/// the keyboard. Main thread only.
class PreviewWindow final : public ViewWindow
{
    Q_OBJECT

public:
    /// `panel` must outlive it.
    PreviewWindow(ViewWindow& panel, PreviewModel& model);

    /// `geometry` is global, in device-independent pixels, and on the panel's screen.
    void showAt(const QRect& geometry);
};

} // namespace tessly
