#pragma once

#include "WindowView.h"

#include <utility>

namespace tessly::test {

/// A window without a window. The test plays the user and the window manager.
class FakeWindowView final : public WindowView
{
public:
    /// What becomes of it is noted in `record`, which outlives it.
    struct Record
    {
        int showings = 0;
        int closings = 0;
        bool isAlive = true;
    };

    explicit FakeWindowView(Record& record)
        : m_record(record)
    {
        record = {};
    }
    ~FakeWindowView() override { m_record.isAlive = false; }

    /// The user presses the close button.
    void closeByUser() { end(); }

    void setEvents(Events events) override { m_events = std::move(events); }
    [[nodiscard]] bool isShown() const override { return m_isShown; }
    void show() override
    {
        ++m_record.showings;
        m_isShown = true;
    }
    void close() override
    {
        ++m_record.closings;
        end();
    }

private:
    void end()
    {
        if (std::exchange(m_isShown, false) && m_events.didClose) {
            m_events.didClose();
        }
    }

    Record& m_record;
    Events m_events;
    bool m_isShown = false;
};

} // namespace tessly::test
