#include "QuickPanelView.h"

#include "PanelModel.h"
#include "Tokens.h"
#include "Trace.h"
#include "WindowGeometry.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>

#include <chrono>
#include <malloc.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

// After a panel is closed, it is often opened again soon.
constexpr auto memoryIsKept = 10s;

// A compositor gives the focus to a window that it shows within a frame or two. One that does not
// has it behind a full-screen window: there the user sees nothing of it, and types elsewhere.
constexpr auto focusComes = 250ms;
constexpr auto lastLookForFocus = 50ms;

// A preview that lies over the panel: from its edge, and from its top and bottom, the search, the
// filters and the footer being there.
constexpr int margin = 8;
constexpr int aboveList = 110;
constexpr int belowList = 38 + margin;

// How far from the middle of the screen a compositor may put the panel, beside another window.
constexpr int offTheMiddle = 48;

Q_LOGGING_CATEGORY(lcPanel, "com.brackmoor.tessly.QuickPanelView")

/// No compositor tells tests of layer surfaces and popups.
void traceShown(QStringView what, const QRect& place)
{
    trace(qPrintable(u"%1-shown:%2,%3,%4,%5"_s.arg(what)
                         .arg(place.x())
                         .arg(place.y())
                         .arg(place.width())
                         .arg(place.height())));
}

} // namespace

QuickPanelView::QuickPanelView(PanelModel& model, PanelSurface surface)
    : m_preview(*model.preview())
{
    m_window = std::make_unique<PanelWindow>(
        m_cards, model,
        PanelWindow::Handlers{
            .keyPressed =
                [this](int key, Qt::KeyboardModifiers modifiers) {
                    return m_events.keyPressed && m_events.keyPressed(key, modifiers);
                },
            .closeRequested = [this] { close(); },
        });
    if (surface == PanelSurface::layer) {
        m_layer = makePanelLayer(*m_window);
    }
    m_x11 = std::make_unique<X11ViewWindow>(*m_window, [this] { focusLost(); });
    if (!m_x11->isUsed()) {
        connect(m_window.get(), &QWindow::activeChanged, this, [this] {
            // A window that has just come up is not yet active.
            if (m_window->isActive()) {
                becameActive();
            } else if (m_hasBeenActive) {
                focusLost();
            }
        });
        m_focusTimer.setSingleShot(true);
        connect(&m_focusTimer, &QTimer::timeout, this, &QuickPanelView::closeWithoutFocus);
        connect(m_window.get(), &QQuickWindow::frameSwapped, this, [this] {
            if (m_isShown && !m_hasBeenDrawn) {
                m_hasBeenDrawn = true;
                // Nothing has changed if no other window has had the keyboard since the last time.
                if (m_window->isActive()) {
                    becameActive();
                }
                m_isLastLook = false;
                m_focusTimer.start(focusComes);
            }
        });
    }

    connect(&m_preview, &PreviewModel::isShownChanged, this, [this] {
        m_preview.isShown() ? showPreview() : hidePreview();
    });

    m_memoryTimer.setSingleShot(true);
    m_memoryTimer.setInterval(memoryIsKept);
    connect(&m_memoryTimer, &QTimer::timeout, this, &QuickPanelView::releaseMemory);
}

QuickPanelView::~QuickPanelView() = default;

bool QuickPanelView::isLoaded() const
{
    return m_window->isLoaded();
}

void QuickPanelView::setEvents(Events events)
{
    m_events = std::move(events);
}

void QuickPanelView::show(const QRect& anchor)
{
    const bool isPlaceKnown = !anchor.isEmpty();
    QScreen* const screen =
        isPlaceKnown ? screenNear(anchor.center()) : QGuiApplication::primaryScreen();
    if (m_isShown || !isLoaded() || screen == nullptr) {
        return;
    }
    m_memoryTimer.stop();
    const TokenMetrics metrics;
    const QSize size(metrics.panelWidth, metrics.panelHeight);
    const QRect geometry = isPlaceKnown ? panelGeometry(anchor, size, screen->availableGeometry())
                                        : centredGeometry(size, screen->availableGeometry());
    if (m_layer && isPlaceKnown) {
        m_layer->place(geometry, *screen);
    } else if (m_layer) {
        m_layer->placeOnActiveScreen();
    }
    m_window->setScreen(screen);
    m_room = screen->availableGeometry();
    m_window->placeCard(geometry, m_room);
    placePreview(geometry, *screen);
    m_window->forgetPointer();
    m_x11->prepareToShow();
    m_isShown = true;
    m_hasBeenActive = false;
    m_hasBeenDrawn = false;
    if (m_layer) {
        traceShown(u"panel", geometry);
    }
    m_window->show();
}

