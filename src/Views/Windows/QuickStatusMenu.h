#pragma once

#include "StatusMenuContent.h"
#include "StatusMenuView.h"
#include "ViewWindow.h"
#include "X11ViewWindow.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace tessly {

/// The status menu in Qt Quick. On X11 it holds keyboard and pointer while it is open, as menus do:
/// a press anywhere else ends it. Main thread only.
class QuickStatusMenu final : public QObject, public StatusMenuView
{
    Q_OBJECT

public:
    /// Loads the menu's QML.
    QuickStatusMenu();
    ~QuickStatusMenu() override;

    /// Whether it could be loaded; the log tells why not.
    [[nodiscard]] bool isLoaded() const { return m_window->isLoaded(); }
    [[nodiscard]] ViewWindow& window() { return *m_window; }

    void show(std::vector<StatusMenuItem> items, QPoint position, Chosen chosen) override;
    void close() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place(QPoint position);
    void grab();
    void activeChanged();
    void choose(const QString& action);

    bool m_isShown = false;
    /// Whether the pointer has been in it, or a key was pressed.
    bool m_isUsed = false;
    Chosen m_chosen;
    StatusMenuContent m_content{nullptr};
    std::unique_ptr<ViewWindow> m_window;
    std::unique_ptr<X11ViewWindow> m_x11;
    QTimer m_grabTimer;
    /// Runs while the focus is elsewhere.
    QTimer m_focusTimer;
    int m_grabAttemptsLeft = 0;
};

} // namespace tessly
