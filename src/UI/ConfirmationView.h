#pragma once

#include <QString>

#include <functional>

namespace tessly {

/// A window that asks one question with two answers. Main thread only.
class ConfirmationView
{
public:
    /// Told once, from the event loop, when the window is gone. Escape and the window's close
    /// button do not confirm.
    using Answered = std::function<void(bool confirmed)>;

    ConfirmationView() = default;
    ConfirmationView(const ConfirmationView&) = delete;
    ConfirmationView& operator=(const ConfirmationView&) = delete;
    virtual ~ConfirmationView() = default;

    /// Returns at once. Return chooses the confirming button, which comes first. While a question
    /// is open, this brings it to the front and asks nothing new.
    virtual void
    ask(QString message, QString confirmTitle, QString cancelTitle, Answered answered) = 0;
    [[nodiscard]] virtual bool isAsking() const = 0;
};

} // namespace tessly
