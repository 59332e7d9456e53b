#pragma once

#include "PanelView.h"

#include <QRect>

#include <vector>

namespace tessly::test {

/// A panel's window without a window. The test plays the user and the window manager.
class FakePanelView final : public PanelView
{
public:
    /// What was asked of it, in order.
    enum class Call { show, activate, close };

    /// The window does not come up any more.
    void refuseToShow() { m_refuses = true; }
    [[nodiscard]] const std::vector<Call>& calls() const { return m_calls; }
    [[nodiscard]] const QRect& anchor() const { return m_anchor; }

    /// A key is pressed while the window has the keyboard; whether it was consumed.
    bool press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        const auto keyPressed = m_events.keyPressed;
        return keyPressed(key, modifiers);
    }
    void loseKeyboard()
    {
        const auto resignedKey = m_events.resignedKey;
        resignedKey();
    }
    /// The window goes away by itself.
    void vanish() { end(); }

    void setEvents(Events events) override { m_events = std::move(events); }
    [[nodiscard]] bool isShown() const override { return m_isShown; }
    void show(const QRect& anchor) override
    {
        m_calls.push_back(Call::show);
        m_anchor = anchor;
        m_isShown = !m_refuses;
    }
    void activate() override { m_calls.push_back(Call::activate); }
    void close() override
    {
        m_calls.push_back(Call::close);
        end();
    }

private:
    void end()
    {
        if (m_isShown) {
            m_isShown = false;
            m_events.didClose();
        }
    }

    Events m_events;
    bool m_isShown = false;
    bool m_refuses = false;
    QRect m_anchor;
    std::vector<Call> m_calls;
};

} // namespace tessly::test
