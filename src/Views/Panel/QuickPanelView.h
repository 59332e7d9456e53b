#pragma once

#include "PanelLayer.h"
#include "PanelView.h"
#include "PanelWindow.h"
#include "PreviewWindow.h"
#include "X11Cards.h"
#include "X11ViewWindow.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace tessly {

class PanelModel;

/// The panel in Qt Quick, drawn without a GPU. The window is kept when the panel is closed, so that
/// the next opening only has to map it. Main thread only.
class QuickPanelView final : public QObject, public PanelView
{
    Q_OBJECT

public:
    /// Loads the panel's QML. `model` must outlive the view.
    explicit QuickPanelView(PanelModel& model, PanelSurface surface = PanelSurface::window);
    ~QuickPanelView() override;

    /// Whether the panel could be loaded; the log tells why not.
    [[nodiscard]] bool isLoaded() const;
    [[nodiscard]] PanelWindow& window() { return *m_window; }

    void setEvents(Events events) override;
    [[nodiscard]] bool isShown() const override { return m_isShown; }
    void show(const QRect& anchor) override;
    void activate() override;
    void close() override;

private:
    void becameActive();
    void focusLost();
    void closeWithoutFocus();
    void releaseMemory();
    void compositedChanged();
    void placePreview(QRect panel, const QScreen& screen);
    void showPreview();
    void hidePreview();

    PreviewModel& m_preview;
    Events m_events;
    bool m_isShown = false;
    bool m_hasBeenActive = false;
    bool m_hasBeenDrawn = false;
    bool m_isLastLook = false;
    X11Cards m_cards{[this] { compositedChanged(); }};
    std::unique_ptr<PanelWindow> m_window;
    std::unique_ptr<X11ViewWindow> m_x11;
    /// Null if it is an ordinary window.
    std::unique_ptr<PanelLayer> m_layer;
    QRect m_previewGeometry;
    /// Where shadows may lie: what is free of the screen.
    QRect m_room;
    /// Where the panel is, as seen from there.
    QPoint m_previewOrigin;
    /// While it is shown. Uses the panel's engine.
    std::unique_ptr<PreviewWindow> m_previewWindow;
    /// Runs from the first frame of a showing until the focus must have come.
    QTimer m_focusTimer;
    QTimer m_memoryTimer;
};

} // namespace tessly
