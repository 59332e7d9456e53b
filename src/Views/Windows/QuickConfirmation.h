#pragma once

#include "ConfirmationContent.h"
#include "ConfirmationView.h"
#include "ViewWindow.h"
#include "X11ViewWindow.h"

#include <QObject>

#include <memory>

namespace tessly {

/// The alert in Qt Quick. Main thread only.
class QuickConfirmation final : public QObject, public ConfirmationView
{
    Q_OBJECT

public:
    /// Loads the alert's QML.
    QuickConfirmation();
    ~QuickConfirmation() override;

    /// Whether it could be loaded; the log tells why not.
    [[nodiscard]] bool isLoaded() const { return m_window->isLoaded(); }
    [[nodiscard]] ViewWindow& window() { return *m_window; }

    void
    ask(QString message, QString confirmTitle, QString cancelTitle, Answered answered) override;
    [[nodiscard]] bool isAsking() const override { return m_isAsking; }

private:
    void place();
    void answer(bool confirmed);

    bool m_isAsking = false;
    Answered m_answered;
    ConfirmationContent m_content{nullptr};
    std::unique_ptr<ViewWindow> m_window;
    std::unique_ptr<X11ViewWindow> m_x11;
};

} // namespace tessly
