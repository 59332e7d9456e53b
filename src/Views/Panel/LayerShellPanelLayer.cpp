#include "PanelLayer.h"

#include <LayerShellQt/window.h>
#include <QMargins>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

using Surface = LayerShellQt::Window;

/// By the name that it has from version 6.6 on, or by the one before.
template <typename Any>
void setOnActiveScreen(Any& surface, bool isOnActiveScreen)
{
    if constexpr (requires { surface.setWantsToBeOnActiveScreen(isOnActiveScreen); }) {
        surface.setWantsToBeOnActiveScreen(isOnActiveScreen);
    } else {
        surface.setScreenConfiguration(
            isOnActiveScreen ? Any::ScreenFromCompositor : Any::ScreenFromQWindow);
    }
}

class LayerShellPanelLayer final : public PanelLayer
{
public:
    explicit LayerShellPanelLayer(QWindow& window)
        // Belongs to the window.
        : m_surface(*Surface::get(&window))
    {
        m_surface.setScope(u"tessly"_s);
        m_surface.setLayer(Surface::LayerOverlay);
        // Compositors give the keyboard to no other surface when it is shown, and some take it away
        // again when this is changed.
        m_surface.setKeyboardInteractivity(Surface::KeyboardInteractivityExclusive);
    }

    void place(const QRect& geometry, QScreen& screen) override
    {
        const QPoint place = geometry.topLeft() - screen.geometry().topLeft();
        m_surface.setAnchors({Surface::AnchorTop, Surface::AnchorLeft});
        m_surface.setMargins(QMargins(place.x(), place.y(), 0, 0));
        // Seen from the screen's corner, whatever panels and docks there are.
        m_surface.setExclusiveZone(-1);
        setOnActiveScreen(m_surface, false);
    }

    void placeOnActiveScreen() override
    {
        m_surface.setAnchors(Surface::AnchorNone);
        m_surface.setMargins({});
        m_surface.setExclusiveZone(0);
        setOnActiveScreen(m_surface, true);
    }

private:
    Surface& m_surface;
};

} // namespace

std::unique_ptr<PanelLayer> makePanelLayer(QWindow& window)
{
    return std::make_unique<LayerShellPanelLayer>(window);
}

} // namespace tessly
