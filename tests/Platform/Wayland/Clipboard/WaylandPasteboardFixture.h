#pragma once

#include "TestCompositor.h"
#include "TestSupport.h"
#include "WaylandPasteboard.h"
#include "WaylandProgram.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace tessly::test {

/// A compositor, the pasteboard under test on it, and another program.
class WaylandPasteboardTest : public testing::Test
{
protected:
    using Manner = WaylandProgram::Manner;
    using Offered = WaylandProgram::Offered;

    static constexpr qint64 megabyte = 1'048'576;
    static constexpr qint64 noLimit = qint64{1} << 30;

    /// Deadlines that a hung owner does not stretch a test by, and a busy machine does not break.
    [[nodiscard]] static WaylandClipboardDeadlines shortDeadlines()
    {
        using std::chrono::milliseconds;
        return {
            .stall = milliseconds(1000),
            .read = milliseconds(2500),
            .drain = milliseconds(2500),
            .reader = milliseconds(1000)};
    }
    /// Deadlines that end no test.
    [[nodiscard]] static WaylandClipboardDeadlines longDeadlines()
    {
        using std::chrono::hours;
        return {.stall = hours(1), .read = hours(1), .drain = hours(1), .reader = hours(1)};
    }

    WaylandPasteboardTest() { usePasteboard(shortDeadlines()); }

    [[nodiscard]] TestCompositor& compositor() { return m_compositor; }
    [[nodiscard]] WaylandPasteboard& pasteboard() { return *m_pasteboard; }
    [[nodiscard]] WaylandProgram& program() { return m_program; }
    /// A new one in place of the old.
    void usePasteboard(const WaylandClipboardDeadlines& deadlines)
    {
        m_pasteboard.reset();
        m_pasteboard = std::make_unique<WaylandPasteboard>(
            WaylandPasteboard::Options{.display = m_compositor.display(), .deadlines = deadlines});
    }
    void endPasteboard() { m_pasteboard.reset(); }

    /// The change count once it has moved on from what it was before the action.
    template <typename Action>
    qint64 changed(Action action)
    {
        const qint64 before = pasteboard().changeCount();
        action();
        EXPECT_TRUE(waitUntil([&] { return pasteboard().changeCount() != before; }));
        return pasteboard().changeCount();
    }

    /// The other program copies; the content's change count.
    qint64 copied(const std::vector<Offered>& offered)
    {
        return changed([&] { m_program.copy(offered); });
    }
    qint64 written(const PasteboardItem& item)
    {
        return changed([&] { EXPECT_TRUE(m_ticket = pasteboard().write({item})); });
    }

    [[nodiscard]] ReadResult<QByteArray>
    read(qint64 count, Flavour flavour = Flavour::plainText, qint64 byteLimit = noLimit)
    {
        return await(pasteboard().read(count, flavour, byteLimit));
    }
    [[nodiscard]] std::optional<QSet<QString>> types(qint64 count)
    {
        return await(pasteboard().types(count));
    }

    /// Copies an ordinary text by the other program, and expects that it is read.
    void expectThatTheNextCopyIsRead()
    {
        const qint64 next = copied({{.type = "UTF8_STRING", .bytes = "the next copy"}});
        const auto text = read(next);
        EXPECT_EQ(text.status, ReadStatus::read);
        EXPECT_EQ(text.value, "the next copy");
    }

    /// Of the last write.
    WriteTicket m_ticket;

private:
    TestCompositor m_compositor;
    std::unique_ptr<WaylandPasteboard> m_pasteboard;
    WaylandProgram m_program{m_compositor.display()};
};

} // namespace tessly::test