void QuickPanelView::activate()
{
    m_window->bringToFront();
    m_x11->activate();
}

void QuickPanelView::close()
{
    if (!m_isShown) {
        return;
    }
    m_isShown = false;
    m_focusTimer.stop();
    // Before the window that it belongs to.
    hidePreview();
    m_window->hide();
    trace("panel-closed");
    m_window->releasePointer();
    m_memoryTimer.start();
    if (m_events.didClose) {
        m_events.didClose();
    }
}

void QuickPanelView::becameActive()
{
    if (!std::exchange(m_hasBeenActive, true)) {
        trace("panel-active");
    }
}

void QuickPanelView::focusLost()
{
    if (m_isShown && m_events.resignedKey) {
        m_events.resignedKey();
    }
}

void QuickPanelView::closeWithoutFocus()
{
    if (!std::exchange(m_isLastLook, true)) {
        // After a moment in which nothing ran, the timer may be due before the focus, which has
        // come meanwhile, is known.
        m_focusTimer.start(lastLookForFocus);
        return;
    }
    if (m_isShown && !m_hasBeenActive) {
        qCWarning(
            lcPanel,
            "The panel is closed again: it did not get the keyboard, perhaps because it is "
            "behind a full-screen window");
        focusLost();
    }
}

/// Beside the panel where there is room; else over the list, of whose rows the beginnings stay in
/// sight.
void QuickPanelView::placePreview(QRect panel, const QScreen& screen)
{
    QRect workArea = screen.availableGeometry();
    if (!m_layer && QGuiApplication::platformName().startsWith(u"wayland"_s)) {
        // It is put somewhere in the middle, and does not learn where that is.
        panel = centredGeometry(panel.size(), workArea);
        workArea.adjust(offTheMiddle, 0, -offTheMiddle, 0);
    }
    const TokenMetrics metrics;
    m_previewOrigin = panel.topLeft();
    const auto beside =
        cardGeometry(panel, metrics.previewNarrowest, metrics.previewWidest, workArea);
    m_previewGeometry = beside.value_or(panel.adjusted(
        panel.width() - metrics.previewWidest - margin, aboveList, -margin, -belowList));
    const QSize picture = m_previewGeometry.size() - QSize(2, 2) * metrics.previewPadding -
                          QSize(0, metrics.previewHeader);
    m_preview.setPlace(
        beside ? PreviewModel::Room::besidePanel : PreviewModel::Room::overPanel,
        (QSizeF(picture) * screen.devicePixelRatio()).toSize().expandedTo(QSize(1, 1)));
}

void QuickPanelView::showPreview()
{
    if (!m_isShown) {
        return;
    }
    if (!m_previewWindow) {
        m_previewWindow = std::make_unique<PreviewWindow>(m_cards, *m_window, m_preview);
    }
    // The toolkit counts from where it takes the panel to be.
    const QPoint shift = m_window->card().topLeft() - m_previewOrigin;
    m_previewWindow->showAt(m_previewGeometry.translated(shift), m_room);
    traceShown(u"preview", m_previewGeometry);
}

void QuickPanelView::compositedChanged()
{
    if (!m_isShown) {
        return;
    }
    m_window->placeCard(m_window->card(), m_room);
    if (m_previewWindow && m_previewWindow->isVisible()) {
        showPreview();
    }
}

void QuickPanelView::hidePreview()
{
    if (!m_previewWindow || !m_previewWindow->isVisible()) {
        return;
    }
    m_previewWindow->hide();
    trace("preview-closed");
    // Whatever it holds goes with it, but not from inside an event of its own.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_previewWindow && !m_previewWindow->isVisible()) {
                m_previewWindow.reset();
            }
        },
        Qt::QueuedConnection);
}

void QuickPanelView::releaseMemory()
{
    m_window->releaseResources();
    m_window->engine()->collectGarbage();
    m_window->engine()->trimComponentCache();
    malloc_trim(0);
}

} // namespace tessly
