#pragma once

#include <QQuickView>

#include <functional>

namespace tessly {

/// A window with QML in it, as all of the program's are: drawn without a GPU, with the design's
/// module and symbols at hand, and never asking the clipboard for anything by itself. Main thread
/// only.
class ViewWindow : public QQuickView
{
    Q_OBJECT
    /// Whether the user moves by the keyboard, and so wants to see which control has it.
    Q_PROPERTY(bool showsFocus READ showsFocus NOTIFY showsFocusChanged)

public:
    ViewWindow();
    /// With the engine of another, which has to outlive it: what both show is loaded once.
    explicit ViewWindow(ViewWindow& other);

    /// Shows the program's symbol in title bars and lists of windows.
    void useIcon();
    /// The user wants the window closed. It stays as it is unless this closes it.
    void setCloseRequested(std::function<void()> closeRequested);
    /// `properties` are the root's required ones. Whether it worked; the log tells why not.
    bool load(const QUrl& source, const QVariantMap& properties);
    /// In front of the other windows, with the keyboard where the desktop gives it. On X11 that
    /// takes `X11ViewWindow` as well.
    void bringToFront();
    [[nodiscard]] bool isLoaded() const { return status() == Ready; }
    [[nodiscard]] bool showsFocus() const { return m_showsFocus; }

Q_SIGNALS:
    void showsFocusChanged();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void setShowsFocus(bool shows);

    std::function<void()> m_closeRequested;
    bool m_showsFocus = false;
};

} // namespace tessly
