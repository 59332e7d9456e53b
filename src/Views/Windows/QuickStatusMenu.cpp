#include "QuickStatusMenu.h"

#include "Tokens.h"
#include "WindowGeometry.h"
#include "WindowModule.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QScreen>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace tessly {

namespace {

// Whoever asked for the menu may hold the pointer until its button is let go. The toolkit tells of
// success even then.
constexpr auto grabInterval = 40ms;
constexpr int grabAttempts = 12;

// A compositor takes the focus away for a moment where a keyboard comes or goes.
constexpr auto focusIsBack = 150ms;
// On the way from the icon to the menu the pointer may give the focus to what is between.
constexpr auto pointerArrives = 10s;

} // namespace

QuickStatusMenu::QuickStatusMenu()
    : m_window(std::make_unique<ViewWindow>())
{
    // Not a popup in the toolkit's sense, which assistive technology is not told of.
    m_window->setFlags(
        Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
        Qt::BypassWindowManagerHint);
    m_window->setTitle(u"Tessly Menu"_s);
    m_window->setColor(Qt::transparent);
    m_window->setCloseRequested([this] { close(); });
    m_window->load(
        windowModuleFile(u"StatusMenu.qml"_s), {{u"content"_s, QVariant::fromValue(&m_content)}});
    m_x11 = std::make_unique<X11ViewWindow>(*m_window, [this] { close(); });
    m_grabTimer.setSingleShot(true);
    m_grabTimer.setInterval(grabInterval);
    connect(&m_grabTimer, &QTimer::timeout, this, &QuickStatusMenu::grab);
    m_focusTimer.setSingleShot(true);
    connect(&m_focusTimer, &QTimer::timeout, this, &QuickStatusMenu::close);
    connect(m_window.get(), &QWindow::activeChanged, this, &QuickStatusMenu::activeChanged);
    connect(&m_content, &StatusMenuContent::chosen, this, &QuickStatusMenu::choose);
    connect(&m_content, &StatusMenuContent::dismissed, this, &QuickStatusMenu::close);
}

QuickStatusMenu::~QuickStatusMenu()
{
    close();
}

void QuickStatusMenu::show(std::vector<StatusMenuItem> items, QPoint position, Chosen chosen)
{
    close();
    if (!isLoaded()) {
        return;
    }
    m_chosen = std::move(chosen);
    m_content.setItems(std::move(items));
    place(position);
    m_isShown = true;
    m_isUsed = false;
    m_window->show();
    m_window->bringToFront();
    // Keys go to whichever window of the program the toolkit takes for the focused one.
    qApp->installEventFilter(this);
    if (m_x11->isUsed()) {
        m_grabAttemptsLeft = grabAttempts;
        grab();
    } else {
        m_x11->activate();
    }
}

void QuickStatusMenu::close()
{
    if (!std::exchange(m_isShown, false)) {
        return;
    }
    qApp->removeEventFilter(this);
    m_grabTimer.stop();
    m_focusTimer.stop();
    if (m_x11->isUsed()) {
        m_window->setKeyboardGrabEnabled(false);
        m_window->setMouseGrabEnabled(false);
    }
    m_window->hide();
    m_chosen = {};
}

bool QuickStatusMenu::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_isShown || !watched->isWindowType()) {
        return false;
    }
    switch (event->type()) {
    case QEvent::Enter:
        m_isUsed = m_isUsed || watched == m_window.get();
        return false;
    case QEvent::KeyPress: {
        m_isUsed = true;
        const auto& key = *static_cast<QKeyEvent*>(event);
        m_content.press(key.key(), key.modifiers());
        return true;
    }
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
        return true;
    case QEvent::MouseButtonPress: {
        const auto& press = *static_cast<QMouseEvent*>(event);
        if (!m_window->geometry().contains(press.globalPosition().toPoint())) {
            close();
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

void QuickStatusMenu::place(QPoint position)
{
    QScreen* const screen = screenNear(position);
    if (screen == nullptr) {
        return;
    }
    QQuickItem& root = *m_window->rootObject();
    QMetaObject::invokeMethod(&root, "settle");
    const QSizeF size(root.implicitWidth(), root.implicitHeight());
    const QRect geometry = menuGeometry(position, size.toSize(), screen->geometry());
    m_window->setScreen(screen);
    // A window that cannot be resized is not tiled.
    m_window->setMinimumSize(geometry.size());
    m_window->setMaximumSize(geometry.size());
    m_window->setGeometry(geometry);
    if (m_x11->isUsed()) {
        // Without a compositing manager, what is transparent shows black.
        m_window->setMask(roundedRegion(geometry.size(), TokenMetrics().popupRadius));
    }
}

void QuickStatusMenu::grab()
{
    m_window->setKeyboardGrabEnabled(true);
    m_window->setMouseGrabEnabled(true);
    if (--m_grabAttemptsLeft > 0) {
        m_grabTimer.start();
    }
}

/// Where it can hold neither keyboard nor pointer, it goes with the focus.
void QuickStatusMenu::activeChanged()
{
    if (m_window->isActive()) {
        m_focusTimer.stop();
    } else if (m_isShown && !m_x11->isUsed()) {
        m_focusTimer.start(m_isUsed ? focusIsBack : pointerArrives);
    }
}

void QuickStatusMenu::choose(const QString& action)
{
    // The press is still on the stack of a window that whoever is told may want to be rid of.
    QMetaObject::invokeMethod(
        this, [chosen = m_chosen, action] { chosen(action); }, Qt::QueuedConnection);
    close();
}

} // namespace tessly
