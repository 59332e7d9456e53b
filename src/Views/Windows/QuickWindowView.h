#pragma once

#include "CardWindow.h"
#include "WindowView.h"
#include "X11Cards.h"
#include "X11ViewWindow.h"

#include <QObject>
#include <QSize>

#include <memory>

namespace tessly {

/// An ordinary window of a fixed size in Qt Quick. Main thread only.
class QuickWindowView final : public QObject, public WindowView
{
    Q_OBJECT

public:
    enum class Frame {
        /// The window manager's.
        titled,
        /// The content reaches the edges, which are rounded. It has to offer a way to move and to
        /// close the window.
        none,
    };

    struct Design
    {
        QString title;
        QSize size;
        Frame frame = Frame::titled;
        /// Of the module's.
        QString file;
        /// The root's required ones.
        QVariantMap properties;
    };

    /// Loads the window's QML.
    explicit QuickWindowView(const Design& design);
    ~QuickWindowView() override;

    /// Whether it could be loaded; the log tells why not.
    [[nodiscard]] bool isLoaded() const { return m_window->isLoaded(); }
    [[nodiscard]] ViewWindow& window() { return *m_window; }

    void setEvents(Events events) override;
    [[nodiscard]] bool isShown() const override { return m_isShown; }
    void show() override;
    void close() override;

private:
    void place();
    void compositedChanged();

    Events m_events;
    bool m_isShown = false;
    bool m_isPlaced = false;
    X11Cards m_cards{[this] { compositedChanged(); }};
    std::unique_ptr<ViewWindow> m_window;
    /// The same, if it has no frame; else null.
    CardWindow* m_card = nullptr;
    std::unique_ptr<X11ViewWindow> m_x11;
};

} // namespace tessly
